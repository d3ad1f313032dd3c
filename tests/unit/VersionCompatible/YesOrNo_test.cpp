// The three yes-or-no questions, which differ on purpose.
#include "CompatibilityFixture.h"

namespace Tarnwick::OrvUpdate {

namespace {

/// A role and the array whose rules it goes by.
class YesOrNo : public testing::TestWithParam<ArrayCase> {
protected:
    bool clientFromSystem(const std::string& elements, const VersionCompatibles& system,
                          const VersionCompatibles& client) {
        return loaded(documentOf(mKeys, elements)).isClientCompatibleFromSystem(mKeys.type, system, client);
    }
    bool systemFromClient(const std::string& elements, const VersionCompatibles& system,
                          const VersionCompatibles& client) {
        return loaded(documentOf(mKeys, elements)).isSystemCompatibleFromClient(mKeys.type, system, client);
    }
    const ArrayCase& mKeys = GetParam();
};

bool serverFromServer(const std::string& elements, const VersionCompatibles& first, const VersionCompatibles& second) {
    return loaded(documentOf(kServers, elements)).isServerCompatibleFromServer(first, second);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Of, YesOrNo, testing::Values(kClients, kVideoWalls, kVanticServers), nameOf);

// What a rule says.

TEST_P(YesOrNo, BothRoleQuestionsFollowARuleThatJoinsTheTwo) {
    const std::string text = rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"});
    EXPECT_TRUE(clientFromSystem(text, component("1.5"), component("3.5")));
    EXPECT_TRUE(systemFromClient(text, component("1.5"), component("3.5")));
    EXPECT_FALSE(clientFromSystem(text, component("3.5"), component("1.5")));
    EXPECT_FALSE(systemFromClient(text, component("3.5"), component("1.5")));
}

TEST_P(YesOrNo, BothRoleQuestionsAskForTheSystemsOfTheRule) {
    const std::string text = rule(mKeys, {"1.0", "2.0", R"(["Linux"])"}, {"3.0", "4.0", R"(["Mac"])"});
    const auto system = component("1.5", SystemType_Linux), client = component("3.5", SystemType_Mac);
    EXPECT_TRUE(clientFromSystem(text, system, client));
    EXPECT_TRUE(systemFromClient(text, system, client));
    for (const auto& [s, c] : {std::pair(component("1.5"), client), std::pair(system, component("3.5"))}) {
        EXPECT_FALSE(clientFromSystem(text, s, c));
        EXPECT_FALSE(systemFromClient(text, s, c));
    }
}

TEST_P(YesOrNo, BothRoleQuestionsLookAtEveryMatchingRuleNotAtTheFirst) {
    const std::string text =
        rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"}) + "," + rule(mKeys, {"1.2", "1.9"}, {"5.0", "6.0"});
    EXPECT_TRUE(clientFromSystem(text, component("1.5"), component("5.5")));
    EXPECT_TRUE(systemFromClient(text, component("1.5"), component("5.5")));
}

// Equal versions.

TEST_P(YesOrNo, ClientFromSystemPutsRulesBeforeEquality) {
    const std::string text = rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"});
    EXPECT_FALSE(clientFromSystem(text, component("1.5"), component("1.5")));
    EXPECT_FALSE(clientFromSystem(text, component("3.5"), component("3.5")));
    EXPECT_TRUE(clientFromSystem(text, component("2.5"), component("2.5")));
}

TEST_P(YesOrNo, SystemFromClientPutsEqualityBeforeRules) {
    const std::string text = rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"});
    EXPECT_TRUE(systemFromClient(text, component("1.5"), component("1.5")));
    EXPECT_TRUE(systemFromClient(text, component("3.5"), component("3.5")));
    EXPECT_TRUE(systemFromClient(text, component("2.5"), component("2.5")));
}

TEST(YesOrNoOfServers, ServerFromServerPutsEqualityBeforeRules) {
    const std::string text = rule(kServers, {"1.0", "2.0"}, {"3.0", "4.0"});
    EXPECT_TRUE(serverFromServer(text, component("1.5"), component("1.5")));
    EXPECT_TRUE(serverFromServer(text, component("3.5"), component("3.5")));
    EXPECT_TRUE(serverFromServer(text, component("9.5"), component("9.5")));
}

TEST_P(YesOrNo, EqualityAsksForNoSystem) {
    EXPECT_TRUE(clientFromSystem("", component("2.5", SystemType_Linux), component("2.5", SystemType_Mac)));
    EXPECT_TRUE(systemFromClient("", component("2.5", SystemType_Linux), component("2.5", SystemType_Mac)));
    EXPECT_TRUE(serverFromServer("", component("2.5", SystemType_Linux), component("2.5", SystemType_Mac)));
}

TEST_P(YesOrNo, WithoutARuleDifferentVersionsDoNotMeet) {
    EXPECT_FALSE(clientFromSystem("", component("2.5"), component("2.6")));
    EXPECT_FALSE(systemFromClient("", component("2.5"), component("2.6")));
    EXPECT_FALSE(serverFromServer("", component("2.5"), component("2.6")));
}

TEST_P(YesOrNo, ARuleThatSpeaksOfOneOfTheTwoWithoutTheOtherSaysNo) {
    const std::string text = rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"});
    EXPECT_FALSE(clientFromSystem(text, component("1.5"), component("9.0")));
    EXPECT_FALSE(systemFromClient(text, component("9.0"), component("3.5")));
    EXPECT_FALSE(serverFromServer(rule(kServers, {"1.0", "2.0"}, {"3.0", "4.0"}), component("9.0"), component("1.5")));
}

struct EqualCase {
    const char* name;
    const char* first;
    const char* second;
    bool equal;
};

class EqualVersions : public testing::TestWithParam<EqualCase> {};

TEST_P(EqualVersions, AreTheSameToAllThree) {
    const auto [name, first, second, equal] = GetParam();
    const VersionCompatible document = loaded(R"({"Version":"1.0"})");
    const auto a = component(first), b = component(second);
    EXPECT_EQ(document.isClientCompatibleFromSystem(VersionType_Client, a, b), equal);
    EXPECT_EQ(document.isSystemCompatibleFromClient(VersionType_Client, a, b), equal);
    EXPECT_EQ(document.isServerCompatibleFromServer(a, b), equal);
}

INSTANTIATE_TEST_SUITE_P(With, EqualVersions,
                         testing::Values(EqualCase{"NoDifference", "1.2.3.4", "1.2.3.4", true},
                                         EqualCase{"AnotherBuild", "1.2.3.4-b1", "1.2.3.4-b2", true},
                                         EqualCase{"ABuildOnOneSide", "1.2.3.4", "1.2.3.4-b2", true},
                                         EqualCase{"AnotherRevision", "1.2.3.4-rA", "1.2.3.4-rB", true},
                                         EqualCase{"AnotherBuildAndRevision", "1.2.3.4-b1-rA", "1.2.3.4-b9", true},
                                         EqualCase{"NumbersLeftOut", "1.2", "1.2.0.0", true},
                                         EqualCase{"AnotherEdition", "1.2.3.4-oem1", "1.2.3.4-oem2", false},
                                         EqualCase{"AnEditionOnOneSide", "1.2.3.4", "1.2.3.4-oem2", false},
                                         EqualCase{"AnotherFirstNumber", "2.2.3.4", "1.2.3.4", false},
                                         EqualCase{"AnotherSecondNumber", "1.3.3.4", "1.2.3.4", false},
                                         EqualCase{"AnotherThirdNumber", "1.2.4.4", "1.2.3.4", false},
                                         EqualCase{"AnotherFourthNumber", "1.2.3.5", "1.2.3.4", false},
                                         EqualCase{"NoVersions", "", "", true}),
                         nameOf);

// Revisions.

TEST_P(YesOrNo, RevisionsOfTheTwoCountForNothing) {
    const std::string text = rule(mKeys, {"1.0", "2.0-rM"}, {"3.0", "4.0-rM"});
    EXPECT_TRUE(clientFromSystem(text, component("2.0-rZ"), component("4.0-rZ")));
    EXPECT_TRUE(systemFromClient(text, component("2.0-rZ"), component("4.0-rZ")));
    const std::string servers = rule(kServers, {"1.0", "2.0-rM"}, {"3.0", "4.0-rM"});
    EXPECT_TRUE(serverFromServer(servers, component("4.0-rZ"), component("2.0-rZ")));
}

TEST_P(YesOrNo, BuildsCountWhereARuleNamesThem) {
    const std::string text = rule(mKeys, {"1.0-b5", "2.0"}, {"3.0-b5", "4.0"});
    EXPECT_TRUE(clientFromSystem(text, component("1.0-b5"), component("3.0-b5")));
    EXPECT_FALSE(clientFromSystem(text, component("1.0-b4"), component("3.0-b5")));
    EXPECT_FALSE(systemFromClient(text, component("1.0-b5"), component("3.0-b4")));
}

TEST_P(YesOrNo, QuestionsLeaveTheirComponentsAsTheyAre) {
    const auto system = component("1.5-b2-rX"), client = component("1.5-b3-rY");
    EXPECT_TRUE(systemFromClient("", system, client));
    EXPECT_TRUE(clientFromSystem("", system, client));
    EXPECT_EQ(system.version.toString() + " " + client.version.toString(), "1.5-b2-rX 1.5-b3-rY");
}

// The directions.

TEST_P(YesOrNo, ClientFromSystemReadsARuleFromTheClientsSideToo) {
    // The second rule's range is as good as the first's to the order, so it goes under the first one's key, which does
    // not hold the system; from the client's side its own key leads to it.
    const std::string text =
        rule(mKeys, {"1.0-b9", "2.0"}, {"3.0", "4.0"}) + "," + rule(mKeys, {"1.0", "2.0"}, {"5.0", "6.0"});
    EXPECT_FALSE(clientFromSystem(text, component("1.0"), component("3.5")));
    EXPECT_TRUE(clientFromSystem(text, component("1.0-b9"), component("5.5")));
    EXPECT_TRUE(clientFromSystem(text, component("1.0"), component("5.5")));
}

TEST_P(YesOrNo, SystemFromClientReadsARuleFromTheClientsSideAlone) {
    const std::string systems =
        rule(mKeys, {"1.0-b9", "2.0"}, {"3.0", "4.0"}) + "," + rule(mKeys, {"1.0", "2.0"}, {"5.0", "6.0"});
    EXPECT_TRUE(systemFromClient(systems, component("1.0"), component("5.5")));
    const std::string clients =
        rule(mKeys, {"3.0", "4.0"}, {"1.0-b9", "2.0"}) + "," + rule(mKeys, {"5.0", "6.0"}, {"1.0", "2.0"});
    EXPECT_TRUE(clientFromSystem(clients, component("5.5"), component("1.0")));
    EXPECT_FALSE(systemFromClient(clients, component("5.5"), component("1.0")));
}

TEST(YesOrNoOfServers, SecondIsMatchedAgainstTheSystemOfARuleAndFirstAgainstTheOther) {
    const std::string text = rule(kServers, {"1.0", "2.0"}, {"3.0", "4.0"});
    EXPECT_TRUE(serverFromServer(text, component("3.5"), component("1.5")));
    EXPECT_FALSE(serverFromServer(text, component("1.5"), component("3.5")));
}

TEST(YesOrNoOfServers, LooksAtEveryMatchingRule) {
    const std::string text =
        rule(kServers, {"1.0", "2.0"}, {"3.0", "4.0"}) + "," + rule(kServers, {"1.2", "1.9"}, {"5.0", "6.0"});
    EXPECT_TRUE(serverFromServer(text, component("5.5"), component("1.5")));
}

// Roles without rules.

class NoRole : public testing::TestWithParam<int> {
protected:
    VersionType type() const { return static_cast<VersionType>(GetParam()); }
    VersionCompatible mDocument = loaded(documentOf(kClients, rule(kClients)));
};

TEST_P(NoRole, GetsNoFromClientFromSystemEvenForEqualVersions) {
    EXPECT_FALSE(mDocument.isClientCompatibleFromSystem(type(), component("1.2.0.0"), component("1.2.0.0")));
    EXPECT_FALSE(mDocument.isClientCompatibleFromSystem(type(), component("9.0"), component("9.0")));
}

TEST_P(NoRole, GetsYesFromSystemFromClientForEqualVersionsAndNoElse) {
    EXPECT_TRUE(mDocument.isSystemCompatibleFromClient(type(), component("1.2.0.0"), component("1.2.0.0")));
    EXPECT_TRUE(mDocument.isSystemCompatibleFromClient(type(), component("9.0-b1"), component("9.0")));
    EXPECT_FALSE(mDocument.isSystemCompatibleFromClient(type(), component("1.2.0.0"), component("1.2.5.0")));
}

INSTANTIATE_TEST_SUITE_P(Type, NoRole, testing::Values(0, 1, 3, 6, -1), numberOf);

TEST(UnknownSystemOfAComponent, MeetsTheRulesOfAnUnknownNameOnly) {
    const Side unknown{"1.2.0.0", "1.3.0.0", R"(["BeOS"])"};
    const auto item = component("1.2.5.0", SystemType_Unknown);
    const VersionCompatible strange = loaded(documentOf(kClients, rule(kClients, unknown, unknown)));
    const VersionCompatible known = loaded(documentOf(kClients, rule(kClients)));
    EXPECT_TRUE(
        strange.isClientCompatibleFromSystem(VersionType_Client, component("1.2.0.0", SystemType_Unknown), item));
    EXPECT_FALSE(
        known.isClientCompatibleFromSystem(VersionType_Client, component("1.2.0.0", SystemType_Unknown), item));
    EXPECT_FALSE(strange.isClientCompatibleFromSystem(VersionType_Client, component("1.2.0.0"), item));
}

}  // namespace Tarnwick::OrvUpdate
