#include "MQDownload.h"

#include <limits>
#include <list>

#include "EngineLog.h"
#include "PackagePlace.h"
#include "ParentDirectory.h"
#include "Public/Base/Guid.h"
#include "ReceivedChunk.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorCode_Failed;
using Public::Base::ErrorCode_NoConnection;
using Public::Base::File;
using Tarnwick::MQ::ResponseCallback;
using Tarnwick::Protocol::TWProtoMessageLevel_Normal;
using Tarnwick::Protocol::TWProtoUpgradeInfo;

namespace {

constexpr char kTopic[] = "topic_upgrade_downloadversion";
constexpr unsigned kTimeoutMs = 60000;

bool fits(uint32_t position, size_t length) { return length <= std::numeric_limits<uint32_t>::max() - position; }

}  // namespace

/// One run, held by the callback of the request that is out and by nothing else, so that it goes with the last answer.
struct MQDownload::Run {
    std::weak_ptr<MQDownload> download;
    std::string serverId;
    TWProtoUpgradeInfo request;  // the same for all chunks; whoever handles the answer or sends next has it to himself
    std::list<Function<void()>> callbacks;  // under the transfer's mMutex
    std::atomic<int> due{0};                // requests to send; who raises it from 0 sends them all
};

MQDownload::MQDownload(const std::shared_ptr<IGetConnection>& connection, const std::shared_ptr<OrvVersion>& version)
    : mVersion(version), mConnection(connection) {}

MQDownload::~MQDownload() = default;

ErrorInfo MQDownload::start(const Function<void()>& callback) {
    const auto version = mVersion.lock();
    if (!version || !mConnection) return {ErrorCode_Failed, ""};
    const auto run = std::make_shared<Run>();
    run->download = shared_from_this();
    run->serverId = version->getServerid();
    run->request.transferId = Public::Base::Guid::createGuid().getStringStream();
    run->request.versionInfo = version->buildVersionInfo().toStyledString(Public::Base::WriteStyle_Indented);
    {
        std::lock_guard lock(mMutex);
        if (const auto earlier = mRun.lock()) run->callbacks.swap(earlier->callbacks);
        run->callbacks.push_back(callback);
        mRun = run;
        mFileName.clear();
        mFinished = false;
        mProgress = 0.0F;
        setError({});
    }
    requestNext(run);
    return {};
}

ErrorInfo MQDownload::stop() { return {}; }

/// Sends what is due. An answer that comes before the sending call has ended is followed up by that call, not by one
/// inside of it: a peer that answers for ever shall not fill the stack.
void MQDownload::requestNext(const std::shared_ptr<Run>& run) {
    if (run->due.fetch_add(1) > 0) return;
    do {
        const auto self = run->download.lock();
        if (!self || !self->isCurrent(*run)) return;
        self->push(run);
    } while (run->due.fetch_sub(1) > 1);
}

void MQDownload::push(const std::shared_ptr<Run>& run) {
    const ResponseCallback onAnswer = [run](const Response& message) {
        if (const auto self = run->download.lock()) self->onResponse(run, message);
    };
    if (const auto connection = mConnection->getConnection()) {
        if (connection->pushMessageRequestTo(run->serverId, kTopic, &run->request, nullptr, TWProtoMessageLevel_Normal,
                                             onAnswer, kTimeoutMs) != 0) {
            return;
        }
        ORV_LOG(2, "OrvDownload", "msgid == 0");
        return endUnsent(*run, {ErrorCode_Failed, ""});
    }
    const auto master = mConnection->getMasterConnection();
    if (master &&
        master->pushSessionMessageRequestForwardTo(mConnection->getMasterId(), run->serverId, kTopic, &run->request, "",
                                                   TWProtoMessageLevel_Normal, onAnswer, kTimeoutMs) != 0) {
        return;
    }
    ORV_LOG(2, "OrvDownload", "connection empty!");
    endUnsent(*run, {ErrorCode_NoConnection, ""});
}

/// Nobody is called back: the caller learns of it by asking.
void MQDownload::endUnsent(const Run& run, const ErrorInfo& error) {
    std::lock_guard lock(mMutex);
    if (mRun.lock().get() != &run) return;
    mRun.reset();
    setError(error);
}

void MQDownload::onResponse(const std::shared_ptr<Run>& run, const Response& message) {
    Outcome outcome = Outcome::Dropped;
    const ErrorInfo error = handleChunk(*run, message, outcome);
    if (error) ORV_LOG(2, "OrvDownload", "save version fail! errcode:%d", static_cast<int>(error.errorCode()));
    if (outcome == Outcome::More) {
        requestNext(run);
    } else if (error || outcome == Outcome::Whole) {
        endRun(*run, error);
    }
}

ErrorInfo MQDownload::handleChunk(Run& run, const Response& message, Outcome& outcome) {
    if (!isCurrent(run)) return {};
    const ErrorInfo error = message->errorInfo();
    if (error) {
        ORV_LOG(2, "OrvDownload", "errcode:%d", static_cast<int>(error.errorCode()));
        return error;
    }
    ReceivedChunk answer;
    if (!message->parseBody(&answer, false)) {
        ORV_LOG(2, "OrvDownload", "parsebody fail!");
        return {ErrorCode_Failed, ""};
    }
    std::string path;
    outcome = answer.fileSize == 0 ? Outcome::More : store(run, answer, answer.bytes, path);
    switch (outcome) {
        case Outcome::VersionGone:
            ORV_LOG(2, "OrvDownload", "version == nullptr");
            return {ErrorCode_Failed, ""};
        case Outcome::NotOpened:
            ORV_LOG(2, "OrvDownload", "open file fail! %s", path);
            return {ErrorCode_Failed, ""};
        case Outcome::NotWritten:
            ORV_LOG(2, "OrvDownload", "write file fail!");
            return {ErrorCode_Failed, ""};
        default:
            return {};
    }
}

/// One step, so that cancel and a further start come before it or after it.
MQDownload::Outcome MQDownload::store(Run& run, const TWProtoUpgradeInfo& answer, std::string_view data,
                                      std::string& path) {
    std::lock_guard lock(mMutex);
    if (mRun.lock().get() != &run) return Outcome::Dropped;
    if (!mFile) {
        const Outcome opened = openFile(path);
        if (opened != Outcome::More) return opened;
    }
    const size_t size = data.size();
    // Behind 4 GiB positions would begin at 0 again.
    if (!fits(answer.position, size) || !fits(run.request.position, size)) return Outcome::NotWritten;
    if (mFile->writeAt(answer.position, data.data(), size) != size) return Outcome::NotWritten;
    run.request.position += static_cast<uint32_t>(size);
    run.request.fileSize = answer.fileSize;
    if (answer.position < answer.fileSize) {
        mProgress = static_cast<float>(answer.position) / static_cast<float>(answer.fileSize);
        return Outcome::More;
    }
    const bool kept = mFile->close();  // some disks tell only now that they could not keep the bytes
    mFile.reset();
    return kept ? Outcome::Whole : Outcome::NotWritten;
}

/// With the lock held. The file bears its final name from the start.
MQDownload::Outcome MQDownload::openFile(std::string& path) {
    const auto version = mVersion.lock();
    if (!version) return Outcome::VersionGone;
    path = version->getPackageFile();
    mFile = std::make_shared<FileObject>();
    makeParentDirectory(path);
    if (!openPackageAnew(*mFile, path)) return Outcome::NotOpened;
    mFileName = path;
    return Outcome::More;
}

void MQDownload::endRun(Run& run, const ErrorInfo& error) {
    std::list<Function<void()>> callbacks;
    {
        std::lock_guard lock(mMutex);
        if (mRun.lock().get() != &run) return;
        mRun.reset();
        callbacks.swap(run.callbacks);
        if (error) {
            setError(error);
        } else {
            mFinished = true;
            mProgress = 1.0F;
        }
    }
    for (const auto& callback : callbacks) callback();
}

ErrorInfo MQDownload::cancel() {
    stop();
    std::string fileName;
    std::list<Function<void()>> released;  // goes after the lock is given back
    {
        std::lock_guard lock(mMutex);
        if (const auto run = mRun.lock()) released.swap(run->callbacks);
        mRun.reset();
        mFile.reset();
        fileName.swap(mFileName);
        if (!fileName.empty()) File::remove(fileName);
    }
    if (!fileName.empty()) ORV_LOG(4, "OrvDownload", "MQDownload cancel remove file %s\n", fileName);
    return {};
}

ErrorInfo MQDownload::getProgress(float& progress) {
    progress = mProgress;
    return {};
}

ErrorInfo MQDownload::getFileName(std::string& fileName) {
    const auto version = mVersion.lock();
    if (!version) return {ErrorCode_Failed, ""};
    fileName = version->getPackageFile();
    return {};
}

ErrorInfo MQDownload::getError() {
    std::lock_guard lock(mErrorMutex);
    return mError;
}

bool MQDownload::finish() { return mFinished; }

bool MQDownload::isCurrent(const Run& run) {
    std::lock_guard lock(mMutex);
    return mRun.lock().get() == &run;
}

void MQDownload::setError(const ErrorInfo& error) {
    std::lock_guard lock(mErrorMutex);
    mError = error;
}

}  // namespace Tarnwick::OrvUpdate
