#include "OrvDownload/ConnectionProviders.h"

#include "Tarnwick/MQ/TWMQServer.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::MQ::MQConnection;
using Tarnwick::MQ::MQDispatcher;
using Tarnwick::MQ::TWMQClient;
using Tarnwick::MQ::TWMQServer;
using Tarnwick::MQ::TWMQSystemServer;

GetClientConnection::GetClientConnection(std::shared_ptr<TWMQClient> client) : mClient(std::move(client)) {}

std::shared_ptr<MQConnection> GetClientConnection::getConnection() { return mClient->connection(); }

std::shared_ptr<MQConnection> GetClientConnection::getMasterConnection() { return mClient->connection(); }

std::string GetClientConnection::getMasterId() { return mClient->masterId(); }

GetServerConnection::GetServerConnection(std::shared_ptr<MQDispatcher> dispatcher, const std::string& serverId)
    : mDispatcher(std::move(dispatcher)), mServerId(serverId) {}

std::shared_ptr<MQConnection> GetServerConnection::getConnection() {
    if (const auto server = std::dynamic_pointer_cast<TWMQServer>(mDispatcher)) {
        return server->connectionTo(mServerId, "");
    }
    const auto client = std::dynamic_pointer_cast<TWMQClient>(mDispatcher);
    return client ? client->connection() : nullptr;
}

std::shared_ptr<MQConnection> GetServerConnection::getMasterConnection() {
    if (const auto server = std::dynamic_pointer_cast<TWMQSystemServer>(mDispatcher)) {
        return server->connectionToMaster(server->masterServerId());
    }
    const auto client = std::dynamic_pointer_cast<TWMQClient>(mDispatcher);
    return client ? client->connection() : nullptr;
}

std::string GetServerConnection::getMasterId() {
    if (const auto server = std::dynamic_pointer_cast<TWMQSystemServer>(mDispatcher)) return server->masterServerId();
    const auto client = std::dynamic_pointer_cast<TWMQClient>(mDispatcher);
    return client ? client->masterId() : std::string();
}

}  // namespace Tarnwick::OrvUpdate
