// Which texts are addresses of HTTP.
#pragma once

#include <string>

namespace Public::Network {

/// @return the address as it goes over the wire: without a fragment, and with what a path or a query cannot hold
///         percent-encoded; empty when the text is not an absolute address of HTTP or HTTPS with a host
std::string httpAddress(const std::string& text);

}  // namespace Public::Network
