#include "Tarnwick/MQ/TWMQServer.h"

#include "MQ/ServerNode.h"

namespace Tarnwick::MQ {

std::shared_ptr<TWMQServer> TWMQServer::create(std::shared_ptr<Bus> bus, const NodeOptions& options) {
    if (!bus) return nullptr;
    auto server = std::make_shared<ServerNode<TWMQServer>>(bus, options, false);
    return server->open() ? server : nullptr;
}

}  // namespace Tarnwick::MQ
