// A peer that speaks TLS on loopback, with a certificate of the test's.
#pragma once

#include <string>
#include <thread>

#include "CertificateMaker.h"
#include "Sockets.h"
#include "TempDir.h"

namespace support {

/// Serves one connection with a page that says "ok".
class TlsServer {
public:
    /// Throws std::runtime_error when it does not come up.
    explicit TlsServer(const Credential& credential);
    ~TlsServer();
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    /// The address of the page, by that name of this machine.
    std::string url(const std::string& host = "localhost") const {
        return "https://" + host + ":" + std::to_string(mPort) + "/page";
    }

private:
    TempDir mDirectory;
    uint16_t mPort = 0;
    sockets::Socket mWords;  // what the server says; it would not outlive their reader
    std::thread mServing;
};

}  // namespace support
