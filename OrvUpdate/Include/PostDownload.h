// The push of a package to a peer.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

#include "IDownload.h"
#include "IGetConnection.h"
#include "IVersionRequest.h"

namespace Tarnwick::OrvUpdate {

/// Sends a package file of this machine to a peer, one chunk at a time: the next is read when the last one has been
/// acknowledged. At the end it asks the cluster what it holds, so that the catalogue knows the package before the
/// transfer counts as finished; whether that succeeds is not looked at. An object pushes once in its life. Held by
/// std::shared_ptr, otherwise start throws std::bad_weak_ptr; when the last owner lets go the push ends without a
/// callback, and neither memory nor the open file outlives its end. The file is never changed.
class ORV_UPDATE_API PostDownload : public IDownload, public std::enable_shared_from_this<PostDownload> {
public:
    /// @param request gives the current version, and asks the cluster at the end   @param fileName of the package
    /// @param source told to the peer   @param serverId of the peer
    PostDownload(const std::shared_ptr<IVersionRequest>& request, const std::string& fileName,
                 const std::shared_ptr<IGetConnection>& connection, VersionSource source, const std::string& serverId);
    ~PostDownload() override;

    using IDownload::start;
    /// Returns at once. A thread of its own tests the package, all of it, and sends the first chunk; the rest runs on
    /// the queue's threads. The callback runs at the end and for every failure, which getError then tells: -1 without
    /// request or connection provider, or when a chunk cannot be sent; -200 no connection; -302 not a readable package;
    /// -308 another edition, or one part is missing; -416 no file, an empty one, one of 4 GiB and more, or
    /// one that gets shorter under way; -606 content
    /// that does not decode; otherwise what the peer or the queue answered.
    /// @return 0, also when it has been started before, which only clears the error; the system's failure when it
    ///         gives no thread, after the callback
    ErrorInfo start(const Function<void()>& callback) override;
    /// Not offered. @return -2
    ErrorInfo stop() override;
    /// Not offered. @return -2
    ErrorInfo cancel() override;
    /// Share of the bytes that the peer has acknowledged. @return code 0
    ErrorInfo getProgress(float& progress) override;
    /// The package that is sent. @return code 0
    ErrorInfo getFileName(std::string& fileName) override;
    ErrorInfo getError() override;
    bool finish() override;

private:
    struct Run;

    void push(const Function<void()>& callback);
    void refuse(const ErrorInfo& error, const Function<void()>& callback);
    ErrorInfo sendVersion(const std::string& fileName);
    ErrorInfo prepareRun(const std::string& fileName);
    void sendNext();
    void onAck(size_t count, const ErrorInfo& answer);
    void finishPush();
    void failTransfer(const ErrorInfo& error);
    void fail(const ErrorInfo& error);
    std::shared_ptr<Run> currentRun();
    void endRun();
    void setError(const ErrorInfo& error);

    const std::shared_ptr<IVersionRequest> mRequest;
    const std::shared_ptr<IGetConnection> mConnection;
    const std::string mFileName;
    const VersionSource mVersionSource;
    const std::string mServerId;
    Function<void()> mCallback;
    std::atomic<bool> mStarted{false};
    std::atomic<float> mProgress{0.0F};
    std::atomic<bool> mFinished{false};
    std::mutex mMutex;  // guards the rest; never held across a call that leads out of here
    ErrorInfo mError;
    std::shared_ptr<Run> mRun;  // set while chunks go
};

}  // namespace Tarnwick::OrvUpdate
