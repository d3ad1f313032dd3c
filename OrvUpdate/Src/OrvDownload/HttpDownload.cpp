#include "HttpDownload.h"

#include <algorithm>

#include "EngineLog.h"
#include "PackagePlace.h"
#include "ParentDirectory.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Network::HTTPClient;
using Public::Network::HTTPClientRequest;
using Public::Network::HTTPClientResponse;
using Public::Network::HTTPHeader;
using Public::Network::Socket;

namespace {
constexpr uint32_t kRequestTimeoutMs = 60000;
constexpr int kStatusOk = 200;

}  // namespace

HttpDownload::HttpDownload(std::shared_ptr<IOWorker> ioWorker, const std::shared_ptr<OrvVersion>& version)
    : mVersion(version), mIOWorker(std::move(ioWorker)) {}

HttpDownload::~HttpDownload() { stop(); }

ErrorInfo HttpDownload::start(const Function<void()>& callback, void* key) {
    {
        Function<void()> replaced;  // its target goes after the lock is given back
        std::lock_guard lock(mCallbackMutex);
        replaced = mCallbacks[key];
        mCallbacks[key] = callback;
    }
    return start();
}

ErrorInfo HttpDownload::start(const Function<void()>& callback) { return start(callback, nullptr); }

ErrorInfo HttpDownload::start() {
    {
        std::lock_guard startLock(mStartMutex);
        bool arrived = false;
        const ErrorInfo result = begin(arrived);
        if (result) {
            setError(result);
            ORV_LOG(2, "OrvDownload", "download http version fail! errcode:%d", static_cast<int>(result.errorCode()));
            return result;
        }
        if (!arrived) return result;
    }
    // Outside of mStartMutex, since a waiter may take as long as a person takes to answer.
    notifyFinish();
    return {};
}

ErrorInfo HttpDownload::begin(bool& arrived) {
    {
        std::lock_guard lock(mStateMutex);
        if (mFile) return {};
        mFileName.clear();
    }
    const auto version = mVersion.lock();
    if (!version) return {-1, ""};
    setError({});
    const std::string path = version->getPackageFile();
    if (VersionRequest::isInvalidPakcage(path)) {
        mProgress = 1.0F;
        mFinished = true;
        arrived = true;
        return {};
    }
    return fetch(version->getUrl(), path);
}

ErrorInfo HttpDownload::fetch(const std::string& url, const std::string& path) {
    {
        std::lock_guard lock(mStateMutex);
        if (mHttpClient) return {};
    }
    mFinished = false;
    makeParentDirectory(path);
    auto file = std::make_shared<File>(std::string());
    if (!openPackageAnew(*file, path)) return {-602, ""};

    auto client = std::make_shared<HTTPClient>(mIOWorker, "OrvDownload");
    {
        std::lock_guard lock(mStateMutex);
        mWritten = 0;
        mHasGap = false;
        mFile = file;
        mFileName = path;
        mHttpClient = client;
    }
    // Weak: a callback may have begun at the moment in which the last owner lets go.
    const auto finished = [weak = weak_from_this()](const auto& ended, const auto& request, const auto& response) {
        if (const auto self = weak.lock()) self->onHttpFinishCallback(ended, request, response);
    };
    return client->request(makeRequest(url), HTTPClient::Completion(finished), "") ? ErrorInfo() : ErrorInfo(-1, "");
}

std::shared_ptr<HTTPClientRequest> HttpDownload::makeRequest(const std::string& url) {
    auto request = std::make_shared<HTTPClientRequest>("GET", Public::Base::URL(url, false),
                                                       Public::Network::HTTPCacheType_Stream);
    request->timeout() = kRequestTimeoutMs;
    request->recvCallback() = [weak = weak_from_this()](const auto& socket, const auto& header, const char* data,
                                                        unsigned int length) {
        if (const auto self = weak.lock()) self->onRecvDataCallback(socket, header, data, length);
    };
    return request;
}

void HttpDownload::onRecvDataCallback(const std::weak_ptr<Socket>&, const std::shared_ptr<HTTPHeader>& header,
                                      const char* data, unsigned int length) {
    std::shared_ptr<File> file;
    {
        std::lock_guard lock(mStateMutex);
        file = mFile;
    }
    if (!file) return;
    const uint64_t total = header->header("Content-Length", 0).toUint64("");
    mTotal = total;
    const uint64_t received = mReceived + length;
    if (total == 0) {
        mReceived = received;
        return;
    }
    mReceived = std::min(received, total);
    mProgress = static_cast<float>(static_cast<double>(mReceived) / static_cast<double>(total));
    const size_t written = file->write(data, length);
    if (!mHasGap) mWritten += written;
    if (written == length) return;

    mHasGap = true;
    const ErrorInfo error = ErrorInfo::getLastError();
    if (!error) return;
    ORV_LOG(2, "OrvDownload", "download http version fail! errstr:%s", error.errorMessage());
    setError(error);
}

void HttpDownload::onHttpFinishCallback(const std::shared_ptr<HTTPClient>& client,
                                        const std::shared_ptr<HTTPClientRequest>&,
                                        const std::shared_ptr<HTTPClientResponse>& response) {
    std::shared_ptr<HTTPClient> ended;
    std::shared_ptr<File> file;
    {
        std::lock_guard lock(mStateMutex);
        // stop or cancel has taken this exchange away, and another may have begun since.
        if (!mHttpClient || mHttpClient != client) return;
        ended.swap(mHttpClient);
        file = mFile;
    }
    const int status = response->header()->statuscode;
    const bool whole = isWhole(status);
    std::string unfit;
    if (!whole) {
        ORV_LOG(2, "OrvDownload", "download http version fail! statuscode:%d", status);
        if (const auto version = mVersion.lock()) {
            unfit = version->getPackageFile();
            ORV_LOG(2, "OrvDownload", "onHttpFinishCallback() remove fileName:%s\r\n", unfit);
        }
    }
    ErrorInfo writeFault;
    if (!settle(file, whole, unfit, writeFault)) return;
    if (writeFault) ORV_LOG(2, "OrvDownload", "download http version fail! errstr:%s", writeFault.errorMessage());
    notifyFinish();
}

bool HttpDownload::isWhole(int status) const { return status == kStatusOk && mTotal != 0 && mReceived == mTotal; }

/// Ends the run in one step, so that no further run begins between the end of this one and the removal of its file.
/// @param unfit file to remove, if any   @param writeFault why the last bytes were not kept
/// @return false when cancel came first, which calls nobody back
bool HttpDownload::settle(const std::shared_ptr<File>& file, bool whole, const std::string& unfit,
                          ErrorInfo& writeFault) {
    std::lock_guard lock(mStateMutex);
    if (!mFile || mFile != file) return false;
    const bool kept = mFile->close();
    mFile.reset();
    if (whole) {
        // Some disks tell only now that they could not keep the bytes.
        if (!kept) mError = writeFault = ErrorInfo::getLastError();
        // Behind a gap the rest lies too far in front, and a package of that length may pass for a whole one.
        if (mHasGap && !File::cut(mFileName, mWritten)) File::remove(mFileName);
        mFinished = true;
    } else {
        if (!unfit.empty()) File::remove(unfit);
        mError = {-1, ""};
    }
    return true;
}

void HttpDownload::notifyFinish() {
    std::map<void*, Function<void()>> callbacks;
    {
        std::lock_guard lock(mCallbackMutex);
        callbacks = mCallbacks;
    }
    for (const auto& [key, callback] : callbacks) {
        if (callback) callback();
    }
}

ErrorInfo HttpDownload::stop() {
    std::lock_guard startLock(mStartMutex);
    endExchange();
    return {};
}

void HttpDownload::endExchange() {
    std::shared_ptr<HTTPClient> client;
    std::lock_guard lock(mStateMutex);
    client.swap(mHttpClient);
}

ErrorInfo HttpDownload::cancel() {
    std::lock_guard startLock(mStartMutex);
    endExchange();
    std::shared_ptr<File> file;
    std::string fileName;
    {
        std::lock_guard lock(mStateMutex);
        file.swap(mFile);
        fileName.swap(mFileName);
    }
    if (file) file->close();
    if (!fileName.empty()) {
        ORV_LOG(4, "OrvDownload", "HttpDownload cancel remove file %s\n", fileName);
        File::remove(fileName);
    }
    return {};
}

ErrorInfo HttpDownload::getProgress(float& progress) {
    progress = mProgress;
    return {};
}

ErrorInfo HttpDownload::getFileName(std::string& fileName) {
    const auto version = mVersion.lock();
    if (!version) return {-1, ""};
    fileName = version->getPackageFile();
    return {};
}

ErrorInfo HttpDownload::getError() {
    std::lock_guard lock(mStateMutex);
    return mError;
}

bool HttpDownload::finish() { return mFinished; }

void HttpDownload::setError(const ErrorInfo& error) {
    std::lock_guard lock(mStateMutex);
    mError = error;
}

}  // namespace Tarnwick::OrvUpdate
