// What the test servers ask of the system's sockets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace support::sockets {

/// As the system numbers them.
using Socket = intptr_t;
constexpr Socket kNone = -1;

/// A listener on 127.0.0.1. @param port is set to the one that the system chose. Throws std::runtime_error.
Socket listenOnLoopback(uint16_t& port);
/// Waits for a peer. @return kNone when the listener ends
Socket acceptPeer(Socket listener);
/// Lets acceptPeer return: with kNone, or with a peer that is nobody. The listener is still to be closed.
void endAccepting(Socket listener);

/// Throws std::runtime_error.
Socket connectToLoopback(uint16_t port);
/// Waits for bytes. @return how many came; 0 when none will
size_t receive(Socket socket, char* buffer, size_t length);
/// @return false when the peer is gone
bool sendAll(Socket socket, std::string_view bytes);
/// Ends both directions; a thread that waits in one of them returns.
void shutDown(Socket socket);
/// Lets the close be a reset.
void resetAtClose(Socket socket);
void close(Socket socket);

}  // namespace support::sockets
