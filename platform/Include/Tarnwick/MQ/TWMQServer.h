// The queue object of a server.
#pragma once

#include <memory>
#include <string>

#include "Tarnwick/MQ/Bus.h"
#include "Tarnwick/MQ/MQConnection.h"
#include "Tarnwick/MQ/MQDispatcher.h"

namespace Tarnwick::MQ {

/// A server endpoint. Leaves the bus when it is destroyed, as a client does.
class ORV_PLATFORM_API TWMQServer : public MQDispatcher {
public:
    /// @return null when the id is empty or taken
    static std::shared_ptr<TWMQServer> create(std::shared_ptr<Bus> bus, const NodeOptions& options);

    /// This server's id on the queue.
    virtual std::string myMqId() const = 0;
    /// The link on which that node is reached; null when the queue knows no such node. @param route always empty
    virtual std::shared_ptr<MQConnection> connectionTo(const std::string& serverId, const std::string& route) = 0;
};

}  // namespace Tarnwick::MQ
