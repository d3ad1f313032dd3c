// A transfer to this machine and the push from it to a peer, as one.
#pragma once

#include <memory>
#include <string>

#include "IDownload.h"

namespace Tarnwick::OrvUpdate {

class PostDownload;

/// For a package that has to pass through this program to reach a peer. Progress and end are those of the push; an
/// error of the first transfer comes before one of the push. Held by std::shared_ptr, otherwise start throws
/// std::bad_weak_ptr; when the last owner lets go no push begins.
class ORV_UPDATE_API ForwardDownload : public IDownload, public std::enable_shared_from_this<ForwardDownload> {
public:
    ForwardDownload(const std::shared_ptr<IDownload>& download, const std::shared_ptr<PostDownload>& post);

    using IDownload::start;
    /// Starts the first transfer under a key, beside whoever else waits for it; at its end the push. The callback runs
    /// as that of the push does, and before that for a failed first transfer: the push is started all the same and
    /// finds no file, so whoever waits must bear two calls.
    /// @return what the first transfer's start returns: -2 when it takes no key; -1 when either member is missing
    ErrorInfo start(const Function<void()>& callback) override;
    /// Forwarded to the push, which does not offer it. @return -2
    ErrorInfo stop() override;
    /// Forwarded to the push, which does not offer it. @return -2
    ErrorInfo cancel() override;
    ErrorInfo getProgress(float& progress) override;
    /// That of the first transfer.
    ErrorInfo getFileName(std::string& fileName) override;
    ErrorInfo getError() override;
    bool finish() override;

private:
    void onArrived(const Function<void()>& callback);

    const std::shared_ptr<IDownload> mDownload;
    const std::shared_ptr<PostDownload> mPost;
};

}  // namespace Tarnwick::OrvUpdate
