// The elements of a document's arrays.
#include "CompatibilityFixture.h"
#include "JsonDocuments.h"
#include "LogRecorder.h"

namespace Tarnwick::OrvUpdate {

namespace {

class Element : public testing::TestWithParam<ArrayCase> {
protected:
    const ArrayCase& mKeys = GetParam();
    std::string forward(const std::string& elements, const std::string& version = "1.2.0.0",
                        SystemType system = SystemType_Windows) {
        return fromFirst(loaded(documentOf(mKeys, elements)), mKeys, component(version, system));
    }
};

std::string without(const std::string& element, const char* member, const char* inner = nullptr) {
    const JsonValue whole = support::parse(element);
    JsonValue result;
    for (const auto& key : whole.keys()) {
        if (key != member) {
            result[key.c_str()] = whole[key.c_str()];
            continue;
        }
        if (!inner) continue;
        JsonValue range;
        const JsonValue old = whole[member];
        for (const auto& part : old.keys()) {
            if (part != inner) range[part.c_str()] = old[part.c_str()];
        }
        result[member] = range;
    }
    return support::write(result);
}

size_t unknownNames(const support::LogRecorder& log) {
    size_t count = 0;
    for (const auto& entry : log.entries()) count += entry.text == "Unknown System!" && entry.level == 2;
    return count;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Of, Element, testing::Values(kClients, kServers, kVideoWalls, kVanticServers), nameOf);

TEST_P(Element, WithoutOneOfItsMembersIsSkippedAndTheRestIsRead) {
    for (const char* member : {mKeys.firstSystems, mKeys.firstRange, mKeys.secondSystems, mKeys.secondRange}) {
        const std::string cut = without(rule(mKeys, {"5.0", "6.0"}), member);
        EXPECT_EQ(forward(cut + "," + rule(mKeys), "5.5"), "") << member;
        EXPECT_EQ(forward(cut + "," + rule(mKeys)), "1 1.2.0.0 1.3.0.0") << member;
    }
}

TEST_P(Element, WithoutAnEndOfARangeIsSkippedAndTheRestIsRead) {
    for (const char* member : {mKeys.firstRange, mKeys.secondRange}) {
        for (const char* end : {"LowVersion", "HigherVersion"}) {
            const std::string cut = without(rule(mKeys, {"5.0", "6.0"}), member, end);
            EXPECT_EQ(forward(cut + "," + rule(mKeys), "5.5"), "") << member << end;
            EXPECT_EQ(forward(cut + "," + rule(mKeys)), "1 1.2.0.0 1.3.0.0") << member << end;
        }
    }
}

TEST_P(Element, ThatIsSkippedIsNotLogged) {
    const support::LogRecorder log;
    EXPECT_EQ(forward(without(rule(mKeys), mKeys.firstRange)), "");
    EXPECT_TRUE(log.entries().empty());
}

TEST_P(Element, OfAnotherKindIsSkipped) {
    EXPECT_EQ(forward(R"(5,null,"System",[],[[]],{},true,)" + rule(mKeys)), "1 1.2.0.0 1.3.0.0");
}

TEST_P(Element, WhoseSystemsAreNoArrayMakesNoRule) {
    for (const char* systems : {R"("Windows")", "1", "null", R"({"0":"Windows"})", "true"}) {
        EXPECT_EQ(forward(rule(mKeys, {"1.2.0.0", "1.3.0.0", systems})), "") << systems;
        EXPECT_EQ(forward(rule(mKeys, {}, {"1.2.0.0", "1.3.0.0", systems})), "") << systems;
    }
}

TEST_P(Element, WithoutSystemsMakesNoRule) {
    EXPECT_EQ(forward(rule(mKeys, {"1.2.0.0", "1.3.0.0", "[]"})), "");
    EXPECT_EQ(forward(rule(mKeys, {}, {"1.2.0.0", "1.3.0.0", "[]"})), "");
}

TEST_P(Element, WhoseRangeIsNoObjectIsSkipped) {
    std::string text = rule(mKeys);
    const std::string range = R"({"LowVersion":"1.2.0.0","HigherVersion":"1.3.0.0"})";
    text.replace(text.find(range), range.size(), R"(["1.2.0.0","1.3.0.0"])");
    EXPECT_EQ(forward(text), "");
}

TEST_P(Element, UnfoldsToTheProductOfItsSystems) {
    const Side both{"1.2.0.0", "1.3.0.0", R"(["Windows","Linux"])"};
    for (const SystemType system : {SystemType_Windows, SystemType_Linux}) {
        EXPECT_EQ(forward(rule(mKeys, both, both), "1.2.0.0", system), "1 1.2.0.0 1.3.0.0; 2 1.2.0.0 1.3.0.0");
    }
    EXPECT_EQ(forward(rule(mKeys, both, both), "1.2.0.0", SystemType_Mac), "");
}

TEST_P(Element, NamesASystemTwiceToNoEffect) {
    const Side twice{"1.2.0.0", "1.3.0.0", R"(["Windows","windows","WINDOWS"])"};
    EXPECT_EQ(forward(rule(mKeys, twice, twice)), "1 1.2.0.0 1.3.0.0");
}

TEST_P(Element, AddsUpWithOthersOfTheSameFirstRange) {
    EXPECT_EQ(forward(rule(mKeys, {}, {"3.0", "4.0"}) + "," + rule(mKeys, {}, {"1.0", "2.0"})), "1 1.0 2.0; 1 3.0 4.0");
}

TEST_P(Element, KeepsTheFirstOfTwoRangesThatDifferBeyondTheirNumbersOnly) {
    const std::string text = rule(mKeys, {"1.2-b7", "1.3"}, {"3.0-rA", "4.0"}) + "," +
                             rule(mKeys, {"1.2.0.0", "1.3-oem1"}, {"3.0", "4.0-b1"});
    EXPECT_EQ(forward(text, "1.2-b7"), "1 3.0-rA 4.0");
    EXPECT_EQ(forward(text, "1.2"), "");  // below the first one's build
}

TEST_P(Element, WithVersionsThatCannotBeReadHoldsNothing) {
    EXPECT_EQ(forward(rule(mKeys, {"low", "high"}), "1.2.0.0"), "");
    EXPECT_EQ(forward(rule(mKeys, {"low", "high"}), ""), "");
}

TEST_P(Element, WithALowVersionThatCannotBeReadBeginsAtTheEmptyVersion) {
    EXPECT_EQ(forward(rule(mKeys, {"low", "1.0"}), "0.5"), "1 1.2.0.0 1.3.0.0");
}

TEST_P(Element, WhoseRangeIsTurnedRoundHoldsNothing) {
    EXPECT_EQ(forward(rule(mKeys, {"1.3.0.0", "1.2.0.0"}), "1.2.5.0"), "");
    EXPECT_EQ(forward(rule(mKeys, {"1.3.0.0", "1.2.0.0"}), "1.3.0.0"), "");
}

TEST_P(Element, TakesNumbersForVersions) {
    std::string text = rule(mKeys);
    const std::string range = R"({"LowVersion":"1.2.0.0","HigherVersion":"1.3.0.0"})";
    text.replace(text.find(range), range.size(), R"({"LowVersion":1,"HigherVersion":2})");
    EXPECT_EQ(forward(text), "1 1.2.0.0 1.3.0.0");
}

struct SystemName {
    const char* name;
    int system;
};

class NameOfASystem : public testing::TestWithParam<SystemName> {};

TEST_P(NameOfASystem, IsKnownInAnyCase) {
    const std::string name = GetParam().name;
    std::string lower = name, upper = name;
    for (char& c : lower) c = static_cast<char>(std::tolower(c));
    for (char& c : upper) c = static_cast<char>(std::toupper(c));
    const support::LogRecorder log;
    for (const std::string& spelled : {name, lower, upper}) {
        const Side side{"1.2.0.0", "1.3.0.0", "[\"" + spelled + "\"]"};
        const VersionCompatible document = loaded(documentOf(kClients, rule(kClients, side)));
        EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0", static_cast<SystemType>(GetParam().system))),
                  "1 1.2.0.0 1.3.0.0")
            << spelled;
    }
    EXPECT_EQ(unknownNames(log), 0u);
}

INSTANTIATE_TEST_SUITE_P(Of, NameOfASystem,
                         testing::Values(SystemName{"Windows", 1}, SystemName{"Linux", 2}, SystemName{"Mac", 3},
                                         SystemName{"Android", 4}, SystemName{"IOS", 5}),
                         nameOf);

TEST(UnknownSystem, KeepsItsRuleUnderSystem0) {
    for (const char* name : {R"("BeOS")", R"("")", R"("Windows ")", "1", "null", R"(["Windows"])", R"("W\u0000")"}) {
        const VersionCompatible document =
            loaded(documentOf(kClients, rule(kClients, {"1.2.0.0", "1.3.0.0", "[" + std::string(name) + "]"})));
        EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0", SystemType_Unknown)), "1 1.2.0.0 1.3.0.0") << name;
        EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "") << name;
    }
}

TEST_P(Element, WithAnUnknownSystemOnTheSecondSideGoesWithSystem0) {
    EXPECT_EQ(forward(rule(mKeys, {}, {"1.2.0.0", "1.3.0.0", R"(["BeOS"])"})), "0 1.2.0.0 1.3.0.0");
}

TEST_P(Element, LogsEachUnknownNameOnceAtLevel2) {
    const support::LogRecorder log;
    const Side first{"1.2.0.0", "1.3.0.0", R"(["BeOS","Windows","Linux"])"};
    const Side second{"1.2.0.0", "1.3.0.0", R"(["Plan 9","Windows","Haiku"])"};
    EXPECT_NE(forward(rule(mKeys, first, second)), "");
    EXPECT_EQ(unknownNames(log), 3u);
    EXPECT_EQ(log.entries().size(), 3u);
}

TEST_P(Element, LogsNoNameOfAnElementThatIsSkipped) {
    const support::LogRecorder log;
    const Side unknown{"1.2.0.0", "1.3.0.0", R"(["BeOS"])"};
    EXPECT_EQ(forward(without(rule(mKeys, unknown, unknown), mKeys.secondRange, "LowVersion")), "");
    EXPECT_EQ(unknownNames(log), 0u);
}

}  // namespace Tarnwick::OrvUpdate
