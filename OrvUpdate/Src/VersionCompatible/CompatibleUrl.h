// Where a peer serves its compatibility document.
#pragma once

#include <string>

#include "Public/Network/NetAddr.h"

namespace Tarnwick::OrvUpdate {

/// @param scheme "http://" or "https://"
std::string buildCompatibleUrl(const std::string& scheme, const Public::Network::NetAddr& address);

}  // namespace Tarnwick::OrvUpdate
