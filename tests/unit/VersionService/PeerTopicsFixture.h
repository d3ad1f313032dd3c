// A server that a peer has fetch and install packages.
#pragma once

#include "CatalogueEntries.h"
#include "ManualClock.h"
#include "RequestFixture.h"

namespace Tarnwick::OrvUpdate {

inline constexpr char kStartDownload[] = "topic_upgrade_startdownload";
inline constexpr char kDownloadPos[] = "topic_upgrade_getdownloadpos";
inline constexpr char kStartInstall[] = "topic_upgrade_startinstall";
inline constexpr char kInstallPos[] = "topic_upgrade_getinstallpos";

/// In force before the nodes of the fixture are made, and until they have gone.
struct OnManualClock {
    support::ManualClock mClock;
};

inline Tarnwick::Protocol::TWProtoUpgradePkt packetOf(const std::string& text) {
    Tarnwick::Protocol::TWProtoUpgradePkt packet;
    packet.body = text;
    return packet;
}

/// The document of a version for any role, as a peer writes it.
inline std::string documentOf(const std::string& version, const std::string& serverId = {}, int type = 1) {
    return R"({"softversion":")" + version + R"(","serverid":")" + serverId +
           R"(","description":"","systemType":1,"systemBits":64,"versionType":)" + std::to_string(type) +
           R"(,"versionSource":1})";
}

/// The progress document, byte for byte.
inline std::string progressOf(const std::string& pos, bool finish) {
    return "{\n\t\"pos\": " + pos + ",\n\t\"finish\": " + (finish ? "true" : "false") + "\n}";
}

/// The node "server" with its catalogue, and the peer that asks. Time stands still.
class PeerTopics : public OnManualClock, public RequestFixture {
protected:
    QueueAnswer ask(const std::string& topic, const Tarnwick::Protocol::TWPacket* body) {
        return mAsker.ask("server", topic, body).value_or(QueueAnswer{12345, "no answer", false, ""});
    }
    QueueAnswer ask(const std::string& topic, const std::string& text) {
        const auto packet = packetOf(text);
        return ask(topic, &packet);
    }
    std::shared_ptr<VersionService> service() { return VersionRequestAccess::service(*mRequest); }
    std::vector<std::string> catalogue() { return support::versionTexts(mRequest->getVersions()); }
    static void expectRefusal(const QueueAnswer& answer, int code) {
        EXPECT_EQ(answer.code, code);
        EXPECT_EQ(answer.message, "");
        EXPECT_FALSE(answer.hasBody);
    }
    static void expectProgress(const QueueAnswer& answer, const std::string& pos, bool finish) {
        EXPECT_EQ(answer.code, 0);
        EXPECT_EQ(answer.message, "");
        EXPECT_EQ(answer.body, progressOf(pos, finish));
    }
    bool logged(const std::string& text) const { return mLog.has(2, text); }

    support::LogRecorder mLog;
    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQSystemServer> mPeer = makeServer("peer");
    std::shared_ptr<VersionRequest> mRequest = makeRequest(mServer);
    Asker mAsker{mPeer->connectionTo("server", "")};
};

}  // namespace Tarnwick::OrvUpdate
