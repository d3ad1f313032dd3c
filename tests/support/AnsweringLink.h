// A link of the queue on which a test sees each request and gives the answers itself.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "FakeQueueNodes.h"
#include "MQ/Frame.h"
#include "TWProtocol/TWProtoUpgrade.h"

namespace support {

/// An answer as a node receives it. @param record null for none
inline std::shared_ptr<MQMessage> peerAnswer(int code, const TWPacket* record = nullptr, const std::string& text = {}) {
    const auto frame = std::make_shared<Tarnwick::MQ::Frame>();
    frame->kind = Tarnwick::MQ::FrameKind_Answer;
    frame->errorCode = code;
    frame->errorText = text;
    if (record) frame->body = TWPacket::serializeAsBytes(record);
    return std::make_shared<MQMessage>(frame, std::weak_ptr<MQConnection>());
}

/// A success with that document.
inline std::shared_ptr<MQMessage> peerDocument(const std::string& document) {
    Tarnwick::Protocol::TWProtoUpgradePkt packet;
    packet.body = document;
    return peerAnswer(0, &packet);
}

/// Pushes to a node are noted; the other ways of sending are refused. May be used from several threads.
class AnsweringLink : public FakeConnection {
public:
    struct Request {
        std::string to;
        std::string topic;
        std::string body;
        bool hasUser = false;
        int level = 0;
        unsigned timeoutMs = 0;
        ResponseCallback answer;
    };
    using AnswerAtOnce = std::function<std::shared_ptr<MQMessage>(const Request&)>;

    unsigned int pushMessageRequestTo(const std::string& to, const std::string& topic, const TWPacket* body,
                                      const TWPacket* authen, TWProtoMessageLevel level,
                                      const ResponseCallback& callback, unsigned int timeoutMs) override {
        const auto* packet = dynamic_cast<const Tarnwick::Protocol::TWProtoUpgradePkt*>(body);
        const Request request{to,        topic,   packet ? packet->body : "no packet", authen != nullptr, level,
                              timeoutMs, callback};
        {
            std::lock_guard lock(mMutex);
            if (mRefusing) return 0;
            mRequests.push_back(request);
        }
        const auto message = mAnswerAtOnce ? mAnswerAtOnce(request) : nullptr;
        if (message) callback(message);
        return 77;
    }
    int connectionState() override { return Tarnwick::MQ::ConnectionState_Connected; }

    /// Pushes give 0 from now on, or are taken again.
    void refuse(bool refusing) {
        std::lock_guard lock(mMutex);
        mRefusing = refusing;
    }
    /// Answers for which this gives a message are there before the push returns. Set before the link is used.
    void answerAtOnce(AnswerAtOnce answer) { mAnswerAtOnce = std::move(answer); }

    std::vector<Request> requests() const {
        std::lock_guard lock(mMutex);
        return mRequests;
    }
    /// How many of that topic.
    size_t count(const std::string& topic) const {
        size_t found = 0;
        for (const auto& request : requests()) found += request.topic == topic ? 1 : 0;
        return found;
    }
    /// Answers the last request.
    void answer(const std::shared_ptr<MQMessage>& message) const { requests().back().answer(message); }
    void answer(const std::string& document) const { answer(peerDocument(document)); }

private:
    mutable std::mutex mMutex;
    std::vector<Request> mRequests;
    bool mRefusing = false;
    AnswerAtOnce mAnswerAtOnce;
};

}  // namespace support
