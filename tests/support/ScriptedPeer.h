// The far end of a pull, as a test plays it.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "FakeQueueNodes.h"
#include "IGetConnection.h"
#include "MQ/Frame.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace support {

using Tarnwick::Protocol::TWProtoUpgradeInfo;

/// A response as it comes from the queue.
inline std::shared_ptr<MQMessage> responseWith(const ErrorInfo& result, const TWPacket* body) {
    const auto request = std::make_shared<MQMessage>(std::make_shared<Frame>(), std::weak_ptr<MQConnection>());
    return request->buildResponse(result, body);
}

/// What was pushed, as it stood then.
struct PushedChunk {
    std::string via;  ///< empty unless forwarded
    std::string to;
    std::string topic;
    std::string session;
    TWProtoUpgradeInfo record;
    unsigned level = 0;
    bool authenticated = false;
    unsigned timeoutMs = 0;
    ResponseCallback callback;

    void answer(const TWProtoUpgradeInfo& chunk) const { callback(responseWith(ErrorInfo(0, ""), &chunk)); }
    void fail(const ErrorInfo& error) const { callback(responseWith(error, nullptr)); }
};

/// Keeps what is pushed until the test answers, or answers inside of the push.
class ScriptedConnection : public FakeConnection {
public:
    unsigned int pushMessageRequestTo(const std::string& to, const std::string& topic, const TWPacket* body,
                                      const TWPacket* authen, TWProtoMessageLevel level,
                                      const ResponseCallback& callback, unsigned int timeoutMs) override {
        return push("", to, topic, body, authen, "-", level, callback, timeoutMs);
    }
    unsigned int pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                    const std::string& topic, const TWPacket* body,
                                                    const std::string& session, TWProtoMessageLevel level,
                                                    const ResponseCallback& callback, unsigned int timeoutMs) override {
        return push(via, to, topic, body, nullptr, session, level, callback, timeoutMs);
    }

    size_t count() const {
        std::lock_guard lock(mMutex);
        return mPushed.size();
    }
    PushedChunk at(size_t index) const {
        std::lock_guard lock(mMutex);
        return mPushed.at(index);
    }
    PushedChunk last() const { return at(count() - 1); }
    /// From now on no request can be sent.
    void refuse(bool refuses = true) { mRefuses = refuses; }
    /// Each request is answered before its push returns.
    void answerAtOnce(std::function<TWProtoUpgradeInfo(const TWProtoUpgradeInfo&)> answers) {
        mAnswers = std::move(answers);
    }
    /// Lets go of the callbacks, as the queue does when it ends.
    void forget() {
        std::vector<PushedChunk> gone;
        std::lock_guard lock(mMutex);
        gone.swap(mPushed);
    }

private:
    unsigned int push(const std::string& via, const std::string& to, const std::string& topic, const TWPacket* body,
                      const TWPacket* authen, const std::string& session, TWProtoMessageLevel level,
                      const ResponseCallback& callback, unsigned int timeoutMs) {
        if (mRefuses) return 0;
        PushedChunk one{via, to, topic, session, {}, static_cast<unsigned>(level), authen != nullptr, timeoutMs, {}};
        if (const auto* record = dynamic_cast<const TWProtoUpgradeInfo*>(body)) one.record = *record;
        if (mAnswers) {
            const TWProtoUpgradeInfo chunk = mAnswers(one.record);
            callback(responseWith(ErrorInfo(0, ""), &chunk));
            return 1;
        }
        one.callback = callback;
        std::lock_guard lock(mMutex);
        mPushed.push_back(std::move(one));
        return static_cast<unsigned>(mPushed.size());
    }

    mutable std::mutex mMutex;
    std::vector<PushedChunk> mPushed;
    std::atomic<bool> mRefuses{false};
    std::function<TWProtoUpgradeInfo(const TWProtoUpgradeInfo&)> mAnswers;
};

/// Hands out what the test puts in.
struct ScriptedProvider : Tarnwick::OrvUpdate::IGetConnection {
    std::shared_ptr<MQConnection> getConnection() override { return direct; }
    std::shared_ptr<MQConnection> getMasterConnection() override { return master; }
    std::string getMasterId() override { return masterId; }

    std::shared_ptr<MQConnection> direct;
    std::shared_ptr<MQConnection> master;
    std::string masterId;
};

}  // namespace support
