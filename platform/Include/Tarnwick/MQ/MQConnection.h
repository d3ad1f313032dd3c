// One link of the queue.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/ErrorInfo.h"
#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"
#include "Public/Base/SharedBuffer.h"
#include "TWProtocol/TWPacket.h"
#include "Tarnwick/MQ/MQMessage.h"

namespace Tarnwick::MQ {

/// Priority of a message; only the first value is used.
using TWProtoMessageLevel = Tarnwick::Protocol::TWProtoMessageLevel;

/// Gets the answer to a request, on a thread of the queue and under no lock, exactly once.
using ResponseCallback = Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>;

/// State of a link as connectionState gives it.
enum ConnectionState : int {
    ConnectionState_Connected = 4,
    ConnectionState_Dead = 6,  ///< not usable
};

/// Held by std::shared_ptr. All operations may be called from any thread. Every push returns the message's id, or 0
/// when it could not be sent (a closed link, a frame too large): the callback is never called then. Otherwise the
/// callback runs exactly once: with the answer, or with a message whose errorInfo tells -202 (time-out), -203 (link or
/// node gone) or -204 (no such node). `body` and `authen` may be null. Time-outs are in milliseconds of the Clock.
class ORV_PLATFORM_API MQConnection {
public:
    virtual ~MQConnection() = default;

    /// To the peer at the other end of the link.
    virtual unsigned int pushMessageRequest(const std::string& topic, const Tarnwick::Protocol::TWPacket* body,
                                            const Tarnwick::Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                            const ResponseCallback& callback, unsigned int timeoutMs) = 0;
    /// To the node `to`.
    virtual unsigned int pushMessageRequestTo(const std::string& to, const std::string& topic,
                                              const Tarnwick::Protocol::TWPacket* body,
                                              const Tarnwick::Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                              const ResponseCallback& callback, unsigned int timeoutMs) = 0;
    /// The same with a body that TWPacket::serializeAsBytes has made.
    virtual unsigned int pushStringRequestTo(const std::string& to, const std::string& topic,
                                             const Public::Base::SharedBuffer& body,
                                             const Tarnwick::Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                             const ResponseCallback& callback, unsigned int timeoutMs) = 0;
    /// Toward the node `via`, which passes the request on to `to`. `session` is always empty.
    virtual unsigned int pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                            const std::string& topic,
                                                            const Tarnwick::Protocol::TWPacket* body,
                                                            const std::string& session, TWProtoMessageLevel level,
                                                            const ResponseCallback& callback,
                                                            unsigned int timeoutMs) = 0;
    /// This end's id on the link.
    virtual std::string myMqId() const = 0;
    /// Sends a response made by buildResponse. @param flag always false   @return -203 when it cannot be sent
    virtual Public::Base::ErrorInfo pushResponse(const std::shared_ptr<MQMessage>& response, bool flag) = 0;
    /// Passes a received request on to the node `to` in the name of `from`, with the authentication record when it is
    /// not null. The answer of `to` goes to the first sender. @return -203 when it cannot be sent
    virtual Public::Base::ErrorInfo forwardMessageTo(const std::string& from, const std::string& to,
                                                     const std::shared_ptr<MQMessage>& message,
                                                     const Tarnwick::Protocol::TWPacket* authen) = 0;
    /// A ConnectionState.
    virtual int connectionState() = 0;
};

}  // namespace Tarnwick::MQ
