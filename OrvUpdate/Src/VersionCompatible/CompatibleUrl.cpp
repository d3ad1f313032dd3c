#include "VersionCompatible/CompatibleUrl.h"

namespace Tarnwick::OrvUpdate {

std::string buildCompatibleUrl(const std::string& scheme, const Public::Network::NetAddr& address) {
    std::string host = address.getIP();
    // An IPv6 address stands in brackets, since it holds colons itself (RFC 3986, section 3.2.2).
    if (host.find(':') != std::string::npos && host.front() != '[') host = "[" + host + "]";
    return scheme + host + ":" + std::to_string(address.getPort()) + "/VersionCompatible";
}

}  // namespace Tarnwick::OrvUpdate
