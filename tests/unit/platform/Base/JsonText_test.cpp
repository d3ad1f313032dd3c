#include "Base/JsonText.h"

#include <limits>

#include "JsonDocuments.h"

using Public::Base::JsonText;
using Public::Base::JsonValue;
using Public::Base::SharedBuffer;
using Public::Base::ValueType_Null;
using support::parse;
using support::write;

namespace {

TEST(JsonText, NullWritesAsNull) { EXPECT_EQ(write(JsonValue(ValueType_Null)), "null"); }

TEST(JsonText, WritesIndentedByOneTabWithKeysInTheOrderWritten) {
    JsonValue value;
    value["z"] = 1;
    value["a"]["b"] = true;
    value["list"].append("x");
    value["list"].append(2.5);
    EXPECT_EQ(write(value),
              "{\n\t\"z\": 1,\n\t\"a\": {\n\t\t\"b\": true\n\t},\n\t\"list\": [\n\t\t\"x\",\n\t\t2.5\n\t]\n}");
}

TEST(JsonText, WritesEmptyContainersOnOneLine) {
    EXPECT_EQ(write(parse("{}")), "{}");
    EXPECT_EQ(write(parse(" [ ] ")), "[]");
}

TEST(JsonText, EscapesWhatJsonMustEscape) { EXPECT_EQ(write(JsonValue("a\"b\\c\n\x01")), "\"a\\\"b\\\\c\\n\\u0001\""); }

TEST(JsonText, WritesReplacementCharactersForTextThatIsNoUtf8) {
    EXPECT_EQ(write(JsonValue(std::string("a\xFF"
                                          "b"))),
              "\"a\xEF\xBF\xBD"
              "b\"");
}

TEST(JsonText, KeepsUtf8AsItIs) { EXPECT_EQ(write(JsonValue("\xE4\xB8\xAD")), "\"\xE4\xB8\xAD\""); }

TEST(JsonText, ReadsEveryKind) {
    const JsonValue value =
        parse(R"({"s":"t","i":-5,"u":18446744073709551615,"r":1.5,"b":true,"n":null,"o":{"x":1},"l":[1,2]})");
    EXPECT_EQ(value["s"]->toString(), "t");
    EXPECT_EQ(value["i"]->toInt(), -5);
    EXPECT_EQ(value["u"]->toUint64(), 18446744073709551615ULL);
    EXPECT_DOUBLE_EQ(value["r"]->toDouble(), 1.5);
    EXPECT_TRUE(value["b"]->toBool());
    EXPECT_TRUE(value["n"].isNull());
    EXPECT_EQ(value["o"]["x"]->toInt(), 1);
    EXPECT_EQ(value["l"][size_t{1}]->toInt(), 2);
}

TEST(JsonText, ReadsBackWhatItWrote) {
    const std::string text = write(parse(R"({"a":[1,{"b":[[],{}]}],"c":"d"})"));
    EXPECT_EQ(write(parse(text)), text);
}

TEST(JsonText, KeyThatStandsTwiceKeepsItsFirstPlaceAndLastValue) {
    const JsonValue value = parse(R"({"a":1,"b":2,"a":3})");
    EXPECT_EQ(value.keys(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(value["a"]->toInt(), 3);
}

struct BadText {
    const char* name;
    std::string text;
};

class JsonRefusal : public testing::TestWithParam<BadText> {};

TEST_P(JsonRefusal, GivesMinus301AndANullValue) {
    JsonValue value;
    value["old"] = 1;
    EXPECT_EQ(value.read(SharedBuffer(GetParam().text)).errorCode(), -301);
    EXPECT_TRUE(value.isNull());
}

INSTANTIATE_TEST_SUITE_P(
    JsonText, JsonRefusal,
    testing::Values(
        BadText{"Empty", ""}, BadText{"Blank", "   "}, BadText{"Word", "hello"}, BadText{"Unclosed", "{\"a\":1"},
        BadText{"TrailingComma", "[1,]"}, BadText{"TwoDocuments", "{} {}"}, BadText{"NotUtf8", "\"\xFF\""},
        BadText{"LoneSurrogate", "\"\\ud800\""}, BadText{"SingleQuotes", "{'a':1}"}, BadText{"Comment", "/* x */ 1"},
        BadText{"ZeroByte", std::string("1\0", 2)}, BadText{"HugeNumber", "1e999"}, BadText{"LeadingZero", "01"},
        BadText{"PlusSign", "+1"}, BadText{"BarePoint", ".5"}, BadText{"PointAtTheEnd", "1."},
        BadText{"BareExponent", "1e"}, BadText{"BareSign", "-"}, BadText{"NotANumber", "NaN"},
        BadText{"Infinity", "Infinity"}, BadText{"Hexadecimal", "0x10"}, BadText{"LiteralOfOtherCase", "True"},
        BadText{"OpenText", "\"abc"}, BadText{"LineEndInText", "\"a\nb\""}, BadText{"ControlInText", "\"\x01\""},
        BadText{"UnknownEscape", "\"\\x41\""}, BadText{"ShortEscape", "\"\\u12\""},
        BadText{"LoneLowSurrogate", "\"\\udc00\""}, BadText{"OverlongUtf8", "\"\xC0\xAF\""},
        BadText{"SurrogateInUtf8", "\"\xED\xA0\x80\""}, BadText{"PastTheLastCharacter", "\"\xF4\x90\x80\x80\""},
        BadText{"CutCharacter", "\"\xE4\xB8\""}, BadText{"BadUtf8InAKey", "{\"\xFF\":1}"},
        BadText{"BadUtf8BehindTheEnd", "1\xFF"}, BadText{"Utf16", std::string("\xFF\xFE\x31\0", 4)},
        BadText{"ZeroByteInText", std::string("\"a\0b\"", 5)},
        BadText{"DocumentBehindAZeroByte", std::string("{}\0{}", 5)}, BadText{"KeyWithoutQuotes", "{a:1}"},
        BadText{"NumberAsKey", "{1:2}"}, BadText{"NoColon", "{\"a\" 1}"}, BadText{"NoComma", "[1 2]"},
        BadText{"WrongBracket", "[1}"}, BadText{"BracketTooMany", "[]]"},
        BadText{"TooDeep", std::string(65, '[') + std::string(65, ']')},
        BadText{"FarTooDeep", std::string(1000000, '[')}),
    [](const auto& each) { return each.param.name; });

TEST(JsonText, ReadsADepthOf64) {
    JsonValue value;
    EXPECT_FALSE(value.read(SharedBuffer(std::string(64, '[') + std::string(64, ']'))));
}

TEST(JsonText, ManyMembersAreReadQuickly) {
    std::string text = "{";
    for (int i = 0; i < 20000; ++i) text += (i != 0 ? ",\"k" : "\"k") + std::to_string(i) + "\":1";
    EXPECT_EQ(parse(text + "}").size(), 20000U);
}

TEST(JsonText, FailedReadKeepsNothingOfWhatWasRead) {
    JsonValue value;
    EXPECT_EQ(value.read(SharedBuffer(R"({"a":1,"b":)")).errorCode(), -301);
    EXPECT_FALSE(value.isMember("a"));
    EXPECT_EQ(value.size(), 0U);
}

TEST(JsonText, ReadReplacesWhatWasThere) {
    JsonValue value = parse(R"({"old":1})");
    EXPECT_FALSE(value.read(SharedBuffer(R"({"new":2})")));
    EXPECT_FALSE(value.isMember("old"));
    EXPECT_EQ(value["new"]->toInt(), 2);
}

TEST(JsonText, EveryCutOfADocumentIsRefused) {
    const std::string text = R"({"k\u00e9y":[1,-2.5e3,"t\n\ud83d\ude00",{"a":null,"b":true}],"z":false})";
    EXPECT_EQ(parse(text).size(), 2U);
    for (size_t length = 0; length < text.size(); ++length) {
        JsonValue value;
        ASSERT_EQ(value.read(SharedBuffer(text.substr(0, length))).errorCode(), -301) << length;
        ASSERT_TRUE(value.isNull()) << length;
    }
}

TEST(JsonText, EveryByteMayBeChangedWithoutHarm) {
    const std::string text = R"({"a":[1,-2.5e3,"x\u0041",{"b":null}],"c":true})";
    size_t readable = 0;
    for (size_t place = 0; place < text.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string changed = text;
            changed[place] = static_cast<char>(byte);
            JsonValue value;
            if (value.read(SharedBuffer(changed))) {
                ASSERT_TRUE(value.isNull());
                continue;
            }
            ++readable;
            const std::string again = write(value);
            ASSERT_EQ(write(parse(again)), again) << changed;
        }
    }
    EXPECT_GT(readable, text.size());
}

TEST(JsonText, CountsObjectsAndArraysTogetherInTheDepth) {
    std::string open, close;
    for (int i = 0; i < 32; ++i) {
        open += "[{\"a\":";
        close = "}]" + close;
    }
    JsonValue value;
    EXPECT_FALSE(value.read(SharedBuffer(open + "1" + close)));
    EXPECT_EQ(value.read(SharedBuffer(open + "[]" + close)).errorCode(), -301);
}

TEST(JsonText, SiblingsDoNotAddToTheDepth) {
    std::string text = "[";
    for (int i = 0; i < 200; ++i) text += "[],{},";
    EXPECT_EQ(parse(text + "[]]").size(), 401U);
}

TEST(JsonText, RefusesOneByteMoreThan64MiB) {
    std::string text((size_t{64} << 20) + 1, ' ');
    text[0] = '7';
    JsonValue value;
    EXPECT_EQ(value.read(SharedBuffer(text)).errorCode(), -301);
}

TEST(JsonText, ReadsADocumentAsLongAsItsLimit) {
    EXPECT_EQ(JsonText::kLongest, 67108864U);
    JsonValue value;
    EXPECT_TRUE(JsonText::read(SharedBuffer("[1]"), value, 3));
    EXPECT_EQ(value.size(), 1U);
    JsonValue longer;
    EXPECT_FALSE(JsonText::read(SharedBuffer("[1] "), longer, 3));
    EXPECT_TRUE(longer.isNull());
}

TEST(JsonText, ReadsEscapesAndPairsOfSurrogates) {
    EXPECT_EQ(parse(R"("\u4e2d\ud83d\ude00\/\b\f\n\r\t\"\\")")->toString(),
              "\xE4\xB8\xAD\xF0\x9F\x98\x80/\b\f\n\r\t\"\\");
}

TEST(JsonText, KeepsAZeroThatIsWrittenAsAnEscape) {
    const JsonValue value = parse(R"({"a\u0000b":"x\u0000y"})");
    EXPECT_TRUE(value.isMember(std::string("a\0b", 3)));
    EXPECT_FALSE(value.isMember("a"));
    EXPECT_EQ(write(value), "{\n\t\"a\\u0000b\": \"x\\u0000y\"\n}");
}

TEST(JsonText, SkipsAByteOrderMark) { EXPECT_EQ(parse("\xEF\xBB\xBF{\"a\":1}")["a"]->toInt(), 1); }

struct NumberCase {
    const char* name;
    const char* text;
    const char* written;
};

class JsonNumber : public testing::TestWithParam<NumberCase> {};

TEST_P(JsonNumber, IsWrittenAsItWasMeant) { EXPECT_EQ(write(parse(GetParam().text)), GetParam().written); }

INSTANTIATE_TEST_SUITE_P(
    JsonText, JsonNumber,
    testing::Values(NumberCase{"Zero", "0", "0"}, NumberCase{"Negative", "-12", "-12"},
                    NumberCase{"SmallestOf64Bits", "-9223372036854775808", "-9223372036854775808"},
                    NumberCase{"LargestOf64Bits", "18446744073709551615", "18446744073709551615"},
                    NumberCase{"Beyond64BitsIsReal", "18446744073709551616", "1.8446744073709552e+19"},
                    NumberCase{"RealStaysReal", "5.0", "5.0"}, NumberCase{"Exponent", "25e-1", "2.5"},
                    NumberCase{"Shortest", "0.1000000000000000055", "0.1"},
                    NumberCase{"SmallerThanEveryReal", "1e-999", "0.0"}),
    [](const auto& each) { return each.param.name; });

TEST(JsonText, WritesNullForWhatIsNoNumber) {
    EXPECT_EQ(write(JsonValue(std::numeric_limits<double>::quiet_NaN())), "null");
    EXPECT_EQ(write(JsonValue(std::numeric_limits<double>::infinity())), "null");
}

TEST(JsonText, WritesReplacementCharactersInKeysToo) {
    JsonValue value;
    value["a\xFF"] = 1;
    const std::string text = write(value);
    EXPECT_EQ(text, "{\n\t\"a\xEF\xBF\xBD\": 1\n}");
    EXPECT_EQ(parse(text).size(), 1U);
}

TEST(JsonText, KeyThatStandsTwiceMayChangeItsKind) {
    const JsonValue value = parse(R"({"a":{"x":1},"b":0,"a":[1,2],"a":[{"a":3,"a":4}]})");
    EXPECT_EQ(value.keys(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(write(value["a"]), "[\n\t{\n\t\t\"a\": 4\n\t}\n]");
}

TEST(JsonText, ManyEqualKeysAreReadQuickly) {
    std::string text = "{";
    for (int i = 0; i < 50000; ++i) text += "\"k\":1,";
    EXPECT_EQ(parse(text + "\"k\":2}").size(), 1U);
}

}  // namespace
