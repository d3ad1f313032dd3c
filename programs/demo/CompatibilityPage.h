// The page on which a server offers its compatibility document.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
}

/// "/VersionCompatible" on loopback. Serves on threads of its own until it is destroyed.
class CompatibilityPage {
public:
    explicit CompatibilityPage(std::string document);
    ~CompatibilityPage();
    CompatibilityPage(const CompatibilityPage&) = delete;
    CompatibilityPage& operator=(const CompatibilityPage&) = delete;

    uint16_t port() const { return static_cast<uint16_t>(mPort); }
    /// How often the document has been asked for.
    int served() const { return mServed; }

private:
    const std::string mDocument;
    std::unique_ptr<httplib::Server> mServer;
    std::atomic<int> mServed{0};
    int mPort = 0;
    std::thread mThread;
};
