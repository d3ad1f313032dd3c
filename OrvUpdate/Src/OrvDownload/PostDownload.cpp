#include "PostDownload.h"

#include <algorithm>
#include <limits>

#include "EngineLog.h"
#include "OrvInstaller/PackageTest.h"
#include "Public/Base/DetachedThread.h"
#include "Public/Base/File.h"
#include "Public/Base/Guid.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;
using Tarnwick::MQ::MQMessage;
using Tarnwick::Protocol::TWProtoUpgradeInfo;

namespace {

constexpr char kTopicPost[] = "topic_upgrade_postversion";
constexpr size_t kChunkBytes = 0x100000;
constexpr unsigned int kChunkTimeoutMs = 60000;

ErrorInfo failure(ErrorCode code) { return ErrorInfo(code, ""); }

/// Why bytes are missing that the file had when the push began: a fault, or somebody has cut it.
ErrorInfo unreadable() {
    const ErrorInfo fault = ErrorInfo::getLastError();
    return fault ? fault : failure(ErrorCode_PackageInvalid);
}

/// The version document, from what the package says of itself.
std::string documentOf(const PackageFindings& package, VersionSource source, const std::string& serverId) {
    JsonValue document;
    document["softversion"] = package.version;
    document["systemType"] = static_cast<int>(SystemType_Windows);
    document["systemBits"] = static_cast<int>(package.systemBits);
    document["versionSource"] = static_cast<int>(source);
    document["versionType"] = static_cast<int>(VersionType_All);
    document["serverid"] = serverId;
    document["description"] = "";
    return document.toStyledString(WriteStyle_Indented).toStdString();
}

}  // namespace

/// What one push holds from its first chunk to its last.
struct PostDownload::Run {
    File file;
    TWProtoUpgradeInfo record;
};

PostDownload::PostDownload(const std::shared_ptr<IVersionRequest>& request, const std::string& fileName,
                           const std::shared_ptr<IGetConnection>& connection, VersionSource source,
                           const std::string& serverId)
    : mRequest(request), mConnection(connection), mFileName(fileName), mVersionSource(source), mServerId(serverId) {}

PostDownload::~PostDownload() = default;

ErrorInfo PostDownload::start(const Function<void()>& callback) {
    setError({});
    if (mStarted.exchange(true)) return {};
    mCallback = callback;
    const std::weak_ptr<PostDownload> weak = shared_from_this();
    const bool runs = startDetached("PostDownload", [weak, callback] {
        if (const auto self = weak.lock()) self->push(callback);
    });
    if (runs) return {};
    const ErrorInfo error = ErrorInfo::getLastError();
    refuse(error, callback);
    return error;
}

void PostDownload::push(const Function<void()>& callback) {
    if (const ErrorInfo error = sendVersion(mFileName)) refuse(error, callback);
}

/// Ends a push of which nothing has been sent.
void PostDownload::refuse(const ErrorInfo& error, const Function<void()>& callback) {
    ORV_LOG(2, "OrvDownload", "send version fail! errcode:%d", static_cast<int>(error.errorCode()));
    setError(error);
    callback();
}

ErrorInfo PostDownload::sendVersion(const std::string& fileName) {
    if (!mConnection || !mRequest) return failure(ErrorCode_Failed);
    if (!File::access(fileName, AccessMode_Exists)) return failure(ErrorCode_PackageInvalid);
    if (const ErrorInfo error = prepareRun(fileName)) return error;
    sendNext();
    return {};
}

ErrorInfo PostDownload::prepareRun(const std::string& fileName) {
    const uint64_t length = File::getLength(fileName);
    // The record's fields for size and position are 32 bits wide.
    if (length == 0 || length > std::numeric_limits<uint32_t>::max()) return failure(ErrorCode_PackageInvalid);
    PackageFindings package;
    const int edition = mRequest->getCurVersion().OEM();
    const auto sameEdition = [edition](const std::string& version) {
        return Version(version).OEM() == edition ? ErrorInfo() : failure(ErrorCode_PackageIncomplete);
    };
    if (const ErrorInfo error = examinePackage(fileName, sameEdition, package)) return error;

    auto run = std::make_shared<Run>();
    run->record.versionInfo = documentOf(package, mVersionSource, mServerId);
    run->record.transferId = Guid::createGuid().getStringStream();
    run->record.data.resize(kChunkBytes);
    run->record.fileSize = static_cast<uint32_t>(length);
    if (!run->file.open(fileName, OpenMode_ReadDefault)) return failure(ErrorCode_Failed);
    std::lock_guard lock(mMutex);
    mRun = std::move(run);
    return {};
}

void PostDownload::sendNext() {
    const auto run = currentRun();
    if (!run) return;
    TWProtoUpgradeInfo& record = run->record;
    // A file that has grown meanwhile counts as long as it was.
    const size_t wanted = std::min<size_t>(kChunkBytes, record.fileSize - record.position);
    ErrorInfo::setLastError({});
    const size_t count = run->file.read(record.data.data(), wanted);
    if (count != wanted) return failTransfer(unreadable());
    if (count == 0) return finishPush();
    if (count != kChunkBytes) record.data.resize(count);

    const auto onAnswer = [weak = weak_from_this(), count](const std::shared_ptr<MQMessage>& message) {
        if (const auto self = weak.lock()) self->onAck(count, message->errorInfo());
    };
    unsigned int id = 0;
    if (const auto direct = mConnection->getConnection()) {
        id = direct->pushMessageRequestTo(mServerId, kTopicPost, &record, nullptr, {}, onAnswer, kChunkTimeoutMs);
    } else if (const auto master = mConnection->getMasterConnection()) {
        id = master->pushSessionMessageRequestForwardTo(mConnection->getMasterId(), mServerId, kTopicPost, &record, "",
                                                        {}, onAnswer, kChunkTimeoutMs);
    } else {
        ORV_LOG(2, "OrvDownload", "connection empty!");
        return fail(failure(ErrorCode_NoConnection));
    }
    if (id != 0) return;
    ORV_LOG(2, "OrvDownload", "post version fail! msgid = 0");
    fail(failure(ErrorCode_Failed));
}

void PostDownload::onAck(size_t count, const ErrorInfo& answer) {
    if (answer.errorCode() == ErrorCode_PeerHasEnough) return finishPush();
    if (answer) return failTransfer(answer);
    const auto run = currentRun();
    if (!run) return;
    TWProtoUpgradeInfo& record = run->record;
    record.position += static_cast<uint32_t>(count);
    mProgress = static_cast<float>(record.position) / static_cast<float>(record.fileSize);
    if (count == kChunkBytes) {
        sendNext();
    } else {
        finishPush();
    }
}

void PostDownload::finishPush() {
    endRun();
    mRequest->querySystemVersion([weak = weak_from_this()](const std::string&, const ErrorInfo&, bool done) {
        const auto self = weak.lock();
        if (!self) return;
        self->mProgress = 1.0F;
        self->mFinished = done;
        if (done) self->mCallback();
    });
}

void PostDownload::failTransfer(const ErrorInfo& error) {
    ORV_LOG(2, "OrvDownload", "post version fail! errcode:%d", static_cast<int>(error.errorCode()));
    fail(error);
}

void PostDownload::fail(const ErrorInfo& error) {
    endRun();
    setError(error);
    mCallback();
}

std::shared_ptr<PostDownload::Run> PostDownload::currentRun() {
    std::lock_guard lock(mMutex);
    return mRun;
}

void PostDownload::endRun() {
    std::shared_ptr<Run> ended;
    {
        std::lock_guard lock(mMutex);
        ended.swap(mRun);
    }
    if (ended) ended->file.close();  // at once, although a step below may still hold the run
}

ErrorInfo PostDownload::stop() { return failure(ErrorCode_NotSupported); }

ErrorInfo PostDownload::cancel() { return failure(ErrorCode_NotSupported); }

ErrorInfo PostDownload::getProgress(float& progress) {
    progress = mProgress;
    return {};
}

ErrorInfo PostDownload::getFileName(std::string& fileName) {
    fileName = mFileName;
    return {};
}

ErrorInfo PostDownload::getError() {
    std::lock_guard lock(mMutex);
    return mError;
}

bool PostDownload::finish() { return mFinished; }

void PostDownload::setError(const ErrorInfo& error) {
    std::lock_guard lock(mMutex);
    mError = error;
}

}  // namespace Tarnwick::OrvUpdate
