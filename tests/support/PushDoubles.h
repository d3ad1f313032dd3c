// The far side of a push, played by a test: a link that keeps the chunks, and a request that keeps its queries.
#pragma once

#include <condition_variable>
#include <mutex>

#include "FakeQueueNodes.h"
#include "ForeignRequest.h"
#include "IGetConnection.h"
#include "MQ/Frame.h"
#include "Received.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace support {

using Tarnwick::Protocol::TWProtoUpgradeInfo;

/// The answer of a peer, as the queue hands it on.
inline std::shared_ptr<MQMessage> answerOf(int code, const TWPacket* body = nullptr) {
    auto frame = std::make_shared<Frame>();
    frame->kind = FrameKind_Answer;
    frame->errorCode = code;
    frame->body = TWPacket::serializeAsBytes(body);
    return std::make_shared<MQMessage>(frame, std::weak_ptr<MQConnection>());
}

/// How one chunk was sent.
struct SentChunk {
    TWProtoUpgradeInfo info;
    std::string via;  // empty when it was not forwarded
    std::string to;
    std::string topic;
    std::string session;
    bool authenticated = false;
    int level = -1;
    unsigned timeoutMs = 0;
    std::thread::id thread;
    ResponseCallback callback;
};

/// A link on which requests wait until the test answers them.
class ChunkLink : public FakeConnection {
public:
    unsigned int pushMessageRequestTo(const std::string& to, const std::string& topic, const TWPacket* body,
                                      const TWPacket* authen, TWProtoMessageLevel level,
                                      const ResponseCallback& callback, unsigned int timeoutMs) override {
        return keep("", to, topic, body, "", authen != nullptr, level, callback, timeoutMs);
    }
    unsigned int pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                    const std::string& topic, const TWPacket* body,
                                                    const std::string& session, TWProtoMessageLevel level,
                                                    const ResponseCallback& callback, unsigned int timeoutMs) override {
        return keep(via, to, topic, body, session, false, level, callback, timeoutMs);
    }

    /// Waits for that chunk, counted from 0. Throws when it does not come.
    SentChunk chunk(size_t index) const {
        if (!sent.waitFor(index + 1)) throw std::runtime_error("a chunk does not come");
        return sent.values()[index];
    }
    /// Waits for that chunk and answers it on this thread.
    void answer(size_t index, int code = 0) const { chunk(index).callback(answerOf(code)); }

    Received<SentChunk> sent;
    std::atomic<bool> refuses{false};  // gives message id 0

private:
    unsigned int keep(const std::string& via, const std::string& to, const std::string& topic, const TWPacket* body,
                      const std::string& session, bool authenticated, TWProtoMessageLevel level,
                      const ResponseCallback& callback, unsigned int timeoutMs) {
        if (refuses) return 0;
        const auto* info = dynamic_cast<const TWProtoUpgradeInfo*>(body);
        if (!info) throw std::runtime_error("a push sends chunk records");
        sent.add(
            {*info, via, to, topic, session, authenticated, level, timeoutMs, std::this_thread::get_id(), callback});
        return static_cast<unsigned>(sent.count());
    }
};

/// Gives the links that a test puts in.
class LinkProvider : public Tarnwick::OrvUpdate::IGetConnection {
public:
    std::shared_ptr<MQConnection> getConnection() override { return direct; }
    std::shared_ptr<MQConnection> getMasterConnection() override { return master; }
    std::string getMasterId() override { return masterId; }

    std::shared_ptr<MQConnection> direct;
    std::shared_ptr<MQConnection> master;
    std::string masterId;
};

/// Has a running version, and keeps the queries of the cluster for the test to answer.
class QueryingRequest : public Tarnwick::OrvUpdate::ForeignRequest {
public:
    using Finished = Tarnwick::OrvUpdate::RequestFinished;

    const Tarnwick::OrvUpdate::Version& getCurVersion() override { return running; }
    using ForeignRequest::querySystemVersion;
    ErrorInfo querySystemVersion(const Finished& callback) override {
        queries.add(callback);
        return {-1, "whatever it returns is dropped"};
    }
    /// Waits for the query and answers it on this thread.
    void answer(bool done, int code = 0) const {
        if (!queries.waitFor()) throw std::runtime_error("nobody asks the cluster");
        queries.values().back()("peer", ErrorInfo(code, ""), done);
    }

    Tarnwick::OrvUpdate::Version running{"1.0.0.0", 0};
    Received<Finished> queries;
};

}  // namespace support
