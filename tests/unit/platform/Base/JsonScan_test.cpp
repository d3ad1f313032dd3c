#include "Base/JsonScan.h"

using Public::Base::JsonScan;
using Public::Base::Value;

namespace {

std::vector<std::string> elementsOf(std::string_view text) {
    const JsonScan scan(text);
    std::vector<std::string> found;
    scan.elements(scan.start(), [&](uint32_t at) {
        found.emplace_back(1, text[at]);
        return true;
    });
    return found;
}

TEST(JsonScan, BeginsBehindAByteOrderMarkAndBlanks) {
    EXPECT_EQ(JsonScan("7").start(), 0U);
    EXPECT_EQ(JsonScan("\xEF\xBB\xBF \t\r\n7").start(), 7U);
}

TEST(JsonScan, VisitsTheElementsOfAnArrayAndNoneWithin) {
    EXPECT_EQ(elementsOf(R"([1,"],",[2,[3]],{"a":[4]},true , null])"),
              (std::vector<std::string>{"1", "\"", "[", "{", "t", "n"}));
    EXPECT_TRUE(elementsOf("[ ]").empty());
}

TEST(JsonScan, VisitsTheMembersOfAnObjectWithTheirKeys) {
    const JsonScan scan(R"({ "a" : 1 , "}" : { "b" : 2 } ,"\"":"x"})");
    std::string room, told;
    scan.members(0, [&](uint32_t key, uint32_t value) {
        told += std::string(scan.string(key, room)) + (scan.isObject(value) ? "{" : scan.scalar(value).toString());
        return true;
    });
    EXPECT_EQ(told, "a1}{\"x");
}

TEST(JsonScan, VisitsNoMemberOfAnEmptyObject) {
    size_t count = 0;
    JsonScan("{ }").members(0, [&](uint32_t, uint32_t) { return ++count, true; });
    EXPECT_EQ(count, 0U);
}

TEST(JsonScan, StopsWhereItIsTold) {
    size_t elements = 0, members = 0;
    JsonScan("[1,2,3]").elements(0, [&](uint32_t) { return ++elements < 2; });
    JsonScan(R"({"a":1,"b":2})").members(0, [&](uint32_t, uint32_t) { return ++members < 1; });
    EXPECT_EQ(elements, 2U);
    EXPECT_EQ(members, 1U);
}

TEST(JsonScan, ComparesStringsWithoutTheirEscapes) {
    const auto says = [](std::string_view string, std::string_view text) { return JsonScan(string).says(0, text); };
    EXPECT_TRUE(says(R"("abc")", "abc"));
    EXPECT_TRUE(says(R"("a\u0062c")", "abc"));
    EXPECT_TRUE(says(R"("\"")", "\""));
    EXPECT_TRUE(says(R"("a\\")", "a\\"));
    EXPECT_TRUE(says(R"("")", ""));
    EXPECT_FALSE(says(R"("abc")", "ab"));
    EXPECT_FALSE(says(R"("ab")", "abc"));
    EXPECT_FALSE(says(R"("ab")", "ab\""));
    EXPECT_FALSE(says(R"("a\u0062c")", R"(a\u0062c)"));
}

TEST(JsonScan, FindsTheEndOfAStringBehindBackslashes) {
    EXPECT_EQ(elementsOf(R"(["a\\",1,"\\\"",2,"\"\"",3])"),
              (std::vector<std::string>{"\"", "1", "\"", "2", "\"", "3"}));
}

TEST(JsonScan, GivesAStringWithoutEscapesAsItStands) {
    std::string room;
    const std::string_view text = R"("plain")";
    const std::string_view found = JsonScan(text).string(0, room);
    EXPECT_EQ(found, "plain");
    EXPECT_EQ(found.data(), text.data() + 1);
}

struct Escape {
    const char* name;
    const char* text;
    std::string meaning;
};

class Escapes : public testing::TestWithParam<Escape> {};

TEST_P(Escapes, AreRead) {
    std::string room = "left over";
    EXPECT_EQ(JsonScan(GetParam().text).string(0, room), GetParam().meaning);
    EXPECT_EQ(JsonScan(GetParam().text).scalar(0).toString(), GetParam().meaning);
}

INSTANTIATE_TEST_SUITE_P(
    JsonScan, Escapes,
    testing::Values(Escape{"Letters", R"("\b\f\n\r\t")", "\b\f\n\r\t"}, Escape{"Themselves", R"("\"\\\/")", "\"\\/"},
                    Escape{"OneByte", R"("a\u0041b")", "aAb"}, Escape{"Zero", R"("\u0000")", std::string(1, '\0')},
                    Escape{"TwoBytes", R"("\u00e9\u07FF")", "\xC3\xA9\xDF\xBF"},
                    Escape{"ThreeBytes", R"("\u0800\u20AC\uffff")", "\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF"},
                    Escape{"Pairs", R"("\ud800\udc00\uDBFF\uDFFF")", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
                    Escape{"BackslashAtTheEnd", R"("a\\")", "a\\"}),
    [](const auto& test) { return test.param.name; });

struct Number {
    const char* name;
    const char* text;
    bool isFloat, isUnsigned;
    const char* written;
};

class Numbers : public testing::TestWithParam<Number> {};

TEST_P(Numbers, KeepTheirKind) {
    const Value value = JsonScan(GetParam().text).scalar(0);
    EXPECT_EQ(value.isFloat(), GetParam().isFloat);
    EXPECT_EQ(value.isUnsigned(), GetParam().isUnsigned);
    EXPECT_EQ(value.toString(), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    JsonScan, Numbers,
    testing::Values(Number{"Unsigned", "18446744073709551615", false, true, "18446744073709551615"},
                    Number{"Signed", "-9223372036854775808", false, false, "-9223372036854775808"},
                    Number{"NegativeZero", "-0", false, false, "0"}, Number{"WithFraction", "2.50", true, false, "2.5"},
                    Number{"WithExponent", "1E2", true, false, "100"},
                    Number{"BeyondUnsigned", "18446744073709551616", true, false, "18446744073709551616"},
                    Number{"BeyondSigned", "-9223372036854775809", true, false, "-9223372036854775808"},
                    Number{"NegativeZeroWithFraction", "-0.0", true, false, "-0"},
                    Number{"TooSmall", "-1e-999", true, false, "-0"}),
    [](const auto& test) { return test.param.name; });

}  // namespace
