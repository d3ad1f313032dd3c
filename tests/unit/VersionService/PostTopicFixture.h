// A node that takes pushed packages, and a peer that pushes chunks to it.
#pragma once

#include "CatalogueEntries.h"
#include "FileText.h"
#include "OpenFiles.h"
#include "RequestFixture.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::Protocol::TWProtoUpgradeInfo;

inline constexpr char kPostTopic[] = "topic_upgrade_postversion";

/// The version document as a pushing peer writes it.
inline std::string postDocument(const std::string& version, int source = VersionSource_Online) {
    return "{\"softversion\":\"" + version +
           "\",\"systemType\":1,\"systemBits\":64,\"versionSource\":" + std::to_string(source) +
           ",\"versionType\":1,\"serverid\":\"server\",\"description\":\"\"}";
}

class PostTopicFixture : public RequestFixture {
protected:
    static TWProtoUpgradeInfo chunk(const std::string& data, uint32_t position = 0, uint32_t fileSize = 0,
                                    const std::string& transferId = "one") {
        TWProtoUpgradeInfo info;
        info.transferId = transferId;
        info.data = data;
        info.position = position;
        info.fileSize = fileSize;
        info.versionInfo = postDocument("2.0.0.0");
        return info;
    }
    /// @return the code of the answer, which must be bare; 1 when none came
    int post(const Tarnwick::Protocol::TWPacket* body) {
        const auto answer = mAsker.ask("server", kPostTopic, body);
        if (!answer) return 1;
        EXPECT_FALSE(answer->hasBody);
        return answer->code;
    }
    int post(const TWProtoUpgradeInfo& info) { return post(&info); }
    /// Pushes the whole text in chunks of that many bytes.
    void postAll(const std::string& text, size_t step, const std::string& transferId = "one") {
        for (size_t at = 0; at < text.size(); at += step) {
            EXPECT_EQ(post(chunk(text.substr(at, step), static_cast<uint32_t>(at), static_cast<uint32_t>(text.size()),
                                 transferId)),
                      0);
        }
    }
    void start() { ASSERT_FALSE(startAt(*mRequest)); }

    std::shared_ptr<IVersion> entryAt(const std::string& version = "2.0.0.0") {
        return mRequest->queryVersion(support::entry(version.c_str()));
    }
    std::string path(const std::string& version = "2.0.0.0") const { return mStore.path(packageOf(version)); }
    std::optional<std::string> content() const { return support::readText(path()); }

    support::LogRecorder mLog;
    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQClient> mClient = makeClient();
    std::shared_ptr<VersionRequest> mRequest = makeRequest(mServer);
    Asker mAsker{mClient->connection()};
};

}  // namespace Tarnwick::OrvUpdate
