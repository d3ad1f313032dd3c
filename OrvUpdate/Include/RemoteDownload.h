// The drive of a transfer that a peer carries out.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "IDownload.h"
#include "Tarnwick/MQ/TWMQClient.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::MQ::TWMQClient;

/// Tells a server to fetch a package for itself and watches how far it has come; no byte of it comes here. It has no
/// timer and never calls back: the owner calls getProgress as often as it wants to know, until finish is true or
/// getError tells an error. Held by std::shared_ptr, otherwise start and getProgress throw std::bad_weak_ptr. Answers
/// that come after the last owner let go do nothing.
class ORV_UPDATE_API RemoteDownload : public IDownload, public std::enable_shared_from_this<RemoteDownload> {
public:
    /// @param client gives the link; may be null, which is as no link   @param serverId of the peer
    RemoteDownload(const std::shared_ptr<TWMQClient>& client, const std::shared_ptr<IVersion>& version,
                   const std::string& serverId);

    using IDownload::start;
    /// Tells the peer. What it answers shows in getError. @param callback is dropped   @return -1 without a link or
    /// version; 0 although the request could not be sent, which getError tells
    ErrorInfo start(const Function<void()>& callback) override;
    /// Not offered: a transfer of a peer cannot be ended from here. @return -2
    ErrorInfo stop() override;
    /// Not offered. @return -2
    ErrorInfo cancel() override;
    /// Asks the peer, unless an earlier question is still unanswered, and gives what was known before the answer. The
    /// first error of an answer ends the watch for good: nothing more is asked then, also after a further start.
    /// @return -1 without a link or version, after which the next call asks again; otherwise 0
    ErrorInfo getProgress(float& progress) override;
    /// Not offered: the package does not lie on this disk. @return -2
    ErrorInfo getFileName(std::string& fileName) override;
    /// The last error since the last start.
    ErrorInfo getError() override;
    /// What the peer said last.
    bool finish() override;

private:
    enum class Watch { Idle, Asking, Ended };

    std::shared_ptr<Tarnwick::MQ::MQConnection> connection() const;
    ErrorInfo sendStart(const std::weak_ptr<RemoteDownload>& self);
    ErrorInfo sendPoll(const std::weak_ptr<RemoteDownload>& self);
    void onPollResponse(const Tarnwick::MQ::MQMessage& answer);
    void setError(const ErrorInfo& error);
    void setWatch(Watch watch);

    const std::shared_ptr<TWMQClient> mClient;
    const std::shared_ptr<IVersion> mVersion;
    const std::string mServerId;
    std::mutex mMutex;  // guards the rest; never held across a push or a log line
    bool mFinished = false;
    ErrorInfo mError;
    Watch mWatch = Watch::Idle;
    float mPosition = 0.0F;
};

}  // namespace Tarnwick::OrvUpdate
