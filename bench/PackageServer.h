// A server on the loopback that has one large body.
#pragma once

#include <cstdint>
#include <string>
#include <thread>

namespace bench {

/// Gives every connection the same body, one connection after another, until it ends.
class PackageServer {
public:
    static constexpr uint64_t kBodyBytes = uint64_t{1} << 30;

    PackageServer();
    ~PackageServer();
    PackageServer(const PackageServer&) = delete;
    PackageServer& operator=(const PackageServer&) = delete;

    std::string url() const;

private:
    void serve();
    void answer(int peer) const;

    const int mListener;
    const std::string mPiece;
    uint16_t mPort = 0;
    std::thread mThread;
};

}  // namespace bench
