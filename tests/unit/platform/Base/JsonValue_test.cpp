#include "Public/Base/JsonValue.h"

#include "JsonDocuments.h"

using Public::Base::JsonValue;
using Public::Base::Value;
using support::parse;
using support::write;

namespace {

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

// A value may be assigned a part of itself, and become a part of itself.

TEST(JsonValue, MayBecomeAMemberOfItsOwn) {
    JsonValue value =
        parse(R"({"x":{"a":"a text that lies on the heap, for sure","b":"another one of that kind"},"q":1})");
    value = value["x"];
    EXPECT_EQ(value.keys(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(value["b"]->toString(), "another one of that kind");
}

TEST(JsonValue, MayBecomeAnElementOfItsOwnByMoving) {
    JsonValue value = parse(R"([[1,"a text that lies on the heap, for sure"],2])");
    value = std::move(value[0]);
    EXPECT_EQ(value.size(), 2U);
    EXPECT_EQ(value[1]->toString(), "a text that lies on the heap, for sure");
}

TEST(JsonValue, MayBeAssignedToAMemberOfItsOwn) {
    JsonValue value = parse(R"({"a":1,"b":{"old":2}})");
    value["b"] = value;
    EXPECT_EQ(value["b"]["a"]->toInt(), 1);
    EXPECT_EQ(value["b"]["b"]["old"]->toInt(), 2);
}

TEST(JsonValue, SelfAssignmentKeepsTheTree) {
    JsonValue value = parse(R"({"a":[1,2]})");
    const auto& same = value;
    value = same;
    EXPECT_EQ(value["a"].size(), 2U);
}

TEST(JsonValue, KeysDifferByCase) {
    const JsonValue value = parse(R"({"Url":1,"url":2})");
    EXPECT_EQ(value["Url"]->toInt(), 1);
    EXPECT_EQ(value["url"]->toInt(), 2);
    EXPECT_FALSE(value.isMember("URL"));
}

TEST(JsonValue, KeysOfAnythingButAnObjectAreNone) {
    EXPECT_TRUE(parse("[1]").keys().empty());
    EXPECT_TRUE(JsonValue(5).keys().empty());
    EXPECT_FALSE(parse("[\"a\"]").isMember("a"));
}

TEST(JsonValue, NegativeIndexIsRefused) {
    JsonValue value;
    value.append(1);
    value[-1] = 5;
    EXPECT_EQ(value.size(), 1U);
    const JsonValue& same = value;
    EXPECT_TRUE(same[-1].isNull());
}

TEST(JsonValue, RefusedIndexRemembersNothing) {
    JsonValue value;
    value[-1] = 5;
    EXPECT_TRUE(value[-1].isNull());
    EXPECT_TRUE(value.isNull());
}

TEST(JsonValue, GrowsByAMillionAtMost) {
    JsonValue value;
    value[size_t{1048577}] = 1;
    EXPECT_EQ(value.size(), 0U);
    value[size_t{1048576}] = 1;
    EXPECT_EQ(value.size(), 1048577U);
}

TEST(JsonValue, NullKeyCountsAsEmptyText) {
    JsonValue value;
    value[static_cast<const char*>(nullptr)] = 1;
    EXPECT_TRUE(value.isMember(""));
}

TEST(JsonValue, ScalarMayBeChangedInItsPlace) {
    JsonValue value("old");
    *value.operator->() = Value(5);
    EXPECT_EQ(write(value), "5");
}

TEST(JsonValue, AppendingToAScalarOrObjectBeginsAnArray) {
    JsonValue value = parse(R"({"a":1})");
    value.append(2);
    EXPECT_EQ(write(value), "[\n\t2\n]");
}

TEST(JsonValue, WritingAnElementTurnsAnObjectIntoAnArray) {
    JsonValue value = parse(R"({"a":1})");
    value[0] = "x";
    EXPECT_EQ(write(value), "[\n\t\"x\"\n]");
}

TEST(JsonValue, ReadingAConstValueChangesNothing) {
    const JsonValue value = parse(R"({"a":[]})");
    EXPECT_TRUE(value["missing"][size_t{3}]["deeper"].isNull());
    EXPECT_EQ(write(value), "{\n\t\"a\": []\n}");
}

}  // namespace
