#include "WatchedBus.h"

#include "MQ/Frame.h"

namespace cluster {

using namespace Tarnwick::MQ;

namespace {

using Public::Base::SharedBuffer;

/// No frame of a run is nearly so long: tokens and ids make lengths differ by some bytes each time.
constexpr size_t kLongFrame = 0x20000;

/// "request of topic" or "answer of topic, code"; empty for presence.
std::string describe(const std::string& head, const SharedBuffer& tail) {
    if (beginsAsPresence(head)) return {};
    if (head.size() + tail.size() > kLongFrame) return "long frame";
    const auto frame = decodeParts(head, tail);
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
    const auto note = [id, log = mLog](const std::string& from, const std::string& head, const SharedBuffer& tail) {
        const auto text = describe(head, tail);
        if (!text.empty()) log->add("    " + id + " hears " + from + ": " + text);
    };
    auto watched = endpoint;
    watched.onFrame = [note, pass = endpoint.onFrame](const std::string& from, std::string frame) {
        note(from, frame, {});
        pass(from, std::move(frame));
    };
    watched.onParts = [note, pass = endpoint.onParts](const std::string& from, const std::string& head,
                                                      const SharedBuffer& tail) {
        note(from, head, tail);
        pass(from, head, tail);
    };
    return mBus->join(id, watched);
}

bool WatchedBus::sendParts(const std::string& from, const std::string& to, const std::string& head,
                           const SharedBuffer& tail) {
    const auto text = describe(head, tail);
    const bool sent = mBus->sendParts(from, to, head, tail);
    if (!text.empty()) mLog->add("    " + from + (sent ? " says to " : " cannot say to ") + to + ": " + text);
    return sent;
}

}  // namespace cluster
