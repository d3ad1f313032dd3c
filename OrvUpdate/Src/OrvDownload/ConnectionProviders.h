// The connection providers of the two kinds of node.
#pragma once

#include <memory>
#include <string>

#include "IGetConnection.h"
#include "Tarnwick/MQ/MQDispatcher.h"
#include "Tarnwick/MQ/TWMQClient.h"

namespace Tarnwick::OrvUpdate {

/// A client reaches every node over its one link.
class GetClientConnection : public IGetConnection {
public:
    /// @param client must not be null
    explicit GetClientConnection(std::shared_ptr<Tarnwick::MQ::TWMQClient> client);
    std::shared_ptr<Tarnwick::MQ::MQConnection> getConnection() override;
    std::shared_ptr<Tarnwick::MQ::MQConnection> getMasterConnection() override;
    std::string getMasterId() override;

private:
    std::shared_ptr<Tarnwick::MQ::TWMQClient> mClient;
};

/// A server reaches a peer by its server id. A dispatcher that is neither server nor client gives nothing.
class GetServerConnection : public IGetConnection {
public:
    GetServerConnection(std::shared_ptr<Tarnwick::MQ::MQDispatcher> dispatcher, const std::string& serverId);
    std::shared_ptr<Tarnwick::MQ::MQConnection> getConnection() override;
    std::shared_ptr<Tarnwick::MQ::MQConnection> getMasterConnection() override;
    std::string getMasterId() override;

private:
    std::shared_ptr<Tarnwick::MQ::MQDispatcher> mDispatcher;
    std::string mServerId;
};

}  // namespace Tarnwick::OrvUpdate
