#include "Sockets.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <stdexcept>

namespace support::sockets {
namespace {

SOCKET number(Socket socket) { return static_cast<SOCKET>(socket); }

/// The library stays started until the process ends.
void startOnce() {
    static const int failure = [] {
        WSADATA data;
        return ::WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (failure != 0) throw std::runtime_error("no sockets");
}

sockaddr_in loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    address.sin_port = ::htons(port);
    return address;
}

/// One that programs started meanwhile do not inherit.
SOCKET newSocket() {
    startOnce();
    return ::WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                        WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
}

void sendAtOnce(SOCKET socket) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
}

int piece(size_t length) { return static_cast<int>(std::min<size_t>(length, 1U << 20)); }

}  // namespace

Socket listenOnLoopback(uint16_t& port) {
    const SOCKET listener = newSocket();
    sockaddr_in address = loopback(0);
    int length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (listener == INVALID_SOCKET || ::bind(listener, generic, length) != 0 || ::listen(listener, 128) != 0 ||
        ::getsockname(listener, generic, &length) != 0) {
        throw std::runtime_error("no listener on loopback");
    }
    port = ::ntohs(address.sin_port);
    return static_cast<Socket>(listener);
}

Socket acceptPeer(Socket listener) {
    for (;;) {
        const SOCKET socket = ::accept(number(listener), nullptr, nullptr);
        if (socket != INVALID_SOCKET) {
            sendAtOnce(socket);
            return static_cast<Socket>(socket);
        }
        if (::WSAGetLastError() != WSAECONNRESET) return kNone;  // a peer that left before it was let in
    }
}

void endAccepting(Socket listener) {
    // A shutdown wakes nobody here, and a close while another thread accepts could hit the next socket of that number.
    sockaddr_in address{};
    int length = sizeof address;
    if (::getsockname(number(listener), reinterpret_cast<sockaddr*>(&address), &length) == 0) {
        close(connectToLoopback(::ntohs(address.sin_port)));
    }
}

Socket connectToLoopback(uint16_t port) {
    const SOCKET socket = newSocket();
    const sockaddr_in address = loopback(port);
    if (socket == INVALID_SOCKET ||
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("no connection on loopback");
    }
    sendAtOnce(socket);
    return static_cast<Socket>(socket);
}

size_t receive(Socket socket, char* buffer, size_t length) {
    const int got = ::recv(number(socket), buffer, piece(length), 0);
    return got > 0 ? static_cast<size_t>(got) : 0;
}

bool sendAll(Socket socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const int sent = ::send(number(socket), bytes.data(), piece(bytes.size()), 0);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

void shutDown(Socket socket) {
    // No wait begins after the first call, and those that had begun end with the second.
    ::shutdown(number(socket), SD_BOTH);
    ::CancelIoEx(reinterpret_cast<HANDLE>(socket), nullptr);
}

void resetAtClose(Socket socket) {
    const linger abort{1, 0};
    ::setsockopt(number(socket), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&abort), sizeof abort);
}

void close(Socket socket) { ::closesocket(number(socket)); }

}  // namespace support::sockets
