// The part that the test servers share: a listener on 127.0.0.1, a thread a connection, and a record of the requests.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Sockets.h"

namespace support {

/// A request as it came over the wire.
struct HttpRequest {
    std::string method;
    std::string target;  ///< with its query
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    size_t connection = 0;  ///< number of the connection that it came on, from 1

    /// The target without its query.
    std::string path() const;
    /// First value of the field, in any case; empty when there is none.
    std::string header(std::string_view name) const;
    size_t headerCount(std::string_view name) const;
};

/// One accepted connection, used by its own thread only.
class LoopbackConnection {
public:
    LoopbackConnection(sockets::Socket socket, size_t number) : mSocket(socket), mNumber(number) {}

    /// @return false when the peer is gone or does not speak HTTP
    bool readRequest(HttpRequest& request);
    /// @return false when the peer is gone
    bool send(std::string_view bytes);
    /// Returns when the peer closes, or the server ends.
    void waitForClose();
    /// Lets the close of the connection be a reset.
    void resetAtClose();

private:
    sockets::Socket mSocket;
    size_t mNumber;
    std::string mUnread;
};

/// Listens from construction to `stop`. A derived class gives its answers with `begin` at the end of its constructor,
/// so that no thread sees it half made, and calls `stop` in its destructor.
class LoopbackServer {
public:
    LoopbackServer();
    virtual ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    uint16_t port() const { return mPort; }
    /// "127.0.0.1:port"
    std::string host() const;
    /// "http://127.0.0.1:port" and the path.
    std::string url(const std::string& path) const;

    std::vector<HttpRequest> requests() const;
    /// How many asked for that path, whatever their query.
    size_t requestCount(const std::string& path) const;
    /// @return false when fewer than `count` requests came within the patience of a test
    bool waitForRequests(size_t count) const;
    /// @return false when a connection is still open after the patience of a test
    bool waitForNoConnection() const;

    /// How long tests wait for what must happen.
    static constexpr std::chrono::seconds kPatience{20};

protected:
    /// @param service answers one connection, on a thread of its own
    void begin(std::function<void(LoopbackConnection&)> service);
    void record(const HttpRequest& request);
    /// Ends the listener and every connection; returns when their threads have.
    void stop();
    bool stopping() const;

private:
    void accept();
    void run(sockets::Socket socket, size_t number);

    uint16_t mPort = 0;
    sockets::Socket mListener;  // after the port, which it sets
    std::function<void(LoopbackConnection&)> mService;
    std::thread mAcceptor;
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    bool mStopping = false;
    std::set<sockets::Socket> mOpen;
    std::list<std::thread> mThreads;
    std::vector<HttpRequest> mRequests;
};

}  // namespace support
