// A client's view of the cluster.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "MQ/Membership.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::MQ {

/// Greets its server twice a second and knows what that server tells. Without a live server it knows nothing.
class ClientMembership : public Membership {
public:
    ClientMembership(std::shared_ptr<Bus> bus, const NodeOptions& options, uint64_t now);

    uint64_t tick(uint64_t now) override;
    void receive(const std::string& from, const Frame& frame, uint64_t now) override;
    void lost(const std::string& peer) override;
    bool alive(const std::string& peer) override;

    ServerList list();
    std::string master();

private:
    void greet(const std::string& server);

    const std::shared_ptr<Bus> mBus;
    const std::string mBusId;
    const std::string mServer;
    std::mutex mMutex;
    ServerList mServers;
    std::string mMaster;
    bool mAlive = true;
    uint64_t mHeard;
    uint64_t mNextGreeting;
    Beat mBeat;
};

}  // namespace Tarnwick::MQ
