// The roots that TLS peers must stand under where the host has set some.
#pragma once

#include <string>

namespace Public::Network {

/// PEM text; empty when the system's roots count.
std::string trustedRoots();

}  // namespace Public::Network
