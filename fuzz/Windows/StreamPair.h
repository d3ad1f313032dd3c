// Two connected ends of a stream, for a target that plays the server to a client of its own thread.
#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

#include <string_view>

namespace streams {

using End = SOCKET;
constexpr End kNone = INVALID_SOCKET;

namespace detail {

constexpr int kPatience = 2000;  // milliseconds; far more than a byte needs to its own machine

inline bool start() {
    static const bool started = [] {
        WSADATA ignored;
        return ::WSAStartup(MAKEWORD(2, 2), &ignored) == 0;
    }();
    return started;
}

inline bool listenOnLoopback(End listener, sockaddr_in& address) {
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    int length = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    return ::bind(listener, plain, length) == 0 && ::listen(listener, 1) == 0 &&
           ::getsockname(listener, plain, &length) == 0;
}

/// Until there is something to read, or the end of it.
inline void awaitReadable(End there) {
    WSAPOLLFD wanted{there, POLLRDNORM, 0};
    ::WSAPoll(&wanted, 1, kPatience);
}

}  // namespace detail

/// What is sent at one end can be read at the other at once. Reading and writing here never wait.
inline bool makePair(End& here, End& there) {
    if (!detail::start()) return false;
    const End listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    const bool listens = detail::listenOnLoopback(listener, address);
    there = ::socket(AF_INET, SOCK_STREAM, 0);
    const bool connected = listens && ::connect(there, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    here = connected ? ::accept(listener, nullptr, nullptr) : kNone;
    ::closesocket(listener);
    u_long on = 1;
    const int atOnce = 1;
    if (here != kNone && ::ioctlsocket(here, FIONBIO, &on) == 0 &&
        ::setsockopt(here, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&atOnce), sizeof atOnce) == 0) {
        return true;
    }
    ::closesocket(there);
    if (here != kNone) ::closesocket(here);
    return false;
}

inline bool send(End here, End there, std::string_view piece) {
    const int sent = ::send(here, piece.data(), static_cast<int>(piece.size()), 0);
    if (sent > 0) detail::awaitReadable(there);
    return sent == static_cast<int>(piece.size());
}

/// False also for an end that is closed.
inline bool hasUnread(End there) {
    u_long unread = 0;
    return ::ioctlsocket(there, FIONREAD, &unread) == 0 && unread != 0;
}

/// Reads and drops what the other end has sent.
inline void drain(End here) {
    char bytes[4096];
    while (::recv(here, bytes, sizeof bytes, 0) > 0) {
    }
}

inline void close(End here) { ::closesocket(here); }

/// Closes one end. The other learns of it at once.
inline void closeBefore(End here, End there) {
    ::closesocket(here);
    detail::awaitReadable(there);
}

}  // namespace streams
