// The document that the program carries, and questions to it.
#include "VersionCompatible/DefaultDocument.h"

#include "CompatibilityFixture.h"
#include "JsonDocuments.h"

namespace Tarnwick::OrvUpdate {

namespace {

enum class Question { ClientFromSystem, SystemFromClient, ServerFromServer };

struct DefaultCase {
    const char* name;
    Question question;
    VersionType type;
    VersionCompatibles system;  // the first one of two servers
    VersionCompatibles client;  // the second one
    bool answer;
};

class DefaultDocument : public testing::TestWithParam<DefaultCase> {
protected:
    const VersionCompatible mDocument = loaded(kDefaultDocument);
};

constexpr auto kLinux = Public::Base::SystemType_Linux;
constexpr auto kIos = Public::Base::SystemType_IOS;
constexpr auto kMac = Public::Base::SystemType_Mac;
constexpr auto kAndroid = Public::Base::SystemType_Android;

}  // namespace

TEST_P(DefaultDocument, Answers) {
    const DefaultCase& asked = GetParam();
    bool answer = !asked.answer;
    switch (asked.question) {
        case Question::ClientFromSystem:
            answer = mDocument.isClientCompatibleFromSystem(asked.type, asked.system, asked.client);
            break;
        case Question::SystemFromClient:
            answer = mDocument.isSystemCompatibleFromClient(asked.type, asked.system, asked.client);
            break;
        case Question::ServerFromServer:
            answer = mDocument.isServerCompatibleFromServer(asked.system, asked.client);
            break;
    }
    EXPECT_EQ(answer, asked.answer);
}

INSTANTIATE_TEST_SUITE_P(
    That, DefaultDocument,
    testing::Values(DefaultCase{"AWindowsClientGoesWithALinuxSystem", Question::ClientFromSystem, VersionType_Client,
                                component("1.2.0.0", kLinux), component("1.2.5.0"), true},
                    DefaultCase{"AnAndroidClientGoesWithAMacSystem", Question::ClientFromSystem, VersionType_Client,
                                component("1.2.9.9", kMac), component("1.2.0.0", kAndroid), true},
                    DefaultCase{"AnIosSystemGoesWithAMacClient", Question::SystemFromClient, VersionType_Client,
                                component("1.2.1.0", kIos), component("1.2.8.0", kMac), true},
                    DefaultCase{"AClientOf13IsOutsideTheRule", Question::ClientFromSystem, VersionType_Client,
                                component("1.2.0.0"), component("1.3.0.0"), false},
                    DefaultCase{"ASystemOf13IsOutsideTheRule", Question::SystemFromClient, VersionType_Client,
                                component("1.3.0.0"), component("1.2.0.0"), false},
                    DefaultCase{"ClientAndSystemOf13AreEqual", Question::ClientFromSystem, VersionType_Client,
                                component("1.3.0.0"), component("1.3.0.0"), true},
                    DefaultCase{"AClientOf11IsOutsideTheRule", Question::ClientFromSystem, VersionType_Client,
                                component("1.2.0.0"), component("1.1.9.9"), false},
                    DefaultCase{"BuildsAndRevisionsDoNotMatterInside", Question::ClientFromSystem, VersionType_Client,
                                component("1.2.5.0-b4-rX"), component("1.2.5.0-b9-rY"), true},
                    DefaultCase{"EqualVersionsOfASystemTheRuleDoesNotKnow", Question::ClientFromSystem,
                                VersionType_Client, component("1.2.0.0", SystemType_Unknown),
                                component("1.2.0.0", SystemType_Unknown), true},
                    DefaultCase{"AnotherEditionIsInsideTheRangeAllTheSame", Question::ClientFromSystem,
                                VersionType_Client, component("1.2.5.0-oem7"), component("1.2.5.0"), true},
                    DefaultCase{"AVideoWallOf13GoesWithASystemOf13", Question::ClientFromSystem, VersionType_VideoWall,
                                component("1.3.2.0"), component("1.3.7.0"), true},
                    DefaultCase{"AVideoWallOf12DoesNot", Question::ClientFromSystem, VersionType_VideoWall,
                                component("1.3.0.0"), component("1.2.0.0"), false},
                    DefaultCase{"AVideoWallOnLinuxDoesNot", Question::ClientFromSystem, VersionType_VideoWall,
                                component("1.3.2.0"), component("1.3.7.0", kLinux), false},
                    DefaultCase{"AVanticServerOf13GoesWithASystemOf13", Question::SystemFromClient,
                                VersionType_Analytics, component("1.3.9.9"), component("1.3.0.0"), true},
                    DefaultCase{"AVanticServerOf14DoesNot", Question::SystemFromClient, VersionType_Analytics,
                                component("1.3.0.0"), component("1.4.0.0"), false},
                    DefaultCase{"RoleAllGetsNo", Question::ClientFromSystem, VersionType_All, component("1.2.0.0"),
                                component("1.2.0.0"), false},
                    DefaultCase{"RoleAllGetsYesFromTheClientsSideWhenEqual", Question::SystemFromClient,
                                VersionType_All, component("1.2.0.0"), component("1.2.0.0"), true},
                    DefaultCase{"RoleServerGetsNoForAPairInsideTheRule", Question::SystemFromClient, VersionType_Server,
                                component("1.2.0.0"), component("1.2.5.0"), false},
                    DefaultCase{"WindowsServersOf12GoTogether", Question::ServerFromServer, VersionType_Server,
                                component("1.2.0.0"), component("1.2.9.0"), true},
                    DefaultCase{"LinuxServersOf12DoNot", Question::ServerFromServer, VersionType_Server,
                                component("1.2.0.0", kLinux), component("1.2.9.0", kLinux), false},
                    DefaultCase{"LinuxServersOfOneVersionDo", Question::ServerFromServer, VersionType_Server,
                                component("1.2.9.0", kLinux), component("1.2.9.0", kLinux), true},
                    DefaultCase{"ServersOf12And13DoNot", Question::ServerFromServer, VersionType_Server,
                                component("1.2.9.0"), component("1.3.0.0"), false}),
    nameOf);

TEST(DefaultDocumentText, IsOfVersion1006) {
    Version version;
    EXPECT_FALSE(loaded(kDefaultDocument).getVersion(version));
    EXPECT_EQ(version.toString(), "1.0.0.6");
}

TEST(DefaultDocumentText, HasItsLengthLineBreaksAndTabs) {
    const std::string text = kDefaultDocument;
    EXPECT_EQ(text.size(), 1071u);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 34);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\t'), 73);
    EXPECT_EQ(text.substr(0, 26), "{\n\t\"Version\":\"1.0.0.6\",\n\t\"");
    EXPECT_EQ(text.substr(text.size() - 8), "\t\t}\n\t]\n}");
}

TEST(DefaultDocumentText, SaysWhatItSays) {
    const JsonValue expected = support::parse(R"({"Version":"1.0.0.6",
        "ClientCompatibles":[{"System":["Windows","Linux","IOS","MAC","Android"],
            "SystemVersion":{"LowVersion":"1.2.0.0","HigherVersion":"1.3.0.0"},
            "ClientSystem":["Windows","Linux","IOS","MAC","Android"],
            "ClientVersion":{"LowVersion":"1.2.0.0","HigherVersion":"1.3.0.0"}}],
        "SystemCompatibles":[{"System":["Windows"],"Version":{"LowVersion":"1.2.0.0","HigherVersion":"1.3.0.0"},
            "otherSystem":["Windows"],"otherVersion":{"LowVersion":"1.2.0.0","HigherVersion":"1.3.0.0"}}],
        "VideoWallCompatibles":[{"System":["Windows"],
            "SystemVersion":{"LowVersion":"1.3.0.0","HigherVersion":"1.4.0.0"},
            "VideoWallSystem":["Windows"],"VideoWallVersion":{"LowVersion":"1.3.0.0","HigherVersion":"1.4.0.0"}}],
        "VanticServerCompatibles":[{"System":["Windows"],
            "SystemVersion":{"LowVersion":"1.3.0.0","HigherVersion":"1.4.0.0"},
            "VanticServerSystem":["Windows"],
            "VanticServerVersion":{"LowVersion":"1.3.0.0","HigherVersion":"1.4.0.0"}}]})");
    EXPECT_EQ(support::write(support::parse(kDefaultDocument)), support::write(expected));
}

TEST(DefaultDocumentText, RoleServerLeavesTheResultEmpty) {
    RangeSet result;
    EXPECT_EQ(loaded(kDefaultDocument)
                  .queryClientCompatibleFromSystem(VersionType_Server, component("1.2.0.0"), result)
                  .errorCode(),
              0);
    EXPECT_TRUE(result.empty());
}

TEST(DefaultDocumentText, TakesMacInCapitalsForMac) {
    EXPECT_EQ(fromFirst(loaded(kDefaultDocument), kClients, component("1.2.0.0", kMac)),
              "1 1.2.0.0 1.3.0.0; 2 1.2.0.0 1.3.0.0; 3 1.2.0.0 1.3.0.0; 4 1.2.0.0 1.3.0.0; 5 1.2.0.0 1.3.0.0");
}

}  // namespace Tarnwick::OrvUpdate
