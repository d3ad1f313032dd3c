#include "WatchedBus.h"

#include "MQ/Frame.h"

namespace cluster {

using namespace Tarnwick::MQ;

namespace {

constexpr size_t kLongFrame = 0x10000;

/// "request of topic" or "answer of topic, code"; empty for presence.
std::string describe(const std::string& bytes) {
    if (beginsAsPresence(bytes)) return {};
    if (bytes.size() > kLongFrame) return "long frame";
    const auto frame = decodeFrame(bytes);
    if (!frame) return "no frame";
    if (frame->kind == FrameKind_Request) {
        const auto target = frame->finalTarget.empty() ? frame->addressee : frame->finalTarget;
        return "request " + frame->topic + " for " + target + " from " + frame->waiter;
    }
    return "answer " + frame->topic + " " + std::to_string(frame->errorCode);
}

}  // namespace

WatchedBus::WatchedBus(std::shared_ptr<Bus> bus, std::shared_ptr<RunLog> log)
    : mBus(std::move(bus)), mLog(std::move(log)) {}

bool WatchedBus::join(const std::string& id, const Endpoint& endpoint) {
    auto watched = endpoint;
    watched.onFrame = [id, log = mLog, pass = endpoint.onFrame](const std::string& from, std::string frame) {
        if (const auto text = describe(frame); !text.empty()) log->add("    " + id + " hears " + from + ": " + text);
        pass(from, std::move(frame));
    };
    return mBus->join(id, watched);
}

bool WatchedBus::send(const std::string& from, const std::string& to, const std::string& frame) {
    const auto text = describe(frame);
    const bool sent = mBus->send(from, to, frame);
    if (!text.empty()) mLog->add("    " + from + (sent ? " says to " : " cannot say to ") + to + ": " + text);
    return sent;
}

}  // namespace cluster
