// Two connected ends of a stream, for a target that plays the server to a client of its own thread.
#pragma once

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string_view>

namespace streams {

using End = int;
constexpr End kNone = -1;

/// What is sent at one end can be read at the other at once. Reading and writing here never wait.
inline bool makePair(End& here, End& there) {
    int pair[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) return false;
    ::fcntl(pair[0], F_SETFL, O_NONBLOCK);
    here = pair[0];
    there = pair[1];
    return true;
}

inline bool send(End here, End, std::string_view piece) {
    return ::send(here, piece.data(), piece.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(piece.size());
}

/// False also for an end that is closed.
inline bool hasUnread(End there) {
    int unread = 0;
    return ::ioctl(there, FIONREAD, &unread) == 0 && unread != 0;
}

/// Reads and drops what the other end has sent.
inline void drain(End here) {
    char bytes[4096];
    while (::recv(here, bytes, sizeof bytes, MSG_DONTWAIT) > 0) {
    }
}

inline void close(End here) { ::close(here); }

/// Closes one end. The other learns of it at once.
inline void closeBefore(End here, End) { ::close(here); }

}  // namespace streams
