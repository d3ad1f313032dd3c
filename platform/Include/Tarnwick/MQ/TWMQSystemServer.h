// The queue object of a server that is a member of a cluster.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/ErrorInfo.h"
#include "Tarnwick/MQ/MQDiscover.h"
#include "Tarnwick/MQ/TWMQServer.h"
#include "Tarnwick/MQ/TWServerInfo.h"

namespace Tarnwick::MQ {

/// Announces itself twice a second; a peer that is silent for 1.75 seconds is not reachable. The master is the
/// reachable, ready system server with the smallest id.
class ORV_PLATFORM_API TWMQSystemServer : public TWMQServer {
public:
    /// @return null when the id is empty or taken
    static std::shared_ptr<TWMQSystemServer> create(std::shared_ptr<Bus> bus, const NodeOptions& options);

    /// Id of the cluster's master; empty while none is reachable and ready.
    virtual std::string masterServerId() const = 0;
    /// @return -204 for an id that is no member of the cluster; info is as it was then
    virtual Public::Base::ErrorInfo getServerInfo(const std::string& serverId, TWServerInfo& info) = 0;
    /// This node's own record.
    virtual TWProtoOrvSystemNotify_v2 mySystemNotify() = 0;
    /// The view of the cluster; never null here.
    virtual std::shared_ptr<MQDiscover> discover() = 0;
    /// The link toward the master of that id; null when the queue knows no such node.
    virtual std::shared_ptr<MQConnection> connectionToMaster(const std::string& serverId) = 0;
};

}  // namespace Tarnwick::MQ
