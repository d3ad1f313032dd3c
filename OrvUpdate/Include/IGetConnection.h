// How transfers reach the queue without knowing the role of their node.
#pragma once

#include <memory>
#include <string>

#include "OrvUpdateExport.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::OrvUpdate {

/// May be called from any thread.
class ORV_UPDATE_API IGetConnection {
public:
    virtual ~IGetConnection() = default;
    /// The connection on which the peer is reached directly; null when there is none.
    virtual std::shared_ptr<Tarnwick::MQ::MQConnection> getConnection() = 0;
    /// The connection to the cluster's master; null when there is none.
    virtual std::shared_ptr<Tarnwick::MQ::MQConnection> getMasterConnection() = 0;
    /// The master's server id; empty when there is none.
    virtual std::string getMasterId() = 0;
};

}  // namespace Tarnwick::OrvUpdate
