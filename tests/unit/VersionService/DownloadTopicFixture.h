// The serving side of a pull, asked without a queue in between.
#pragma once

#include "CatalogueEntries.h"
#include "FileText.h"
#include "MQ/Frame.h"
#include "OpenFiles.h"
#include "ServiceFixture.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::Protocol::TWProtoUpgradeInfo;

/// What came back for one chunk.
struct ChunkAnswer {
    int code = 0;
    bool hasBody = false;
    TWProtoUpgradeInfo info;
};

class DownloadTopic : public ServiceFrame {
protected:
    static constexpr char kTopic[] = "topic_upgrade_downloadversion";
    static constexpr uint32_t kChunk = 1048576;

    DownloadTopic() {
        mService->setDownloadCache(mStore.path());
        mService->start();
    }
    /// A local entry of that version whose package holds this. @return its path
    std::string addPackage(const std::string& version, const std::string& content) {
        const std::string path = mStore.putText("packages/" + version + ".exe", content);
        const auto added = support::entry(version.c_str(), StoragePosition_Local);
        added->setLocalFileName(path);
        mRequest->addVersion(added);
        return path;
    }
    static std::string document(const std::string& version) {
        return support::entry(version.c_str(), StoragePosition_Node)
            ->buildVersionInfo()
            .toStyledString(Public::Base::WriteStyle_Indented)
            .toStdString();
    }
    static TWProtoUpgradeInfo chunkOf(const std::string& version, uint32_t position = 0, uint32_t fileSize = 0,
                                      const std::string& transferId = "transfer") {
        TWProtoUpgradeInfo info;
        info.transferId = transferId;
        info.versionInfo = document(version);
        info.position = position;
        info.fileSize = fileSize;
        return info;
    }
    static std::shared_ptr<MQMessage> requestWith(const Public::Base::SharedBuffer& body) {
        auto frame = std::make_shared<Tarnwick::MQ::Frame>();
        frame->kind = Tarnwick::MQ::FrameKind_Request;
        frame->body = body;
        return std::make_shared<MQMessage>(frame, std::weak_ptr<MQConnection>());
    }
    static ChunkAnswer answerOf(const support::RequestHandler& handler, const std::shared_ptr<MQMessage>& request) {
        const auto response = handler(request);
        ChunkAnswer answer;
        if (!response) {
            answer.code = 12345;
            return answer;
        }
        answer.code = response->errorInfo().errorCode();
        answer.hasBody = response->parseBody(&answer.info, false);
        return answer;
    }
    support::RequestHandler handler() const {
        for (const auto& one : mNode->subscriptions) {
            if (one.topic == kTopic) return one.handler;
        }
        return {};
    }
    ChunkAnswer ask(const TWProtoUpgradeInfo& info) const {
        return answerOf(handler(), requestWith(Tarnwick::Protocol::TWPacket::serializeAsBytes(info)));
    }
    /// Texts at level 2 of the service.
    std::vector<std::string> logged() const {
        std::vector<std::string> texts;
        for (const auto& entry : mLog.entries()) {
            if (entry.file == "OrvUpdate/Src/VersionService" && entry.level == kError) texts.push_back(entry.text);
        }
        return texts;
    }
    using Texts = std::vector<std::string>;

    support::LogRecorder mLog;
    std::shared_ptr<support::RecordingServer> mNode = std::make_shared<support::RecordingServer>();
    std::shared_ptr<VersionService> mService = makeService(mNode);
};

}  // namespace Tarnwick::OrvUpdate
