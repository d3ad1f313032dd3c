// The subscription table of a node.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"
#include "Tarnwick/MQ/MQMessage.h"

namespace Tarnwick::MQ {

/// Serves one request: the message returned is sent as the response; null sends nothing, and the handler answers later
/// through message->connection()->pushResponse, or has passed the request on.
using RequestHandler = Public::Base::Function<std::shared_ptr<MQMessage>(const std::shared_ptr<MQMessage>&)>;

/// Base of every node of the queue. Both operations may be called from any thread. Handlers run on the queue's threads,
/// several at once, under no lock; one that blocks holds up no other. A request on a topic that nobody serves is
/// answered with -2, or with -204 when it names another node as its addressee.
class ORV_PLATFORM_API MQDispatcher {
public:
    virtual ~MQDispatcher() = default;

    /// From now on requests on the topic are given to the handler. One owner may subscribe many topics and several
    /// owners one topic: all are called in the order of subscription, and the first response that is not null is sent.
    /// @param owner opaque key   @param second always empty
    virtual void subscribe(const std::string& topic, void* owner, const RequestHandler& handler,
                           const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>& second) = 0;
    /// Removes every subscription of the owner. After it returns no further call of the owner's handlers begins; one
    /// that runs already goes on.
    virtual void unsubcribe(void* owner) = 0;
};

}  // namespace Tarnwick::MQ
