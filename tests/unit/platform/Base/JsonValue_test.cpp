#include "Public/Base/JsonValue.h"

using Public::Base::JsonValue;
using Public::Base::SharedBuffer;
using Public::Base::Value;
using Public::Base::ValueType_Null;
using Public::Base::WriteStyle_Indented;

namespace {

std::string write(const JsonValue& value) { return value.toStyledString(WriteStyle_Indented).toStdString(); }

JsonValue parse(const std::string& text) {
    JsonValue value;
    EXPECT_FALSE(value.read(SharedBuffer(text))) << text;
    return value;
}

TEST(JsonValue, NullWritesAsNull) { EXPECT_EQ(write(JsonValue(ValueType_Null)), "null"); }

TEST(JsonValue, BecomesAnObjectOnFirstUse) {
    JsonValue value;
    value["a"] = 1;
    EXPECT_TRUE(value.isObject());
    EXPECT_TRUE(value.isMember("a"));
    EXPECT_FALSE(value.isMember("b"));
}

TEST(JsonValue, BecomesAnArrayOnFirstAppend) {
    JsonValue value;
    value.append("x");
    EXPECT_TRUE(value.isArray());
    EXPECT_EQ(value.size(), 1U);
}

TEST(JsonValue, WritesIndentedByOneTabWithKeysInTheOrderWritten) {
    JsonValue value;
    value["z"] = 1;
    value["a"]["b"] = true;
    value["list"].append("x");
    value["list"].append(2.5);
    EXPECT_EQ(write(value),
              "{\n\t\"z\": 1,\n\t\"a\": {\n\t\t\"b\": true\n\t},\n\t\"list\": [\n\t\t\"x\",\n\t\t2.5\n\t]\n}");
}

TEST(JsonValue, WritesEmptyContainersOnOneLine) {
    EXPECT_EQ(write(parse("{}")), "{}");
    EXPECT_EQ(write(parse(" [ ] ")), "[]");
}

TEST(JsonValue, EscapesWhatJsonMustEscape) {
    EXPECT_EQ(write(JsonValue("a\"b\\c\n\x01")), "\"a\\\"b\\\\c\\n\\u0001\"");
}

TEST(JsonValue, WritesReplacementCharactersForTextThatIsNoUtf8) {
    EXPECT_EQ(write(JsonValue(std::string("a\xFF"
                                          "b"))),
              "\"a\xEF\xBF\xBD"
              "b\"");
}

TEST(JsonValue, KeepsUtf8AsItIs) { EXPECT_EQ(write(JsonValue("\xE4\xB8\xAD")), "\"\xE4\xB8\xAD\""); }

TEST(JsonValue, ReadsEveryKind) {
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

TEST(JsonValue, ReadsBackWhatItWrote) {
    const std::string text = write(parse(R"({"a":[1,{"b":[[],{}]}],"c":"d"})"));
    EXPECT_EQ(write(parse(text)), text);
}

TEST(JsonValue, KeyThatStandsTwiceKeepsItsFirstPlaceAndLastValue) {
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

INSTANTIATE_TEST_SUITE_P(JsonValue, JsonRefusal,
                         testing::Values(BadText{"Empty", ""}, BadText{"Blank", "   "}, BadText{"Word", "hello"},
                                         BadText{"Unclosed", "{\"a\":1"}, BadText{"TrailingComma", "[1,]"},
                                         BadText{"TwoDocuments", "{} {}"}, BadText{"NotUtf8", "\"\xFF\""},
                                         BadText{"LoneSurrogate", "\"\\ud800\""}, BadText{"SingleQuotes", "{'a':1}"},
                                         BadText{"Comment", "/* x */ 1"}, BadText{"ZeroByte", std::string("1\0", 2)},
                                         BadText{"HugeNumber", "1e999"},
                                         BadText{"TooDeep", std::string(65, '[') + std::string(65, ']')},
                                         BadText{"FarTooDeep", std::string(1000000, '[')}),
                         [](const auto& each) { return each.param.name; });

TEST(JsonValue, ReadsADepthOf64) {
    JsonValue value;
    EXPECT_FALSE(value.read(SharedBuffer(std::string(64, '[') + std::string(64, ']'))));
}

TEST(JsonValue, RefusesMoreThan64MiB) {
    JsonValue value;
    EXPECT_TRUE(value.read(SharedBuffer("\"" + std::string((size_t{64} << 20) - 1, 'x') + "\"")));
}

TEST(JsonValue, MissingMemberOfAConstValueIsNull) {
    const JsonValue value = parse(R"({"a":1})");
    EXPECT_TRUE(value["b"].isNull());
    EXPECT_TRUE(value["a"]["deeper"].isNull());
    EXPECT_TRUE(value[size_t{0}].isNull());
    EXPECT_EQ(value["b"]->toString(), "");
}

TEST(JsonValue, WritableIndexMakesTheMember) {
    JsonValue value;
    EXPECT_TRUE(value["a"].isNull());
    EXPECT_TRUE(value.isMember("a"));
}

TEST(JsonValue, WritableIndexGrowsAnArrayWithNulls) {
    JsonValue value;
    value[2] = "x";
    EXPECT_EQ(write(value), "[\n\tnull,\n\tnull,\n\t\"x\"\n]");
}

TEST(JsonValue, AbsurdIndexIsRefusedAndLosesNothing) {
    JsonValue value;
    value.append(1);
    value[size_t{1} << 40] = 5;
    EXPECT_EQ(value.size(), 1U);
}

TEST(JsonValue, WritingAMemberTurnsAScalarIntoAnObject) {
    JsonValue value("text");
    value["a"] = 1;
    EXPECT_EQ(write(value), "{\n\t\"a\": 1\n}");
}

TEST(JsonValue, AppendingAValueToItselfIsSafe) {
    JsonValue value;
    value.append(1);
    value.append(value);
    EXPECT_EQ(value.size(), 2U);
    EXPECT_EQ(value[1].size(), 1U);
}

TEST(JsonValue, CopiesAreDeep) {
    JsonValue first;
    first["a"] = 1;
    JsonValue second = first;
    second["a"] = 2;
    EXPECT_EQ(first["a"]->toInt(), 1);
}

TEST(JsonValue, SizeAndEmptinessOfEachKind) {
    EXPECT_TRUE(JsonValue().empty());
    EXPECT_FALSE(JsonValue(5).empty());
    EXPECT_EQ(JsonValue("x").size(), 1U);
    EXPECT_EQ(parse("{\"a\":1,\"b\":2}").size(), 2U);
    EXPECT_TRUE(parse("[]").empty());
}

TEST(JsonValue, ScalarsComeFromAnyKind) {
    EXPECT_EQ(write(JsonValue(7)), "7");
    EXPECT_EQ(write(JsonValue(false)), "false");
    EXPECT_EQ(write(JsonValue(0.25)), "0.25");
    EXPECT_EQ(write(JsonValue(Value(9ULL))), "9");
    EXPECT_EQ(write(JsonValue(std::string("s"))), "\"s\"");
}

TEST(JsonValue, ScalarOfAContainerIsNull) {
    const JsonValue value = parse("{\"a\":1}");
    EXPECT_EQ(value->toString(), "");
    EXPECT_EQ(value->toInt(), 0);
}

TEST(JsonValue, ManyMembersAreReadQuickly) {
    std::string text = "{";
    for (int i = 0; i < 50000; ++i) text += (i != 0 ? ",\"k" : "\"k") + std::to_string(i) + "\":1";
    EXPECT_EQ(parse(text + "}").size(), 50000U);
}

TEST(JsonValue, MayBecomeAPartOfItself) {
    JsonValue value;
    value["a"]["b"]["c"] = "deep";
    value = value["a"]["b"];
    EXPECT_EQ(value["c"]->toString(), "deep");
    value = std::move(value["c"]);
    EXPECT_EQ(value->toString(), "deep");
}

TEST(JsonValue, MayHoldACopyOfItself) {
    JsonValue value;
    value["a"] = 1;
    value["b"] = value;
    EXPECT_EQ(value["b"]["a"]->toInt(), 1);
    EXPECT_EQ(value["b"].size(), 2U);
    EXPECT_TRUE(value["b"]["b"].isNull());
}

TEST(JsonValue, MemberCopiesToOneThatIsMadeInTheSameStatement) {
    JsonValue value;
    value["first"] = "a text that is too long to lie within its string";
    for (const char* name : {"b", "c", "d", "e", "f"}) value[name] = value["first"];
    EXPECT_EQ(value["f"]->toString(), "a text that is too long to lie within its string");
}

TEST(JsonValue, ReferencesStayGoodWhileOthersAreAdded) {
    JsonValue value;
    JsonValue& member = value["member"];
    JsonValue& element = value["list"][size_t{0}];
    for (int i = 1; i < 100; ++i) {
        value[std::to_string(i).c_str()] = i;
        value["list"].append(i);
    }
    member = "m";
    element = "e";
    EXPECT_EQ(value["member"]->toString(), "m");
    EXPECT_EQ(value["list"][0]->toString(), "e");
}

}  // namespace
