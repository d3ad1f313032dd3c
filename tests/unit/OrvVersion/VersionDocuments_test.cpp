// The document of the cluster: what one node tells another of a version.
#include "ForeignVersion.h"
#include "OrvVersion.h"
#include "ServerIdSource.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

const char* const sNodeDocument =
    R"({"softversion":"1.11.0.8","serverid":"S7","description":"fast","systemType":2,"systemBits":32,)"
    R"("versionType":3,"versionSource":2})";

JsonValue nodeDocument() {
    JsonValue value;
    if (value.read(SharedBuffer(sNodeDocument))) throw std::runtime_error("the document must be readable");
    return value;
}

std::shared_ptr<OrvVersion> makeVersion() { return std::make_shared<OrvVersion>(nullptr, "/store", "S1"); }

JsonValue without(const JsonValue& value, const std::string& left) {
    JsonValue rest;
    for (const std::string& key : value.keys()) {
        if (key != left) rest[key.c_str()] = value[key.c_str()];
    }
    return rest;
}

std::string documentOf(const std::string& version) {
    JsonValue value = nodeDocument();
    value["softversion"] = version;
    return value.toStyledString(WriteStyle_Indented).toStdString();
}

/// @param code what reading must give
VersionSet readAll(const std::string& text, int code = 0) {
    VersionSet found;
    const ErrorInfo error = OrvVersion::parseVersion(nullptr, text, "/store", found, "S1", Version());
    EXPECT_EQ(static_cast<int>(error.errorCode()), code);
    EXPECT_EQ(error.errorMessage(), "");
    return found;
}

std::vector<std::string> numbers(const VersionSet& versions) {
    std::vector<std::string> texts;
    for (const auto& version : versions) texts.push_back(version->getVersion().toString());
    return texts;
}

}  // namespace

TEST(NodeDocument, FillsEveryFieldAndSetsTheNodePosition) {
    const auto version = makeVersion();
    version->setStoragePosition(StoragePosition_Local);
    EXPECT_EQ(version->parseVersion(nodeDocument()).errorCode(), 0);
    EXPECT_EQ(version->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(version->getServerid(), "S7");
    EXPECT_EQ(version->getDescribe(), "fast");
    EXPECT_EQ(version->getSystemType(), SystemType_Linux);
    EXPECT_EQ(version->getSystemBits(), SystemBits_32);
    EXPECT_EQ(version->getVersionType(), VersionType_Server);
    EXPECT_EQ(version->getVersionSource(), VersionSource_Manual);
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_Node);
}

class NodeDocumentMember : public testing::TestWithParam<std::string> {};

TEST_P(NodeDocumentMember, WhenMissingFailsAndWritesNothing) {
    const auto version = makeVersion();
    const std::string before = version->buildVersionInfo().toStyledString(WriteStyle_Indented);
    const ErrorInfo error = version->parseVersion(without(nodeDocument(), GetParam()));
    EXPECT_EQ(error.errorCode(), -301);
    EXPECT_EQ(error.errorMessage(), "");
    EXPECT_EQ(version->buildVersionInfo().toStyledString(WriteStyle_Indented).toStdString(), before);
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_None);
}

TEST_P(NodeDocumentMember, OfAWrongKindReadsAsZeroOrEmpty) {
    for (const bool array : {true, false}) {
        JsonValue document = nodeDocument();
        JsonValue wrong;
        if (array) {
            wrong.append("1.11.0.8");
        } else {
            wrong["softversion"] = 1;
        }
        document[GetParam().c_str()] = wrong;
        const auto version = makeVersion();
        EXPECT_EQ(version->parseVersion(document).errorCode(), 0);
        const JsonValue built = version->buildVersionInfo();
        const std::string text = built[GetParam().c_str()]->toString();
        EXPECT_TRUE(text.empty() || text == "0") << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Keys, NodeDocumentMember,
                         testing::Values("softversion", "serverid", "description", "systemType", "systemBits",
                                         "versionType", "versionSource"),
                         [](const auto& test) { return test.param; });

TEST(NodeDocument, ConvertsScalarsFreely) {
    JsonValue document = nodeDocument();
    document["softversion"] = 2;
    document["serverid"] = 17;
    document["systemType"] = "1";
    document["systemBits"] = "64";
    document["versionType"] = true;
    document["versionSource"] = JsonValue();
    const auto version = makeVersion();
    EXPECT_EQ(version->parseVersion(document).errorCode(), 0);
    EXPECT_EQ(version->getVersion().toString(), "2");
    EXPECT_EQ(version->getServerid(), "17");
    EXPECT_EQ(version->getSystemType(), SystemType_Windows);
    EXPECT_EQ(version->getSystemBits(), SystemBits_64);
    EXPECT_EQ(version->getVersionType(), VersionType_All);
    EXPECT_EQ(version->getVersionSource(), VersionSource_Unknown);
}

TEST(NodeDocument, TakesNumbersOutsideOfTheEnumerations) {
    JsonValue document = nodeDocument();
    document["versionType"] = 9;
    document["systemBits"] = -5;
    const auto version = makeVersion();
    EXPECT_EQ(version->parseVersion(document).errorCode(), 0);
    EXPECT_EQ(static_cast<int>(version->getVersionType()), 9);
    EXPECT_EQ(static_cast<int>(version->getSystemBits()), -5);
}

TEST(NodeDocument, KeepsAVersionWithAPathInsideTheStore) {
    const VersionSet found = readAll(documentOf("../../../etc/x"));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getPackageFile(), "/store/Manual/Linux x86 Server//.exe");
}

TEST(NodeDocument, GivesMinusOneToOneObjectForTextThatIsNoJson) {
    for (const char* text : {"", "{", "nothing", "[1,", "\xff\xfe"}) {
        const ErrorInfo error = makeVersion()->parseVersion(std::string(text));
        EXPECT_EQ(error.errorCode(), -1) << text;
        EXPECT_EQ(error.errorMessage(), "") << text;
    }
}

TEST(NodeDocument, GivesMinus301ToASetForTextThatIsNoJson) {
    for (const char* text : {"", "{", "nothing", "[1,", "\xff\xfe"}) EXPECT_TRUE(readAll(text, -301).empty()) << text;
}

TEST(NodeDocument, ReadsOneObjectFromText) {
    const auto version = makeVersion();
    EXPECT_EQ(version->parseVersion(std::string(sNodeDocument)).errorCode(), 0);
    EXPECT_EQ(version->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(version->parseVersion(std::string("{}")).errorCode(), -301);
    EXPECT_EQ(version->parseVersion(std::string("[]")).errorCode(), -301);
}

TEST(NodeDocument, PutsASingleVersionIntoTheSet) {
    const VersionSet found = readAll(sNodeDocument);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getStoragePosition(), StoragePosition_Node);
    EXPECT_EQ((*found.begin())->getPackageFile(), "/store/Manual/Linux x86 Server/1.11.0.8/1.11.0.8.exe");
}

TEST(NodeDocument, ReplacesTheDefaultServerIdByTheDocuments) {
    const VersionSet found = readAll(sNodeDocument);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getServerid(), "S7");
}

TEST(NodeDocument, FailsForASingleValueThatIsNoVersion) {
    for (const char* text : {"{}", "null", "5", "\"text\"", R"({"softversion":"1.0"})"}) {
        EXPECT_TRUE(readAll(text, -301).empty()) << text;
    }
}

TEST(NodeDocument, DropsFailedElementsOfAnArrayAndTakesTheOthers) {
    const std::string text = "[{}," + documentOf("2.0") + ",7,null,[],\"x\"," + documentOf("1.0") + "]";
    EXPECT_EQ(numbers(readAll(text)), (std::vector<std::string>{"1.0", "2.0"}));
}

TEST(NodeDocument, SucceedsForAnArrayWithoutAnyGoodElement) {
    EXPECT_TRUE(readAll("[]").empty());
    EXPECT_TRUE(readAll("[{},1,null]").empty());
}

TEST(NodeDocument, LeavesWhatTheSetHeld) {
    const auto earlier = makeVersion();
    ASSERT_FALSE(earlier->parseVersion(nodeDocument()));
    VersionSet found{earlier};
    EXPECT_FALSE(OrvVersion::parseVersion(nullptr, "[" + documentOf("1.11.0.8") + "," + documentOf("2.0") + "]",
                                          "/other", found, "S9", Version()));
    EXPECT_EQ(found.size(), 2U);
    EXPECT_EQ(*found.begin(), earlier);
    EXPECT_TRUE(OrvVersion::parseVersion(nullptr, "{}", "/other", found, "S9", Version()));
    EXPECT_EQ(found.size(), 2U);
}

TEST(NodeDocument, TakesVersionsOfAnyEdition) {
    VersionSet found;
    const std::string text = "[" + documentOf("1.0-oem4") + "," + documentOf("1.0-oem5") + "]";
    EXPECT_FALSE(OrvVersion::parseVersion(nullptr, text, "/store", found, "S1", Version("1.0-oem4", 0)));
    EXPECT_EQ(found.size(), 2U);
}

TEST(NodeDocument, ReadsAnArrayOfTwentyThousandVersions) {
    std::string text = "[";
    for (int number = 0; number < 20000; ++number) {
        if (number > 0) text += ",";
        text += documentOf("1." + std::to_string(number));
    }
    EXPECT_EQ(readAll(text + "]").size(), 20000U);
}

TEST(NodeDocument, RefusesADocumentNestedWithoutEnd) {
    EXPECT_TRUE(readAll(std::string(100000, '['), -301).empty());
    EXPECT_TRUE(readAll(std::string(100, '[') + std::string(100, ']'), -301).empty());
}

// Building

TEST(NodeDocument, BuildsSevenMembersInTheirOrder) {
    const auto version = makeVersion();
    ASSERT_FALSE(version->parseVersion(nodeDocument()));
    version->setStoragePosition(StoragePosition_Local);
    version->setLocalFileName("/secret/place.exe");
    EXPECT_EQ(version->buildVersionInfo().toStyledString(WriteStyle_Indented).toStdString(),
              "{\n\t\"softversion\": \"1.11.0.8\",\n\t\"serverid\": \"S7\",\n\t\"description\": \"fast\",\n"
              "\t\"systemType\": 2,\n\t\"systemBits\": 32,\n\t\"versionType\": 3,\n\t\"versionSource\": 2\n}");
}

TEST(NodeDocument, BuildsWithTheProvidersServerId) {
    const auto source = std::make_shared<support::ServerIdSource>("provided");
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", source);
    EXPECT_EQ(version->buildVersionInfo()["serverid"]->toString(), "provided");
    source->id = "changed";
    EXPECT_EQ(version->buildVersionInfo()["serverid"]->toString(), "changed");
}

TEST(NodeDocument, BuildsNullForAnEmptySet) {
    std::string text = "left over";
    EXPECT_EQ(OrvVersion::buildVersion({}, text).errorCode(), 0);
    EXPECT_EQ(text, "null");
}

TEST(NodeDocument, BuildsAnArrayInSetOrder) {
    const VersionSet versions = readAll("[" + documentOf("2.0") + "," + documentOf("1.0") + "]");
    std::string text;
    EXPECT_EQ(OrvVersion::buildVersion(versions, text).errorCode(), 0);
    JsonValue document;
    ASSERT_FALSE(document.read(SharedBuffer(text)));
    ASSERT_TRUE(document.isArray());
    ASSERT_EQ(document.size(), 2U);
    EXPECT_EQ(document[0]["softversion"]->toString(), "1.0");
    EXPECT_EQ(document[1]["softversion"]->toString(), "2.0");
}

TEST(NodeDocument, ReadsBackWhatItBuilds) {
    std::string written;
    ASSERT_FALSE(OrvVersion::buildVersion(
        readAll("[" + documentOf("1.0-oem2-b7-rabc") + "," + documentOf("1.11") + "]"), written));
    std::string again;
    ASSERT_FALSE(OrvVersion::buildVersion(readAll(written), again));
    EXPECT_EQ(again, written);
    EXPECT_NE(written.find("1.0-oem2-b7-rabc"), std::string::npos);
}

TEST(NodeDocument, LeavesNullOutAndAsksVersionsOfAnotherClass) {
    const VersionSet versions{nullptr, std::make_shared<support::ForeignVersion>("3.0")};
    std::string text;
    EXPECT_EQ(OrvVersion::buildVersion(versions, text).errorCode(), 0);
    EXPECT_EQ(text, "[\n\t{\n\t\t\"softversion\": \"3.0\"\n\t}\n]");
}

TEST(NodeDocument, WritesADescriptionThatIsNotUtf8Readably) {
    const auto version = makeVersion();
    version->setDescribe("bad \xff byte");
    std::string text;
    EXPECT_FALSE(OrvVersion::buildVersion({version}, text));
    JsonValue document;
    EXPECT_FALSE(document.read(SharedBuffer(text)));
    EXPECT_EQ(document[0]["description"]->toString(), "bad \xef\xbf\xbd byte");
}
