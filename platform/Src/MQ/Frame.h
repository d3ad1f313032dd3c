// What nodes exchange on a bus.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Public/Base/SharedBuffer.h"
#include "TWProtocol/TWPacket.h"
#include "Tarnwick/MQ/TWServerInfo.h"

namespace Tarnwick::MQ {

enum FrameKind : uint32_t {
    FrameKind_Request = 1,
    FrameKind_Answer = 2,
    FrameKind_Announce = 3,  ///< a server tells its peers about itself: `servers` holds its one record
    FrameKind_Hello = 4,     ///< a client names its server in `addressee`
    FrameKind_List = 5,      ///< a server tells its clients which servers there are, and the master
};

/// The forms of a frame differ in the members that they use. Plain value; shared as const once it is received or built.
struct Frame : Tarnwick::Protocol::TWPacket {
    uint32_t kind = 0;
    uint32_t messageId = 0;  ///< of the request, given by the node that waits for the answer
    uint64_t token = 0;      ///< drawn by that node; an answer that does not bear it is none
    std::string sender;
    std::string addressee;
    std::string finalTarget;  ///< empty when the request is not a forwarded one
    std::string waiter;       ///< the node that waits for the answer; stays when a request is passed on
    std::string topic;
    std::string session;
    int32_t errorCode = 0;
    std::string errorText;
    Public::Base::SharedBuffer body;
    Public::Base::SharedBuffer authen;
    uint32_t level = 0;
    uint32_t hops = 0;          ///< how often the request was passed on
    bool systemServer = false;  ///< Announce: a member of the cluster, not a plain server
    std::vector<TWServerInfo> servers;
    std::string master;

    const char* typeName() const override { return "TWFrame"; }
    uint64_t typeId() const override { return 0x6b1f93c2d05e8a47ULL; }
    void writeFields(Tarnwick::Protocol::TWFieldWriter& writer) const override;
    bool readField(const Tarnwick::Protocol::TWField& field) override;
};

std::string encodeFrame(const Frame& frame);

/// The bytes of a frame, of which a large body need not be copied.
struct FrameParts {
    std::string head;
    Public::Base::SharedBuffer tail;

    size_t size() const { return head.size() + tail.size(); }
};
/// Both parts, one after the other, are what encodeFrame gives.
FrameParts encodeParts(const Frame& frame);
/// Null for bytes that are no frame, for a kind of a later version, and for a frame that lacks what its kind needs.
std::shared_ptr<const Frame> decodeFrame(std::string_view bytes);
/// The same for both parts. A tail that is the frame's body is shared with it.
std::shared_ptr<const Frame> decodeParts(std::string_view head, const Public::Base::SharedBuffer& tail);
/// True for bytes that begin as an announcement, a greeting or a list does; looks no further.
bool beginsAsPresence(std::string_view bytes);

}  // namespace Tarnwick::MQ
