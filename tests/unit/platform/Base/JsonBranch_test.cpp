// Arrays and objects that were read, changed and grown; the parts that are text still and those that are not.
#include "Base/JsonBranch.h"

#include "JsonDocuments.h"

using Public::Base::JsonValue;
using support::parse;
using support::write;

namespace {

TEST(JsonBranch, ReferenceStaysGoodWhileTheArrayGrows) {
    JsonValue value = parse("[1,2]");
    JsonValue& first = value[0];
    for (int i = 0; i < 1000; ++i) value.append(i);
    value[5000] = "far";
    first = "changed";
    EXPECT_EQ(value[0]->toString(), "changed");
}

TEST(JsonBranch, ReferenceStaysGoodWhileTheObjectGrows) {
    JsonValue value = parse(R"({"a":{"b":1}})");
    JsonValue& inner = value["a"]["b"];
    for (int i = 0; i < 1000; ++i) value[("key" + std::to_string(i)).c_str()] = i;
    inner = 2;
    EXPECT_EQ(value["a"]["b"]->toInt(), 2);
}

TEST(JsonBranch, CopyDoesNotFollowAReferenceIntoTheOriginal) {
    JsonValue value = parse(R"({"a":[1,2]})");
    JsonValue& element = value["a"][0];
    const JsonValue copy = value;
    element = 7;
    EXPECT_EQ(copy["a"][0]->toInt(), 1);
    EXPECT_EQ(value["a"][0]->toInt(), 7);
}

TEST(JsonBranch, PartOutlivesItsDocument) {
    JsonValue part;
    {
        const JsonValue document = parse(R"({"a":{"b":["text of some length, so that it is on the heap"]}})");
        part = document["a"];
    }
    EXPECT_EQ(part["b"][0]->toString(), "text of some length, so that it is on the heap");
}

TEST(JsonBranch, ChangeStandsAmongWhatWasRead) {
    JsonValue value = parse(R"({"a":[1,{"x":2},3],"b":null,"c":"t"})");
    value["a"][1]["x"] = 5;
    value["c"] = parse("[true]");
    value["d"].append("new");
    EXPECT_EQ(
        write(value),
        "{\n\t\"a\": [\n\t\t1,\n\t\t{\n\t\t\t\"x\": 5\n\t\t},\n\t\t3\n\t],\n\t\"b\": null,\n\t\"c\": [\n\t\ttrue\n\t],"
        "\n\t\"d\": [\n\t\t\"new\"\n\t]\n}");
}

TEST(JsonBranch, AskingForAPartToChangeChangesNothing) {
    const std::string text = write(parse(R"({"b":[1,[2.5]],"a":{"":"x"}})"));
    JsonValue value = parse(text);
    (void)value["b"][1][0];
    (void)value["a"][""];
    EXPECT_EQ(write(value), text);
}

TEST(JsonBranch, CopyOfAChangedPartIsWhole) {
    JsonValue value = parse(R"([{"a":1},{"b":2}])");
    value[1]["c"] = 3;
    const JsonValue copy = value;
    value[1]["c"] = 4;
    EXPECT_EQ(write(copy[1]), "{\n\t\"b\": 2,\n\t\"c\": 3\n}");
    const JsonValue& same = value;
    EXPECT_EQ(same[1]["c"]->toInt(), 4);
}

TEST(JsonBranch, NullsThatAnArrayGrewByMayBeWritten) {
    JsonValue value = parse("[1]");
    value[4] = "end";
    value[2]["x"] = true;
    EXPECT_EQ(write(value), "[\n\t1,\n\tnull,\n\t{\n\t\t\"x\": true\n\t},\n\tnull,\n\t\"end\"\n]");
    const JsonValue& same = value;
    EXPECT_TRUE(same[3].isNull());
}

TEST(JsonBranch, KeyWithEscapesIsThatWithout) {
    JsonValue value = parse(R"({"\u0061b":1,"ab":2,"c\/d":3})");
    EXPECT_EQ(value.keys(), (std::vector<std::string>{"ab", "c/d"}));
    EXPECT_EQ(value["ab"]->toInt(), 2);
    value["c/d"] = 4;
    EXPECT_EQ(value.size(), 2U);
}

TEST(JsonBranch, ManyRepeatedKeysKeepTheirFirstPlacesAndLastValues) {
    std::string text = "{";
    for (int i = 0; i < 300; ++i) text += "\"k" + std::to_string(i % 100) + "\":" + std::to_string(i) + ",";
    const JsonValue value = parse(text + "\"last\":0}");
    ASSERT_EQ(value.size(), 101U);
    for (int i = 0; i < 100; ++i) {
        const std::string key = "k" + std::to_string(i);
        EXPECT_EQ(value.keys()[static_cast<size_t>(i)], key);
        EXPECT_EQ(value[key.c_str()]->toInt(), 200 + i);
    }
}

// These pairs of keys have one digest each.
constexpr const char* kTwins[] = {"8yn0iYCKYHlIj4-BwPqk", "GReLUrM4wMqfg9yzV3KQ"};
constexpr const char* kOtherTwins[] = {"gMPflVXtwGDXbIhP73TX", "LtHf1prlU1bCeYZEdqWf"};

TEST(JsonBranch, KeysOfOneDigestAreToldApart) {
    std::string text = "{";
    int number = 0;
    for (int round = 0; round < 3; ++round) {
        for (const char* key : {kTwins[1], kTwins[0], kOtherTwins[0], kOtherTwins[1]}) {
            text += "\"" + std::string(key) + "\":" + std::to_string(number++) + ",";
        }
    }
    const JsonValue value = parse(text + "\"x\":0}");
    EXPECT_EQ(value.keys(), (std::vector<std::string>{kTwins[1], kTwins[0], kOtherTwins[0], kOtherTwins[1], "x"}));
    EXPECT_EQ(value[kTwins[1]]->toInt(), 8);
    EXPECT_EQ(value[kTwins[0]]->toInt(), 9);
    EXPECT_EQ(value[kOtherTwins[1]]->toInt(), 11);
}

TEST(JsonBranch, KeysOfOneDigestAreAddedApart) {
    JsonValue value;
    value[kTwins[1]] = 1;
    value[kTwins[0]] = 2;
    EXPECT_EQ(value.size(), 2U);
    EXPECT_EQ(value[kTwins[1]]->toInt(), 1);
    EXPECT_EQ(value[kTwins[0]]->toInt(), 2);
}

TEST(JsonBranch, MembersAddedAmongMembersReadAreFound) {
    JsonValue value = parse(R"({"m":1,"c":2,"x":3})");
    for (const char* key : {"a", "d", "n", "z"}) value[key] = key;
    EXPECT_EQ(value.keys(), (std::vector<std::string>{"m", "c", "x", "a", "d", "n", "z"}));
    for (const char* key : {"a", "d", "n", "z"}) EXPECT_EQ(value[key]->toString(), key);
    EXPECT_EQ(value["x"]->toInt(), 3);
    EXPECT_FALSE(value.isMember("b"));
}

TEST(JsonBranch, FindsAllMembersAsTheyBecomeMany) {
    for (int read : {0, 1, 22, 23, 24, 25, 40}) {
        std::string text = "{";
        for (int i = 0; i < read; ++i) text += (i != 0 ? ",\"r" : "\"r") + std::to_string(i) + "\":1";
        JsonValue value = parse(text + "}");
        for (int i = 0; i < 40; ++i) {
            value[("a" + std::to_string(i)).c_str()] = 2;
            value[("a" + std::to_string(i / 2)).c_str()] = 2;
        }
        ASSERT_EQ(value.size(), static_cast<size_t>(read + 40));
        for (const std::string& key : value.keys()) {
            EXPECT_TRUE(value.isMember(key)) << key;
            EXPECT_EQ(value[key.c_str()]->toInt(), key[0] == 'r' ? 1 : 2) << key;
        }
        EXPECT_FALSE(value.isMember("r40"));
    }
}

TEST(JsonBranch, FewKeysOfWhichManyRepeatStayFew) {
    std::string text = "{";
    for (int i = 0; i < 500; ++i) text += "\"k" + std::to_string(i % 3) + "\":" + std::to_string(i) + ",";
    const JsonValue value = parse(text + "\"last\":0}");
    EXPECT_EQ(value.keys(), (std::vector<std::string>{"k0", "k1", "k2", "last"}));
    EXPECT_EQ(value["k1"]->toInt(), 499);
}

TEST(JsonBranch, MovedFromValueIsNullAndUsable) {
    JsonValue value = parse("[1,2]");
    const JsonValue taken = std::move(value);
    EXPECT_EQ(taken.size(), 2U);
    value = JsonValue(3);
    EXPECT_EQ(value->toInt(), 3);
}

}  // namespace
