// A server's view of the cluster.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "MQ/Membership.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::MQ {

/// Announces this server to all peers that are not known to be clients, and gives its own clients the list. A server
/// once heard of stays in the list, reachable or not.
class ServerMembership : public Membership {
public:
    /// @param systemServer a member of the cluster; a plain server only watches it
    ServerMembership(std::shared_ptr<Bus> bus, const NodeOptions& options, bool systemServer, uint64_t now);

    uint64_t tick(uint64_t now) override;
    void receive(const std::string& from, const Frame& frame, uint64_t now) override;
    void lost(const std::string& peer) override;
    bool alive(const std::string& peer) override;

    const TWServerInfo& self() const { return mSelf; }
    /// False when the id is no member of this server's cluster.
    bool infoOf(const std::string& serverId, TWServerInfo& info);
    ServerList list(const std::string& systemId);
    /// Empty when none is reachable and ready.
    std::string master();
    /// The id on the bus of that server or client; empty when it is not known.
    std::string busIdOf(const std::string& id);

private:
    struct Peer {
        TWServerInfo info;
        std::string busId;
        bool systemServer = false;
        bool reachable = false;
        uint64_t heard = 0;
    };
    struct Client {
        bool mine = false;
        bool silent = false;
        uint64_t heard = 0;
    };

    void hearServer(const std::string& from, const Frame& frame, uint64_t now);
    void hearClient(const std::string& from, const Frame& frame, uint64_t now);
    uint64_t judge(uint64_t now, bool& changed);
    Peer* serverAt(const std::string& busId);
    TWServerInfo seen(const Peer& peer);
    ServerList listLocked(const std::string& systemId);
    std::string masterLocked();
    void announceTo(const std::vector<std::string>& peers);
    void announce();
    void pushListTo(const std::vector<std::string>& clients);
    std::vector<std::string> clients();

    const std::shared_ptr<Bus> mBus;
    const std::string mBusId;
    const bool mSystemServer;
    TWServerInfo mSelf;
    std::mutex mMutex;
    std::map<std::string, Peer> mPeers;            ///< by server id
    std::map<std::string, std::string> mServerOf;  ///< by id on the bus: the server id that it speaks for
    std::map<std::string, Client> mClients;        ///< by id on the bus
    Beat mBeat;
    uint64_t mNextAnnounce;
};

}  // namespace Tarnwick::MQ
