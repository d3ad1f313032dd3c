#include "MQ/Frame.h"

#include <algorithm>
#include <array>

#include "Protocol/Encoding.h"

namespace Tarnwick::MQ {

namespace {

constexpr uint32_t kBody = 11;
/// A smaller body is copied sooner than it is carried apart.
constexpr size_t kLeastApart = 4096;

std::string_view view(const Public::Base::SharedBuffer& buffer) { return {buffer.buf(), buffer.size()}; }

bool complete(const Frame& frame) {
    switch (frame.kind) {
        case FrameKind_Request:
            return frame.messageId != 0 && !frame.topic.empty() && !frame.waiter.empty();
        case FrameKind_Answer:
            return frame.messageId != 0 && !frame.waiter.empty();
        case FrameKind_Announce:
            return frame.servers.size() == 1 && !frame.servers.front().serverId.empty();
        case FrameKind_Hello:
        case FrameKind_List:
            return true;
        default:
            return false;
    }
}

/// What every frame of that kind begins with.
std::string beginning(FrameKind kind) {
    Frame frame;
    frame.kind = kind;
    return encodeFrame(frame);
}

/// What stands in front of a body of that size.
std::string bodyLead(size_t size) {
    Tarnwick::Protocol::TWFieldWriter writer;
    writer.lead(kBody, size);
    return writer.take();
}

}  // namespace

void Frame::writeFields(Tarnwick::Protocol::TWFieldWriter& writer) const {
    writer.number(1, kind);
    writer.number(2, messageId);
    writer.text(3, sender);
    writer.text(4, addressee);
    writer.text(5, finalTarget);
    writer.text(6, waiter);
    writer.text(7, topic);
    writer.text(8, session);
    writer.number(9, static_cast<uint64_t>(static_cast<int64_t>(errorCode)));
    writer.text(10, errorText);
    writer.text(12, view(authen));
    writer.number(13, token);
    writer.number(14, level);
    writer.number(16, hops);
    writer.number(17, systemServer);
    for (const auto& server : servers) writer.element(18, server);
    writer.text(19, master);
    writer.text(kBody, view(body));  // last, so that it can be a part of its own
}

bool Frame::readField(const Tarnwick::Protocol::TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(kind);
        case 2:
            return field.to(messageId);
        case 3:
            return field.to(sender);
        case 4:
            return field.to(addressee);
        case 5:
            return field.to(finalTarget);
        case 6:
            return field.to(waiter);
        case 7:
            return field.to(topic);
        case 8:
            return field.to(session);
        case 9:
            return field.to(errorCode);
        case 10:
            return field.to(errorText);
        case kBody:
            return field.to(body);
        case 12:
            return field.to(authen);
        case 13:
            return field.to(token);
        case 14:
            return field.to(level);
        case 16:
            return field.to(hops);
        case 17:
            return field.to(systemServer);
        case 18:
            return field.append(servers);
        case 19:
            return field.to(master);
        default:
            return true;
    }
}

std::string encodeFrame(const Frame& frame) {
    constexpr size_t kAllButBytes = 512;
    return Tarnwick::Protocol::encodeRecord(frame, kAllButBytes + frame.body.size() + frame.authen.size());
}

FrameParts encodeParts(const Frame& frame) {
    if (frame.body.size() < kLeastApart) return {encodeFrame(frame), {}};
    auto rest = frame;
    rest.body = {};
    return {encodeFrame(rest) + bodyLead(frame.body.size()), frame.body};
}

std::shared_ptr<const Frame> decodeFrame(std::string_view bytes) {
    auto frame = std::make_shared<Frame>();
    if (!Tarnwick::Protocol::TWPacket::parseBytes(bytes, *frame) || !complete(*frame)) return nullptr;
    return frame;
}

std::shared_ptr<const Frame> decodeParts(std::string_view head, const Public::Base::SharedBuffer& tail) {
    if (tail.empty()) return decodeFrame(head);
    const auto lead = bodyLead(tail.size());
    auto frame = std::make_shared<Frame>();
    if (head.ends_with(lead) &&
        Tarnwick::Protocol::TWPacket::parseBytes(head.substr(0, head.size() - lead.size()), *frame)) {
        frame->body = tail;
        return complete(*frame) ? frame : nullptr;
    }
    return decodeFrame(std::string(head).append(tail.buf(), tail.size()));
}

bool beginsAsPresence(std::string_view bytes) {
    static const std::array beginnings{beginning(FrameKind_Announce), beginning(FrameKind_Hello),
                                       beginning(FrameKind_List)};
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [bytes](const std::string& text) { return bytes.starts_with(text); });
}

}  // namespace Tarnwick::MQ
