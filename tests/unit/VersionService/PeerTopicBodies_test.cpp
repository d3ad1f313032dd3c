// What the topics of download and installation make of bodies that they cannot use.
#include "InstallTopicsFixture.h"
#include "MQ/Frame.h"
#include "RecordingNodes.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

using namespace Tarnwick::OrvUpdate;

namespace {

/// A topic and what it says and answers where.
struct Topic {
    const char* name;
    const char* topic;
    const char* noCatalogue;  // null: it is served without one
    const char* unreadable;   // the body is none
    const char* notJson;      // and with which code
    int notJsonCode;
    const char* notAVersion;
    bool logsTheBody;

    friend void PrintTo(const Topic& one, std::ostream* out) { *out << one.name; }
};

constexpr Topic kTopics[] = {
    {"StartDownload", kStartDownload, "versionRequest empty()", "protocol parse fail!", "version parse fail!", -1,
     "version parse fail!", false},
    {"DownloadPos", kDownloadPos, "versionRequest empty", "protocol parse fail", "version parse fail", -1,
     "version parse fail", false},
    {"StartInstall", kStartInstall, "versionRequest empty!", "protocol parse fail!", "json parse fail!", -1,
     "version parse fail! body:{}", true},
    {"InstallPos", kInstallPos, nullptr, "protocol parse fail!", "version parse fail! body:sorry", -301,
     "version parse fail! body:{}", true},
};

class PeerTopicBodies : public InstallTopics, public testing::WithParamInterface<Topic> {
protected:
    const Topic& topic() const { return GetParam(); }
    void expectOneLine(const std::string& text) {
        ASSERT_EQ(mLog.entries().size(), 1U);
        EXPECT_EQ(mLog.entries()[0].text, text);
        EXPECT_EQ(mLog.entries()[0].level, 2);
        EXPECT_EQ(mLog.entries()[0].file, "OrvUpdate/Src/VersionService");
        EXPECT_NE(mLog.entries()[0].function.find("onMQ"), std::string::npos);
    }
    void expectNothingDone() {
        EXPECT_EQ(catalogue(), std::vector<std::string>{"1.11.0.8"});
        EXPECT_EQ(VersionServiceAccess::startedInstaller(*service()), nullptr);
        EXPECT_TRUE(mPrograms.starts().empty());
    }
};

}  // namespace

TEST_P(PeerTopicBodies, WithoutABody) {
    expectRefusal(ask(topic().topic, static_cast<Tarnwick::Protocol::TWPacket*>(nullptr)), -301);
    expectOneLine(topic().unreadable);
    expectNothingDone();
}

TEST_P(PeerTopicBodies, OfAnotherRecord) {
    const auto notify = notifyBody(documentOf("1.11.0.8"));
    expectRefusal(ask(topic().topic, &notify), -301);
    Tarnwick::Protocol::TWProtoUpgradeInfo chunk;
    chunk.versionInfo = documentOf("1.11.0.8");
    expectRefusal(ask(topic().topic, &chunk), -301);
    EXPECT_TRUE(logged(topic().unreadable));
    expectNothingDone();
}

TEST_P(PeerTopicBodies, ThatAreNoJson) {
    expectRefusal(ask(topic().topic, "sorry"), topic().notJsonCode);
    expectOneLine(topic().notJson);
    expectNothingDone();
}

TEST_P(PeerTopicBodies, ThatLackAMember) {
    expectRefusal(ask(topic().topic, "{}"), -301);
    expectOneLine(topic().notAVersion);
    expectNothingDone();
}

TEST_P(PeerTopicBodies, ThatAreAnotherKindOfDocument) {
    for (const std::string document : {"[]", "7", "null", "true", R"("text")"}) {
        expectRefusal(ask(topic().topic, document), -301);
    }
    // An array of versions names none.
    expectRefusal(ask(topic().topic, "[" + documentOf("1.11.0.8") + "]"), -301);
    expectNothingDone();
}

TEST_P(PeerTopicBodies, ThatAreMadeToExhaust) {
    const std::string deep = std::string(1000000, '[');
    const std::string many = "[" + std::string(2000000, '1') + "]";
    std::string wide = "{";
    for (int key = 0; key < 200000; ++key) wide += "\"k" + std::to_string(key) + "\":0,";
    wide += "\"end\":0}";
    for (const auto& document : {deep, many, wide}) {
        const auto answer = ask(topic().topic, document);
        EXPECT_TRUE(answer.code == -301 || answer.code == topic().notJsonCode) << answer.code;
    }
    size_t logBytes = 0;
    for (const auto& line : mLog.entries()) logBytes += line.text.size();
    EXPECT_LT(logBytes, 20000U);
    expectNothingDone();
}

TEST_P(PeerTopicBodies, LargerThanAFrameAreNotSent) {
    const auto packet = packetOf(std::string(64U << 20, ' '));
    EXPECT_EQ(mAsker.send("server", topic().topic, &packet), 0U);
    expectNothingDone();
}

TEST_P(PeerTopicBodies, Of64MiBOnAQueueThatCarriesThem) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto taking = std::make_shared<VersionService>(mWorker, node, mRequest, consent(), ends());
    taking->start();
    Tarnwick::MQ::Frame frame;
    frame.kind = Tarnwick::MQ::FrameKind_Request;
    const auto packet = packetOf(documentOf("1.11.0.8") + std::string(64U << 20, ' '));
    frame.body = Tarnwick::Protocol::TWPacket::serializeAsBytes(packet);
    const auto message = std::make_shared<MQMessage>(std::make_shared<const Tarnwick::MQ::Frame>(std::move(frame)),
                                                     std::weak_ptr<MQConnection>());
    for (const auto& one : node->subscriptions) {
        if (one.topic != topic().topic) continue;
        const auto answer = one.handler(message);
        ASSERT_NE(answer, nullptr);
        EXPECT_EQ(answer->errorInfo().errorCode(), topic().notJsonCode);
    }
    expectNothingDone();
}

TEST_P(PeerTopicBodies, MembersOfOtherKindsNameNoVersion) {
    const std::string document =
        R"({"softversion":{"a":1},"serverid":[1],"description":null,"systemType":"x","systemBits":1e300,)"
        R"("versionType":-99999999999,"versionSource":true})";
    const auto answer = ask(topic().topic, document);
    EXPECT_NE(answer.code, 12345);
    EXPECT_FALSE(answer.hasBody);
    EXPECT_EQ(VersionServiceAccess::startedInstaller(*service()), nullptr);
}

TEST_P(PeerTopicBodies, OnANodeWithoutACatalogue) {
    mRequest->stop();
    const auto bare = std::make_shared<VersionService>(mWorker, mServer, std::shared_ptr<IInstaller>());
    bare->start();
    expectRefusal(ask(topic().topic, "sorry"), topic().noCatalogue ? -1 : -301);
    expectOneLine(topic().noCatalogue ? topic().noCatalogue : topic().notJson);
}

TEST_P(PeerTopicBodies, OnANodeWhoseCatalogueHasGone) {
    auto gone = makeRequest(mServer);
    mRequest->stop();
    const auto bare = std::make_shared<VersionService>(mWorker, mServer, gone, PackageCallback(), CheckCallback());
    bare->start();
    gone.reset();
    expectRefusal(ask(topic().topic, documentOf("1.11.0.8")), -1);
    if (topic().noCatalogue) expectOneLine(topic().noCatalogue);
}

INSTANTIATE_TEST_SUITE_P(Topics, PeerTopicBodies, testing::ValuesIn(kTopics),
                         [](const auto& one) { return std::string(one.param.name); });
