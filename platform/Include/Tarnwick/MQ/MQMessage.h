// One received request or response.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/ErrorInfo.h"
#include "Public/Base/PlatformExport.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::MQ {

class MQConnection;
struct Frame;

/// Always held by std::shared_ptr. Does not change after it was received; any thread may read it.
class ORV_PLATFORM_API MQMessage : public std::enable_shared_from_this<MQMessage> {
public:
    /// For the queue itself: a received or built frame, and the link that it came on.
    MQMessage(std::shared_ptr<const Frame> frame, std::weak_ptr<MQConnection> connection);
    ~MQMessage();

    /// Fills the record from the body. @param flag always false   @return false when there is no body, or it holds a
    /// record of another type or is malformed; the record is as it was then
    bool parseBody(Tarnwick::Protocol::TWPacket* record, bool flag) const;
    /// Fills the record from the authentication part. @param flag always false   @return as above
    bool parseUserAuthen(Tarnwick::Protocol::TWPacket* record, bool flag) const;

    /// The response to this request. @param body null for a response without a body
    std::shared_ptr<MQMessage> buildResponse(const Public::Base::ErrorInfo& result,
                                             const Tarnwick::Protocol::TWPacket* body);
    std::shared_ptr<MQMessage> buildResponse(const Public::Base::ErrorInfo& result,
                                             const Tarnwick::Protocol::TWPacket& body);

    const std::string& from() const;       ///< id of the sender
    const std::string& to() const;         ///< the addressee
    const std::string& forwardTo() const;  ///< final target of a forwarded message, otherwise empty
    const std::string& topic() const;
    /// The link on which the request came; null when it has gone.
    std::shared_ptr<MQConnection> connection();
    /// Of a response: the sender's result, or the queue's own failure (-202 timed out, -203 link dead, -204 no such
    /// node). Of a request: code 0.
    Public::Base::ErrorInfo errorInfo() const;

    const Frame& frame() const { return *mFrame; }

private:
    std::shared_ptr<const Frame> mFrame;
    std::weak_ptr<MQConnection> mConnection;
};

}  // namespace Tarnwick::MQ
