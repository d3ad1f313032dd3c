// Packages for peers that pull them, chunk by chunk.
#include <limits>

#include "EngineLog.h"
#include "IDownload.h"
#include "OrvVersion.h"
#include "TWProtocol/TWProtoDeviceCmd.h"
#include "Tarnwick/MQ/MQMessage.h"
#include "VersionRequest.h"
#include "VersionService.h"
#include "VersionService/FileWriterManager.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorCode_BadDocument;
using Public::Base::ErrorCode_PackageInvalid;
using Public::Base::File;
using Tarnwick::MQ::MQMessage;
using Tarnwick::Protocol::TWProtoUpgradeInfo;

namespace {

constexpr size_t kChunkBytes = 0x100000;

using Message = std::shared_ptr<MQMessage>;

/// Whether the package of a cloud entry lies on this disk, whose fetching begins when it does not.
/// @return why it cannot be fetched
ErrorInfo fetchFromCloud(IVersion& entry, const std::shared_ptr<IVersionRequest>& request, bool& arrived) {
    const auto download = entry.getDownload(request);
    if (!download) {
        ORV_LOG(2, "VersionService", "getdownload fail!");
        return {-1, ""};
    }
    download->start(Function<void()>());
    const ErrorInfo result = download->getError();
    if (result) {
        ORV_LOG(2, "VersionService", "download fail! errcode:%d", static_cast<int>(result.errorCode()));
        return result;
    }
    arrived = download->finish();
    return {};
}

/// Opens the package and tells its size. @return null with the reason in `error`
std::shared_ptr<FileObject> openReader(const std::string& path, uint32_t& fileSize, ErrorInfo& error) {
    const uint64_t length = File::getLength(path);
    auto file = std::make_shared<FileObject>();
    // A size that the record cannot tell would pass for a smaller one.
    if (length > std::numeric_limits<uint32_t>::max()) {
        error = {ErrorCode_PackageInvalid, ""};
        return nullptr;
    }
    fileSize = static_cast<uint32_t>(length);
    if (file->open(path, Public::Base::OpenMode_ReadDefault)) return file;
    error = ErrorInfo::getLastError();
    if (!error) error = {ErrorCode_PackageInvalid, ""};
    return nullptr;
}

/// @return false at the end of the file, which a fault looks like
bool readChunk(FileObject& file, TWProtoUpgradeInfo& info) {
    info.data.resize(kChunkBytes);
    const size_t count = file.readAt(info.position, info.data.data(), kChunkBytes);
    info.data.resize(count);
    return count == kChunkBytes;
}

/// The answer with the asked chunk, or why there is none.
Message sendChunk(const Message& message, TWProtoUpgradeInfo& info, IVersion& entry,
                  const std::shared_ptr<VersionRequest>& request, FileWriterManager& writers) {
    ErrorInfo error;
    auto file = writers.getFile(info.transferId);
    const bool fresh = !file;
    // A transfer with an open file has found the package whole: no test of all of it for every chunk.
    if (!file && entry.getStoragePosition() == StoragePosition_Cloud) {
        bool arrived = false;
        error = fetchFromCloud(entry, request, arrived);
        if (error) return message->buildResponse(error, nullptr);
        if (!arrived) {
            info.fileSize = 0;
            return message->buildResponse(ErrorInfo(0, ""), info);
        }
    }
    if (!file) {
        file = openReader(entry.getPackageFile(), info.fileSize, error);
        if (!file) {
            ORV_LOG(2, "VersionService", "alloc Reader fail! errcode:%d", static_cast<int>(error.errorCode()));
            return message->buildResponse(error, nullptr);
        }
    } else if (info.position == 0 && info.fileSize == 0) {
        // The first request, delivered twice. The puller may get this answer alone: one of size 0 would tell it to ask
        // again, with the same answer for ever.
        info.fileSize = static_cast<uint32_t>(File::getLength(entry.getPackageFile()));
    }
    if (!readChunk(*file, info)) {
        writers.removeFile(info.transferId);
    } else if (fresh) {
        // Once it has been read: a sweep takes a file that nobody has touched.
        writers.addFile(info.transferId, file);
    }
    return message->buildResponse(ErrorInfo(0, ""), info);
}

}  // namespace

std::shared_ptr<OrvVersion> VersionService::versionOf(const std::string& versionInfo, ErrorInfo& error) const {
    const auto version = makeVersion();
    error = version->parseVersion(versionInfo);
    return error ? nullptr : version;
}

std::shared_ptr<IVersion> VersionService::entryOf(VersionRequest& request, const OrvVersion& version) {
    return request.queryVersion(version.getSystemType(), version.getSystemBits(), Public::Base::ProjectType_Unknown,
                                version.getVersionType(), version.getVersionSource(), version.getVersion());
}

VersionService::Message VersionService::onMQDownloadVersionCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto fail = [&message](const ErrorInfo& error) { return message->buildResponse(error, nullptr); };
    const auto request = mVersionRequest.lock();
    if (!request) {
        ORV_LOG(2, "VersionService", "versionRequest empty()");
        return fail({-1, ""});
    }
    TWProtoUpgradeInfo info;
    if (!message->parseBody(&info, false) || info.transferId.size() > FileWriterManager::kMaxTransferId) {
        ORV_LOG(2, "VersionService", "protocol parse fail");
        return fail({ErrorCode_BadDocument, ""});
    }
    ErrorInfo error;
    const auto version = versionOf(info.versionInfo, error);
    if (!version) return fail(error);
    const auto entry = entryOf(*request, *version);
    if (!entry) {
        ORV_LOG(2, "VersionService", "version not find");
        return fail({ErrorCode_PackageInvalid, ""});
    }
    const auto writers = mFileWriters.get();
    if (!writers) return fail({-1, ""});  // stopped meanwhile
    return sendChunk(message, info, *entry, request, *writers);
}

}  // namespace Tarnwick::OrvUpdate
