// The queue object of a program in a client role.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/ErrorInfo.h"
#include "Tarnwick/MQ/Bus.h"
#include "Tarnwick/MQ/MQConnection.h"
#include "Tarnwick/MQ/MQDispatcher.h"
#include "Tarnwick/MQ/TWServerInfo.h"

namespace Tarnwick::MQ {

/// Holds one link to its server, which passes requests on by their target id. Leaves the bus when it is destroyed: no
/// handler of it begins afterwards, and callbacks still waiting run with -203.
class ORV_PLATFORM_API TWMQClient : public MQDispatcher {
public:
    /// @return null when the id is empty or taken
    static std::shared_ptr<TWMQClient> create(std::shared_ptr<Bus> bus, const NodeOptions& options);

    /// The link to its server; null when the options name none. A link whose server is gone is dead, not null.
    virtual std::shared_ptr<MQConnection> connection() const = 0;
    /// Id of the cluster's master; empty while none is known.
    virtual std::string masterId() const = 0;
    /// The servers known to this client. @return code 0; -203 with an empty list while it has no link
    virtual Public::Base::ErrorInfo getServerList(ServerList& list) const = 0;
};

}  // namespace Tarnwick::MQ
