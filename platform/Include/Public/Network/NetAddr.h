// A network address.
#pragma once

#include <cstdint>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Network {

/// Plain value.
class ORV_PLATFORM_API NetAddr {
public:
    /// Not valid.
    NetAddr() = default;
    /// @param ip IPv4 or IPv6 in text form, or a host name   @param port 1 to 65535
    NetAddr(const std::string& ip, uint16_t port) : mIp(ip), mPort(port) {}

    /// True when it has a host and a port.
    bool isValid() const { return !mIp.empty() && mPort != 0; }
    std::string getIP() const { return mIp; }
    uint16_t getPort() const { return mPort; }

private:
    std::string mIp;
    uint16_t mPort = 0;
};

}  // namespace Public::Network
