// What a compatibility document must hold, and what a second one replaces.
#include "CompatibilityFixture.h"

namespace Tarnwick::OrvUpdate {

namespace {

class DocumentArray : public testing::TestWithParam<ArrayCase> {
protected:
    const ArrayCase& mKeys = GetParam();
    VersionCompatible mDocument;
};

/// The three arrays whose rules are read from both sides.
class DocumentRole : public DocumentArray {};

std::string versionOf(const IVersionCompatible& document) {
    Version version;
    document.getVersion(version);
    return version.toString();
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Of, DocumentArray, testing::Values(kClients, kServers, kVideoWalls, kVanticServers), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, DocumentRole, testing::Values(kClients, kVideoWalls, kVanticServers), nameOf);

TEST(Document, TellsItsVersion) {
    const VersionCompatible document = loaded(R"({"Version":"1.0.0.6-oem2"})");
    Version version;
    EXPECT_EQ(document.getVersion(version).errorCode(), 0);
    EXPECT_EQ(version.toString(), "1.0.0.6-oem2");
}

TEST(Document, HasNoVersionBeforeItsFirstLoad) {
    Version version("9.9", 0);
    EXPECT_EQ(VersionCompatible().getVersion(version).errorCode(), -1);
    EXPECT_EQ(version.toString(), "9.9");
}

TEST(Document, LoadsWithAVersionThatCannotBeReadAndHasNone) {
    const VersionCompatible document = loaded(R"({"Version":"one"})");
    Version version;
    EXPECT_EQ(document.getVersion(version).errorCode(), -1);
}

TEST(Document, TakesANumberForItsVersion) { EXPECT_EQ(versionOf(loaded(R"({"Version":3})")), "3"); }

TEST(Document, OfAVersionAloneLoadsAndHasNoRules) {
    const VersionCompatible document = loaded(R"({"Version":"1.0"})");
    for (const ArrayCase& keys : {kClients, kServers, kVideoWalls, kVanticServers}) {
        EXPECT_EQ(fromFirst(document, keys, component("1.2.0.0")), "") << keys.name;
        EXPECT_EQ(fromSecond(document, keys, component("1.2.0.0")), "") << keys.name;
    }
}

struct BadText {
    const char* name;
    const char* text;
};

class BadDocument : public testing::TestWithParam<BadText> {};

TEST_P(BadDocument, IsRefusedWithCode301AndChangesNothing) {
    VersionCompatible document = loaded(documentOf(kClients, rule(kClients), "2.0"));
    EXPECT_EQ(document.loadFromMem(GetParam().text).errorCode(), -301);
    EXPECT_EQ(versionOf(document), "2.0");
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST_P(BadDocument, GivesANullPointerFromTheFactory) {
    EXPECT_EQ(IVersionCompatible::loadFromMem(GetParam().text), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Of, BadDocument,
                         testing::Values(BadText{"Nothing", ""}, BadText{"NoJson", "<html>"}, BadText{"Null", "null"},
                                         BadText{"AnArray", R"([{"Version":"1.0"}])"},
                                         BadText{"AString", R"("Version")"}, BadText{"AnEmptyObject", "{}"},
                                         BadText{"NoVersion", R"({"ClientCompatibles":[]})"},
                                         BadText{"AnotherCase", R"({"version":"3.0"})"},
                                         BadText{"CutShort", R"({"Version":"3.0")"},
                                         BadText{"TwoDocuments", R"({"Version":"3.0"}{"Version":"3.0"})"}),
                         nameOf);

TEST(Document, FactoryGivesTheLoadedDocument) {
    const auto document = IVersionCompatible::loadFromMem(documentOf(kClients, rule(kClients), "4.0"));
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(versionOf(*document), "4.0");
    EXPECT_EQ(fromFirst(*document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST_P(DocumentArray, IsReadUnderItsOwnKeys) {
    const VersionCompatible document = loaded(documentOf(mKeys, rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"})));
    for (const ArrayCase& keys : {kClients, kServers, kVideoWalls, kVanticServers}) {
        const bool own = keys.array == std::string(mKeys.array);
        EXPECT_EQ(fromFirst(document, keys, component("1.5")), own ? "1 3.0 4.0" : "") << keys.name;
    }
}

TEST_P(DocumentArray, OfASecondLoadReplacesTheRulesOfTheFirst) {
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"})));
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys, {"5.0", "6.0"}, {"7.0", "8.0"}), "2.0"));
    EXPECT_EQ(fromFirst(mDocument, mKeys, component("1.5")), "");
    EXPECT_EQ(fromFirst(mDocument, mKeys, component("5.5")), "1 7.0 8.0");
    EXPECT_EQ(versionOf(mDocument), "2.0");
}

TEST_P(DocumentArray, ThatIsAbsentFromASecondLoadKeepsItsRules) {
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys)));
    mDocument.loadFromMem(R"({"Version":"2.0"})");
    EXPECT_EQ(fromFirst(mDocument, mKeys, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
    EXPECT_EQ(versionOf(mDocument), "2.0");
}

TEST_P(DocumentArray, ThatIsEmptyCountsAsUnreadAndKeepsItsRules) {
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys)));
    EXPECT_FALSE(mDocument.loadFromMem(documentOf(mKeys, "")));
    EXPECT_EQ(fromFirst(mDocument, mKeys, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST_P(DocumentArray, ThatIsNullOrAnEmptyObjectKeepsItsRules) {
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys)));
    for (const char* value : {"null", "{}"}) {
        const std::string text = R"({"Version":"2.0",")" + std::string(mKeys.array) + "\":" + value + "}";
        EXPECT_FALSE(mDocument.loadFromMem(text)) << value;
        EXPECT_EQ(fromFirst(mDocument, mKeys, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0") << value;
    }
}

TEST_P(DocumentArray, OfUnreadableElementsTakesTheRulesOfAFormerLoadAway) {
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys)));
    EXPECT_FALSE(mDocument.loadFromMem(documentOf(mKeys, "{}")));
    EXPECT_EQ(fromFirst(mDocument, mKeys, component("1.2.0.0")), "");
}

const char* const kOtherKinds[] = {R"("Windows")", "5", "false", R"({"0":{}})"};

TEST_P(DocumentRole, ThatIsOfAnotherKindKeepsItsRules) {
    mDocument.loadFromMem(documentOf(mKeys, rule(mKeys)));
    for (const char* value : kOtherKinds) {
        const std::string text = R"({"Version":"2.0",")" + std::string(mKeys.array) + "\":" + value + "}";
        EXPECT_EQ(mDocument.loadFromMem(text).errorCode(), 0) << value;
        EXPECT_EQ(fromFirst(mDocument, mKeys, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0") << value;
        EXPECT_EQ(fromSecond(mDocument, mKeys, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0") << value;
    }
}

TEST(DocumentServers, OfAnotherKindTakesTheRulesAwayUnlikeTheOtherArrays) {
    for (const char* value : kOtherKinds) {
        VersionCompatible document = loaded(documentOf(kServers, rule(kServers)));
        EXPECT_FALSE(document.loadFromMem(R"({"Version":"2.0","SystemCompatibles":)" + std::string(value) + "}"));
        EXPECT_EQ(fromFirst(document, kServers, component("1.2.0.0")), "") << value;
    }
}

TEST_P(DocumentRole, IsReadFromBothSides) {
    const VersionCompatible document = loaded(documentOf(mKeys, rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"})));
    EXPECT_EQ(fromFirst(document, mKeys, component("1.5")), "1 3.0 4.0");
    EXPECT_EQ(fromSecond(document, mKeys, component("3.5")), "1 1.0 2.0");
    EXPECT_EQ(fromSecond(document, mKeys, component("1.5")), "");
}

TEST(DocumentServers, RulesHoldInOneDirection) {
    const VersionCompatible document = loaded(documentOf(kServers, rule(kServers, {"1.0", "2.0"}, {"3.0", "4.0"})));
    EXPECT_EQ(fromFirst(document, kServers, component("1.5")), "1 3.0 4.0");
    EXPECT_EQ(fromFirst(document, kServers, component("3.5")), "");
}

TEST(Document, CopiesKeepTheirRulesWhenTheOriginalLoadsOthers) {
    VersionCompatible original = loaded(documentOf(kClients, rule(kClients), "1.0"));
    const VersionCompatible copy = original;
    VersionCompatible assigned;
    assigned = original;
    original.loadFromMem(documentOf(kClients, rule(kClients, {"5.0", "6.0"}), "2.0"));
    for (const VersionCompatible* kept : {&copy, const_cast<const VersionCompatible*>(&assigned)}) {
        EXPECT_EQ(versionOf(*kept), "1.0");
        EXPECT_EQ(fromFirst(*kept, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
    }
    EXPECT_EQ(fromFirst(original, kClients, component("1.2.0.0")), "");
}

TEST(Document, UnknownMembersAreSkipped) {
    const VersionCompatible document = loaded(R"({"Later":[1,{"a":null}],"Version":"1.0","ClientCompatibles":[)" +
                                              rule(kClients) + R"(],"Version2":{}})");
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST(Document, MembersMayStandInAnyOrder) {
    const VersionCompatible document = loaded(R"({"ClientCompatibles":[)" + rule(kClients) + R"(],"Version":"1.0"})");
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

}  // namespace Tarnwick::OrvUpdate
