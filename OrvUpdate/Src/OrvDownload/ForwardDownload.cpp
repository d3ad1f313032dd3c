#include "ForwardDownload.h"

#include "PostDownload.h"

namespace Tarnwick::OrvUpdate {

namespace {

ErrorInfo missing() { return {Public::Base::ErrorCode_Failed, ""}; }

}  // namespace

ForwardDownload::ForwardDownload(const std::shared_ptr<IDownload>& download, const std::shared_ptr<PostDownload>& post)
    : mDownload(download), mPost(post) {}

ErrorInfo ForwardDownload::start(const Function<void()>& callback) {
    const std::weak_ptr<ForwardDownload> weak = shared_from_this();
    if (!mDownload || !mPost) return missing();
    return mDownload->start(
        [weak, callback] {
            if (const auto self = weak.lock()) self->onArrived(callback);
        },
        this);
}

void ForwardDownload::onArrived(const Function<void()>& callback) {
    if (mDownload->getError()) callback();
    if (mPost->start(callback)) callback();
}

ErrorInfo ForwardDownload::stop() { return mPost ? mPost->stop() : missing(); }

ErrorInfo ForwardDownload::cancel() { return mPost ? mPost->cancel() : missing(); }

ErrorInfo ForwardDownload::getProgress(float& progress) { return mPost ? mPost->getProgress(progress) : missing(); }

ErrorInfo ForwardDownload::getFileName(std::string& fileName) {
    return mDownload ? mDownload->getFileName(fileName) : missing();
}

ErrorInfo ForwardDownload::getError() {
    if (!mDownload || !mPost) return missing();
    const ErrorInfo first = mDownload->getError();
    return first ? first : mPost->getError();
}

bool ForwardDownload::finish() { return mPost && mPost->finish(); }

}  // namespace Tarnwick::OrvUpdate
