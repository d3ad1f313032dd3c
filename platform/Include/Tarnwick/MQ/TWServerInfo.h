// What is known of a server of the cluster.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Public/Base/PlatformExport.h"
#include "Public/Network/NetAddr.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

/// As a server announces itself, and as its peers see it.
struct ORV_PLATFORM_API TWProtoServerRecvInfo : TWPacket {
    std::string serverId;
    std::string systemId;
    std::string version;     ///< text form
    std::string addresses;   ///< "ip port" lines of its HTTP service
    bool reachable = false;  ///< heard of within 1.75 seconds, and its link has not failed since
    bool ready = false;      ///< serves requests

    const char* typeName() const override { return "TWProtoServerRecvInfo"; }
    uint64_t typeId() const override { return 0x34143257d999eff5ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;
};

/// Keeps name and identifier of its base.
struct ORV_PLATFORM_API TWServerInfo : TWProtoServerRecvInfo {
    /// Its first address; not valid when it announces none.
    Public::Network::NetAddr getServerAddr() const;
};

/// What a system server publishes about itself.
struct TWProtoOrvSystemNotify_v2 {
    std::string systemId;  ///< id of the cluster
    std::string serverId;  ///< this node's server id
};

}  // namespace Tarnwick::Protocol

namespace Tarnwick::MQ {
using Tarnwick::Protocol::TWProtoOrvSystemNotify_v2;
using Tarnwick::Protocol::TWServerInfo;
/// By server id, in ascending byte order.
using ServerList = std::map<std::string, TWServerInfo>;
}  // namespace Tarnwick::MQ
