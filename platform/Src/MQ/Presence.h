// Who is there, as the servers tell it.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Tarnwick/MQ/TWServerInfo.h"

namespace Tarnwick::MQ {

/// The servers that a node has heard of. May be called from any thread; times are milliseconds of the node's clock.
class Presence {
public:
    static constexpr uint64_t kAnnounceEveryMs = 500;
    static constexpr uint64_t kSilentAfterMs = 1750;

    /// A server told about itself. @return true when it was not known, or not reachable, until now
    bool heard(const TWServerInfo& info, const std::string& node, uint64_t now);
    /// This node's own record, which is never silent.
    void own(const TWServerInfo& info, const std::string& node);
    /// A server told about all servers.
    void replace(const ServerList& list);
    /// The link to that node failed.
    void lost(const std::string& node);

    /// All servers of a cluster, with what is known of them now. @param systemId empty for every cluster
    ServerList list(const std::string& systemId, uint64_t now) const;
    bool find(const std::string& serverId, TWServerInfo& info, uint64_t now) const;
    /// Node on which a server is reached; empty for a server that is not known.
    std::string nodeOf(const std::string& serverId) const;
    /// The reachable, ready server of the cluster with the smallest id; empty without one.
    std::string master(const std::string& systemId, uint64_t now) const;

private:
    struct Known {
        TWServerInfo info;
        std::string node;
        uint64_t heardAt = 0;
        bool told = false;  // its silence is judged by another server, or it is this node
    };
    static TWServerInfo judged(const Known& known, uint64_t now);

    mutable std::mutex mMutex;
    std::map<std::string, Known> mServers;
};

/// A server list as one text, and back.
std::string encodeServerList(const ServerList& list);
bool decodeServerList(const std::string& bytes, ServerList& list);

}  // namespace Tarnwick::MQ
