// The drive of an installation that a peer carries out.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "IInstaller.h"
#include "Tarnwick/MQ/TWMQClient.h"

namespace Tarnwick::OrvUpdate {

/// Tells a server to install a version on itself and watches it until it runs that version, an error comes, or 180
/// seconds have gone. It has no timer and never calls back: the owner calls getProgress, finish and getError as often
/// as it wants to know. Held by std::shared_ptr. Answers that come after the last owner let go do nothing.
class RemoteInstaller : public IInstaller, public std::enable_shared_from_this<RemoteInstaller> {
public:
    /// @param client gives the link; may be null, which is as no link   @param serverId of the peer
    RemoteInstaller(const std::shared_ptr<Tarnwick::MQ::TWMQClient>& client, const std::shared_ptr<IVersion>& version,
                    const std::string& serverId);

    /// Tells the peer; what it answers shows in getError. No argument is used: the peer decides where it installs, and
    /// nobody is called back. @return -1 without a link or version; 0 although the request could not be sent, which
    /// getError tells
    ErrorInfo start(const std::string& installDir, bool flag, const Function<void()>& callback) override;
    /// Not offered: an installation of a peer cannot be withdrawn. @return -2
    ErrorInfo stop() override;
    /// Not offered. @return -2
    ErrorInfo cancel() override;
    /// Asks the peer and gives what was known before its answer. Does not ask when it has finished or failed, nor for 5
    /// seconds while an answer is out. @return code 0
    ErrorInfo getProgress(float& progress) override;
    bool finish() override;
    /// The last failure; an answer without one clears it. From 180 seconds after the start on: -1, and finish is true.
    ErrorInfo getError() override;

private:
    std::shared_ptr<Tarnwick::MQ::MQConnection> connection() const;
    /// @return the message's id, 0 when it could not be sent
    unsigned push(Tarnwick::MQ::MQConnection& link, const char* topic,
                  void (RemoteInstaller::*onAnswer)(const Tarnwick::MQ::MQMessage&));
    ErrorInfo sendStart();
    void poll();
    void onStartResponse(const Tarnwick::MQ::MQMessage& answer);
    void onPollResponse(const Tarnwick::MQ::MQMessage& answer);
    /// @return -301, or the error of the answer where that counts as one
    ErrorInfo takeAnswer(const Tarnwick::MQ::MQMessage& answer);
    /// @return true when the error was taken
    bool setError(const ErrorInfo& error);
    void keepError(const ErrorInfo& error);
    void endPoll();

    const std::shared_ptr<Tarnwick::MQ::TWMQClient> mMQClient;
    const std::shared_ptr<IVersion> mVersion;
    const std::string mServerId;
    std::mutex mMutex;  // guards the rest; never held across a push or a log line
    bool mFinished = false;
    ErrorInfo mError;
    float mProgress = 0.0F;
    std::optional<uint64_t> mStartTime;     // empty until the first start
    std::optional<uint64_t> mLastPollTime;  // of the poll whose answer is out; empty when there is none
};

}  // namespace Tarnwick::OrvUpdate
