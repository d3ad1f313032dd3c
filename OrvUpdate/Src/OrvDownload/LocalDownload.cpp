#include "LocalDownload.h"

#include "EngineLog.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

LocalDownload::LocalDownload(const std::string& fileName) : mFileName(fileName) {}

ErrorInfo LocalDownload::start(const Function<void()>& callback) {
    mCancelled = false;
    setError({});
    mFinished = false;
    mProgress = 0.98F;  // nothing but the test is left, and that can take long
    if (!VersionRequest::isInvalidPakcage(mFileName)) {
        const ErrorInfo error(Public::Base::ErrorCode_PackageInvalid, "");
        setError(error);
        ORV_LOG(2, "OrvDownload", "install package invalid!");
        callback();
        return error;
    }
    if (mCancelled) return {};
    mFinished = true;
    mProgress = 1.0F;
    callback();  // may be the end of this object
    return {};
}

ErrorInfo LocalDownload::stop() { return {}; }

ErrorInfo LocalDownload::cancel() {
    mCancelled = true;
    return {};
}

ErrorInfo LocalDownload::getProgress(float& progress) {
    progress = mProgress;
    return {};
}

ErrorInfo LocalDownload::getFileName(std::string& fileName) {
    fileName = mFileName;
    return {};
}

ErrorInfo LocalDownload::getError() {
    std::lock_guard lock(mErrorMutex);
    return mError;
}

bool LocalDownload::finish() { return mFinished; }

void LocalDownload::setError(const ErrorInfo& error) {
    std::lock_guard lock(mErrorMutex);
    mError = error;
}

}  // namespace Tarnwick::OrvUpdate
