// A connection provider that knows no direct way.
#pragma once

#include "IGetConnection.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"

namespace support {

/// Of a server that reaches its peers by way of the cluster's master alone.
class GetConnectionByMaster : public Tarnwick::OrvUpdate::IGetConnection {
public:
    explicit GetConnectionByMaster(std::shared_ptr<Tarnwick::MQ::TWMQSystemServer> server)
        : mServer(std::move(server)) {}
    std::shared_ptr<Tarnwick::MQ::MQConnection> getConnection() override { return nullptr; }
    std::shared_ptr<Tarnwick::MQ::MQConnection> getMasterConnection() override {
        return mServer->connectionToMaster(mServer->masterServerId());
    }
    std::string getMasterId() override { return mServer->masterServerId(); }

private:
    const std::shared_ptr<Tarnwick::MQ::TWMQSystemServer> mServer;
};

}  // namespace support
