// Packages that peers push here, chunk by chunk.
#include "EngineLog.h"
#include "OrvVersion.h"
#include "ReceivedChunk.h"
#include "Tarnwick/MQ/MQMessage.h"
#include "VersionRequest.h"
#include "VersionService.h"
#include "VersionService/FileWriterManager.h"
#include "VersionService/PushedFiles.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorCode_BadDocument;
using Public::Base::ErrorCode_Failed;

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
bool hasPlace(const ReceivedChunk& chunk) { return chunk.position <= chunk.fileSize; }

bool isLast(const ReceivedChunk& chunk) { return chunk.fileSize <= uint64_t{chunk.position} + chunk.bytes.size(); }

}  // namespace

VersionService::Message VersionService::onMQPostVersionCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) {
        ORV_LOG(2, "VersionService", "versionRequest empty!");
        return message->buildResponse(ErrorInfo(ErrorCode_Failed, ""), nullptr);
    }
    ReceivedChunk chunk;
    if (!message->parseBody(&chunk, false) || chunk.transferId.size() > FileWriterManager::kMaxTransferId) {
        ORV_LOG(2, "VersionService", "protocol parse fail!");
        return message->buildResponse(ErrorInfo(ErrorCode_Failed, ""), nullptr);
    }
    return message->buildResponse(takeChunk(*request, chunk), nullptr);
}

ErrorInfo VersionService::takeChunk(VersionRequest& request, const ReceivedChunk& chunk) {
    ErrorInfo error;
    const auto version = versionOf(chunk.versionInfo, error);
    if (!version) return error;
    if (version->getVersion().toString().empty()) return {ErrorCode_BadDocument, ""};
    if (!hasPlace(chunk)) return writeFault(ErrorInfo(ErrorCode_Failed, ""));
    const auto writers = mFileWriters.get();
    if (!writers) return {ErrorCode_Failed, ""};  // stopped meanwhile

    const auto file = writerOf(chunk, *version, *writers);
    if (!file) {
        error = lastErrorOr(ErrorCode_Failed);
        ORV_LOG(2, "VersionService", "allocwriter fail! errcode:%d", static_cast<int>(error.errorCode()));
        return error;
    }
    // From here on the transfer replaces a local package of the same version.
    if (const auto replaced = entryOf(request, *version)) request.removeVersions({replaced}, StoragePosition_Local);
    if (file->writeAt(chunk.position, chunk.bytes.data(), chunk.bytes.size()) != chunk.bytes.size()) {
        return writeFault(lastErrorOr(ErrorCode_Failed));
    }
    if (!isLast(chunk)) return {};
    version->setStoragePosition(StoragePosition_Local);
    if (const ErrorInfo refused = request.addVersion(version)) return refused;
    return writers->removeFile(chunk.transferId);
}

/// Without one, paths of packages would begin at the root of the disk.
bool VersionService::hasStore() const {
    std::lock_guard lock(mStateMutex);
    return !mDownloadCache.empty();
}

std::shared_ptr<FileObject> VersionService::writerOf(const ReceivedChunk& chunk, const OrvVersion& version,
                                                     FileWriterManager& writers) {
    if (!hasStore()) {
        ErrorInfo::setLastError(ErrorInfo(ErrorCode_Failed, ""));
        return nullptr;
    }
    std::lock_guard lock(mPostMutex);
    if (const auto open = writers.getFile(chunk.transferId)) return open;
    if (!mPushedFiles) mPushedFiles = std::make_shared<PushedFiles>();
    const auto file = mPushedFiles->open(chunk.transferId, version.getPackageFile(), chunk.position);
    if (file) writers.addFile(chunk.transferId, file);
    return file;
}

}  // namespace Tarnwick::OrvUpdate
