#include "PackageServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Bench.h"

namespace bench {

namespace {

bool send(int peer, const std::string& bytes) {
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t done = ::send(peer, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (done <= 0) return false;
        sent += static_cast<size_t>(done);
    }
    return true;
}

bool receiveHead(int peer) {
    std::string head;
    for (char buffer[4096]; head.find("\r\n\r\n") == std::string::npos;) {
        const ssize_t got = ::recv(peer, buffer, sizeof buffer, 0);
        if (got <= 0) return false;
        head.append(buffer, static_cast<size_t>(got));
    }
    return true;
}

}  // namespace

PackageServer::PackageServer() : mListener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), mPiece(1 << 20, 'x') {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* any = reinterpret_cast<sockaddr*>(&address);
    require(::bind(mListener, any, length) == 0 && ::listen(mListener, 4) == 0 &&
                ::getsockname(mListener, any, &length) == 0,
            "no server socket");
    mPort = ntohs(address.sin_port);
    mThread = std::thread([this] { serve(); });
}

PackageServer::~PackageServer() {
    ::shutdown(mListener, SHUT_RDWR);
    mThread.join();
    ::close(mListener);
}

std::string PackageServer::url() const { return "http://127.0.0.1:" + std::to_string(mPort) + "/package.exe"; }

void PackageServer::serve() {
    for (int peer; (peer = ::accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        answer(peer);
        ::close(peer);
    }
}

void PackageServer::answer(int peer) const {
    if (!receiveHead(peer) || !send(peer,
                                    "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                                    "Connection: close\r\nContent-Length: " +
                                        std::to_string(kBodyBytes) + "\r\n\r\n")) {
        return;
    }
    for (uint64_t sent = 0; sent < kBodyBytes; sent += mPiece.size()) {
        if (!send(peer, mPiece)) return;
    }
}

}  // namespace bench
