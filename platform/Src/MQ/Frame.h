// What travels on a bus.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarnwick::MQ {

/// One frame. Encoded in the protobuf wire format, as TWFrame.proto describes; unknown fields are skipped.
struct Frame {
    enum Kind : uint32_t {
        Request = 1,
        Response = 2,
        Announce = 3,  ///< a system server tells its peers about itself
        Hello = 4,     ///< a client tells its server that it is there
        List = 5,      ///< a server tells a client about all servers
    };

    uint32_t kind = 0;
    uint32_t messageId = 0;
    std::string sender;       ///< in whose name it comes
    std::string addressee;    ///< node that it is meant for
    std::string finalTarget;  ///< of a forwarded request, otherwise empty
    std::string waiter;       ///< node that waits for the answer
    std::string topic;
    std::string session;
    int32_t errorCode = 0;
    std::string errorText;
    bool hasBody = false;
    std::string body;    ///< an encoded record
    std::string authen;  ///< an encoded authentication record, or empty

    std::string encode() const;
    /// @return false for bytes that are no frame of a known kind
    static bool decode(std::string_view bytes, Frame& frame);
};

}  // namespace Tarnwick::MQ
