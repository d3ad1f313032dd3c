#include "Network/TrustedRoots.h"

#include <mutex>

#include "Public/Network/HTTPClient.h"

namespace Public::Network {

namespace {

std::mutex sMutex;  // guards the roots

/// Never destroyed: a request may still be started while the process ends.
std::string& rootsInForce() {
    static auto& roots = *new std::string;
    return roots;
}

}  // namespace

std::string trustedRoots() {
    std::lock_guard lock(sMutex);
    return rootsInForce();
}

void HTTPClient::setTrustedRoots(const std::string& pem) {
    std::lock_guard lock(sMutex);
    rootsInForce() = pem;
}

}  // namespace Public::Network
