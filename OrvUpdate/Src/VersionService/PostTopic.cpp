// Packages that peers push here, chunk by chunk.
#include "EngineLog.h"
#include "OrvVersion.h"
#include "TWProtocol/TWProtoDeviceCmd.h"
#include "Tarnwick/MQ/MQMessage.h"
#include "VersionRequest.h"
#include "VersionService.h"
#include "VersionService/FileWriterManager.h"
#include "VersionService/PushedFiles.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorCode_BadDocument;
using Public::Base::ErrorCode_Failed;
using Tarnwick::Protocol::TWProtoUpgradeInfo;

namespace {

ErrorInfo lastErrorOr(int code) {
    const ErrorInfo last = ErrorInfo::getLastError();
    return last ? last : ErrorInfo(code, "");
}

ErrorInfo writeFault(const ErrorInfo& error) {
    ORV_LOG(2, "VersionService", "version write fail! errcode:%d", static_cast<int>(error.errorCode()));
    return error;
}

/// The end of a chunk tells the end of the package, so a chunk may reach beyond the size that its sender claims; one
/// that begins there has no place in the package.
bool hasPlace(const TWProtoUpgradeInfo& info) { return info.position <= info.fileSize; }

bool isLast(const TWProtoUpgradeInfo& info) { return info.fileSize <= uint64_t{info.position} + info.data.size(); }

}  // namespace

VersionService::Message VersionService::onMQPostVersionCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) {
        ORV_LOG(2, "VersionService", "versionRequest empty!");
        return message->buildResponse(ErrorInfo(ErrorCode_Failed, ""), nullptr);
    }
    TWProtoUpgradeInfo info;
    if (!message->parseBody(&info, false) || info.transferId.size() > FileWriterManager::kMaxTransferId) {
        ORV_LOG(2, "VersionService", "protocol parse fail!");
        return message->buildResponse(ErrorInfo(ErrorCode_Failed, ""), nullptr);
    }
    return message->buildResponse(takeChunk(*request, info), nullptr);
}

ErrorInfo VersionService::takeChunk(VersionRequest& request, const TWProtoUpgradeInfo& info) {
    ErrorInfo error;
    const auto version = versionOf(info.versionInfo, error);
    if (!version) return error;
    if (version->getVersion().toString().empty()) return {ErrorCode_BadDocument, ""};
    if (!hasPlace(info)) return writeFault(ErrorInfo(ErrorCode_Failed, ""));
    const auto writers = mFileWriters.get();
    if (!writers) return {ErrorCode_Failed, ""};  // stopped meanwhile

    const auto file = writerOf(info, *version, *writers);
    if (!file) {
        error = lastErrorOr(ErrorCode_Failed);
        ORV_LOG(2, "VersionService", "allocwriter fail! errcode:%d", static_cast<int>(error.errorCode()));
        return error;
    }
    // From here on the transfer replaces a local package of the same version.
    if (const auto replaced = entryOf(request, *version)) request.removeVersions({replaced}, StoragePosition_Local);
    if (file->writeAt(info.position, info.data.data(), info.data.size()) != info.data.size()) {
        return writeFault(lastErrorOr(ErrorCode_Failed));
    }
    if (!isLast(info)) return {};
    version->setStoragePosition(StoragePosition_Local);
    if (const ErrorInfo refused = request.addVersion(version)) return refused;
    return writers->removeFile(info.transferId);
}

/// Without one, paths of packages would begin at the root of the disk.
bool VersionService::hasStore() const {
    std::lock_guard lock(mStateMutex);
    return !mDownloadCache.empty();
}

std::shared_ptr<FileObject> VersionService::writerOf(const TWProtoUpgradeInfo& info, const OrvVersion& version,
                                                     FileWriterManager& writers) {
    if (!hasStore()) {
        ErrorInfo::setLastError(ErrorInfo(ErrorCode_Failed, ""));
        return nullptr;
    }
    std::lock_guard lock(mPostMutex);
    if (const auto open = writers.getFile(info.transferId)) return open;
    if (!mPushedFiles) mPushedFiles = std::make_shared<PushedFiles>();
    const auto file = mPushedFiles->open(info.transferId, version.getPackageFile(), info.position);
    if (file) writers.addFile(info.transferId, file);
    return file;
}

}  // namespace Tarnwick::OrvUpdate
