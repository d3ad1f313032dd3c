// The upload of a package that a person chose, to the cluster's master.
#include "OrvDownload/ConnectionProviders.h"
#include "PostDownload.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

ErrorInfo VersionRequest::uploadVersion(const std::string& filePath, VersionSource source, const UploadFinished& done) {
    const auto self = shared_from_this();
    if (!mMQClient) return {Public::Base::ErrorCode_Failed, ""};
    const std::string masterId = mMQClient->masterId();
    const auto upload = std::make_shared<PostDownload>(self, filePath, std::make_shared<GetClientConnection>(mMQClient),
                                                       source, masterId);
    if (const ErrorInfo busy = keepUpload(upload)) return busy;
    // Weak on both: the upload holds its callback, and mUpload the upload.
    return upload->start([weak = weak_from_this(), transfer = std::weak_ptr<IDownload>(upload), masterId, done] {
        const auto request = weak.lock();
        const auto ended = transfer.lock();
        if (request && ended) request->onUploaded(ended, masterId, done);
    });
}

ErrorInfo VersionRequest::keepUpload(const std::shared_ptr<IDownload>& upload) {
    std::lock_guard lock(mUploadMutex);
    if (mUpload) return {Public::Base::ErrorCode_UploadRunning, ""};
    mUpload = upload;
    return {};
}

void VersionRequest::onUploaded(const std::shared_ptr<IDownload>& upload, const std::string& masterId,
                                const UploadFinished& done) {
    done(masterId, upload->getError());
    std::lock_guard lock(mUploadMutex);
    if (mUpload == upload) mUpload.reset();
}

}  // namespace Tarnwick::OrvUpdate
