// What hostile documents cost: memory by the count of what is allocated, time by what a test may take.
#include "Public/Base/JsonValue.h"

#include "Allocations.h"

using Public::Base::JsonValue;
using Public::Base::SharedBuffer;
using support::AllocationMeter;

namespace {

constexpr size_t kBytes = size_t{4} << 20;

/// The piece over and over between two brackets, "#" standing for a number of its own.
std::string repeated(char open, const std::string& piece, char close) {
    std::string text(1, open);
    for (size_t i = 0; text.size() < kBytes; ++i) {
        if (i != 0) text += ',';
        const size_t mark = piece.find('#');
        text += mark == std::string::npos ? piece : piece.substr(0, mark) + std::to_string(i) + piece.substr(mark + 1);
    }
    return text + close;
}

/// Distinct keys as short as can be.
std::string shortKeys() {
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789!#$%&()*+,-./:;<=>?@^_";
    std::string text = "{";
    for (size_t i = 0; text.size() < kBytes; ++i) {
        text += i != 0 ? ",\"" : "\"";
        for (size_t rest = i; rest != 0; rest /= letters.size()) text += letters[rest % letters.size()];
        text += "\":0";
    }
    return text + "}";
}

std::string nested(const std::string& inside) { return std::string(63, '[') + inside + std::string(63, ']'); }

struct Hostile {
    const char* name;
    std::string (*make)();
};

class HostileDocuments : public testing::TestWithParam<Hostile> {};

TEST_P(HostileDocuments, CostLessThanFiveTimesTheirText) {
    const SharedBuffer text(GetParam().make());
    const AllocationMeter meter;
    JsonValue value;
    ASSERT_FALSE(value.read(text));
    const JsonValue& document = value;
    const size_t count = document.size();
    ASSERT_GT(count, 0U);
    EXPECT_FALSE(document.isMember("missing"));
    if (document.isArray()) {
        EXPECT_TRUE(document[count].isNull());
        (void)document[count - 1];
    }
    EXPECT_LT(meter.peak(), 5 * text.size());
}

TEST_P(HostileDocuments, AreHeldInThreeTimesTheirTextAndGoWhole) {
    const SharedBuffer text(GetParam().make());
    const AllocationMeter meter;
    {
        JsonValue value;
        ASSERT_FALSE(value.read(text));
        ASSERT_GT(value.size(), 0U);
        EXPECT_LT(meter.held(), 3 * text.size());
    }
    EXPECT_LT(meter.held(), 4096U);
}

INSTANTIATE_TEST_SUITE_P(
    Of, HostileDocuments,
    testing::Values(Hostile{"Numbers", [] { return repeated('[', "1", ']'); }},
                    Hostile{"EmptyTexts", [] { return repeated('[', "\"\"", ']'); }},
                    Hostile{"EmptyArrays", [] { return repeated('[', "[]", ']'); }},
                    Hostile{"EmptyObjects", [] { return repeated('[', "{}", ']'); }},
                    Hostile{"NestedArrays", [] { return repeated('[', nested(""), ']'); }},
                    Hostile{"NumbersFarInside", [] { return nested(repeated('[', "1", ']')); }},
                    Hostile{"ShortKeys", shortKeys}, Hostile{"EqualKeys", [] { return repeated('{', R"("":0)", '}'); }},
                    Hostile{"KeysThatBeginAlike", [] { return repeated('{', R"("the same#":0)", '}'); }},
                    Hostile{"EscapedKeys", [] { return repeated('{', R"("\u0061\u0062#":0)", '}'); }},
                    Hostile{"OneText", [] { return "[\"" + std::string(kBytes, 'a') + "\"]"; }},
                    Hostile{"OneTextOfEscapes", [] { return "[\"" + repeated('a', R"(\n)", 'b') + "\"]"; }},
                    Hostile{"OneKey", [] { return "{\"" + std::string(kBytes, 'a') + "\":1}"; }}),
    [](const auto& test) { return test.param.name; });

TEST(JsonMemory, CopyOfAPartSharesTheText) {
    JsonValue value;
    ASSERT_FALSE(value.read(SharedBuffer(R"({"list":)" + repeated('[', "1", ']') + "}")));
    const JsonValue& document = value;
    const AllocationMeter meter;
    const JsonValue list = document["list"];
    EXPECT_TRUE(list.isArray());
    EXPECT_LT(meter.peak(), 4096U);
}

TEST(JsonMemory, ChangeOfOneElementCostsOneElement) {
    JsonValue value;
    ASSERT_FALSE(value.read(SharedBuffer(repeated('[', "1", ']'))));
    ASSERT_GT(value.size(), 1000U);
    const AllocationMeter meter;
    value[500]["deep"] = "changed";
    EXPECT_LT(meter.peak(), 4096U);
    EXPECT_EQ(value[500]["deep"]->toString(), "changed");
    EXPECT_EQ(value[501]->toInt(), 1);
}

// A walk by element or by key takes milliseconds; were each step to begin at the first again, it would outlast the
// time-out of a test.

TEST(JsonTime, EveryElementOfALongArrayIsSoonVisited) {
    JsonValue value;
    ASSERT_FALSE(value.read(SharedBuffer(repeated('[', "1", ']'))));
    const JsonValue& document = value;
    size_t sum = 0;
    for (size_t index = 0; index < document.size(); ++index) sum += document[index]->toUint64();
    EXPECT_EQ(sum, document.size());
}

TEST(JsonTime, EveryMemberOfALargeObjectIsSoonFound) {
    JsonValue value;
    ASSERT_FALSE(value.read(SharedBuffer(repeated('{', R"("the same#":0)", '}'))));
    const JsonValue& document = value;
    size_t found = 0;
    for (const std::string& key : document.keys()) found += document.isMember(key);
    EXPECT_EQ(found, document.size());
    EXPECT_GT(found, 200000U);
}

TEST(JsonTime, LargeObjectIsSoonBuilt) {
    JsonValue value;
    for (int i = 0; i < 50000; ++i) value[("key" + std::to_string(i)).c_str()] = i;
    EXPECT_EQ(value.size(), 50000U);
    EXPECT_EQ(value["key49999"]->toInt(), 49999);
}

}  // namespace
