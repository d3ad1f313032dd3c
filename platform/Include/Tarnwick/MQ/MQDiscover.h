// The view of the cluster's system servers.
#pragma once

#include <string>

#include "Public/Base/PlatformExport.h"
#include "Tarnwick/MQ/TWServerInfo.h"

namespace Tarnwick::MQ {

class ORV_PLATFORM_API MQDiscover {
public:
    virtual ~MQDiscover() = default;
    /// Every server of that cluster, this one included; reachable or not. May be called from any thread.
    virtual ServerList getSystemServerList(const std::string& systemId) = 0;
};

}  // namespace Tarnwick::MQ
