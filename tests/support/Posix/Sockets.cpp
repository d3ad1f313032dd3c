#include "Sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace support::sockets {
namespace {

int number(Socket socket) { return static_cast<int>(socket); }

sockaddr_in loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void sendAtOnce(int socket) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

}  // namespace

Socket listenOnLoopback(uint16_t& port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || ::bind(listener, generic, length) != 0 || ::listen(listener, 128) != 0 ||
        ::getsockname(listener, generic, &length) != 0) {
        throw std::runtime_error("no listener on loopback");
    }
    port = ntohs(address.sin_port);
    return listener;
}

Socket acceptPeer(Socket listener) {
    for (;;) {
        const int socket = ::accept4(number(listener), nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0) {
            sendAtOnce(socket);
            return socket;
        }
        if (errno != EINTR && errno != ECONNABORTED) return kNone;
    }
}

void endAccepting(Socket listener) { shutDown(listener); }

Socket connectToLoopback(uint16_t port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    if (socket < 0 || ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("no connection on loopback");
    }
    sendAtOnce(socket);
    return socket;
}

size_t receive(Socket socket, char* buffer, size_t length) {
    const auto got = ::recv(number(socket), buffer, length, 0);
    return got > 0 ? static_cast<size_t>(got) : 0;
}

bool sendAll(Socket socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto sent = ::send(number(socket), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

void shutDown(Socket socket) { ::shutdown(number(socket), SHUT_RDWR); }

void resetAtClose(Socket socket) {
    const linger abort{1, 0};
    ::setsockopt(number(socket), SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
}

void close(Socket socket) { ::close(number(socket)); }

}  // namespace support::sockets
