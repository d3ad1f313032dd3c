// A well-behaved HTTP server on loopback, with routes that a test sets.
#pragma once

#include <functional>
#include <map>

#include "LoopbackServer.h"

namespace support {

/// All operations may be called from any thread, also while requests run. A path without a route gives 404. Routes are
/// looked up with the query first, then without it, then by the longest prefix.
class HttpFileServer : public LoopbackServer {
public:
    struct Response {
        int status = 200;
        std::string body;
        std::vector<std::pair<std::string, std::string>> headers;
    };
    using Handler = std::function<Response(const HttpRequest&)>;

    HttpFileServer();
    ~HttpFileServer() override;

    void serve(const std::string& path, std::string body, int status = 200);
    void serve(const std::string& path, Handler handler);
    /// Every path that begins so.
    void servePrefix(const std::string& prefix, Handler handler);
    void forget(const std::string& path);

    /// Responses of the path stop after their fields and the first half of the body, until `release`.
    void hold(const std::string& path);
    void release(const std::string& path);
    /// @return false when no response of the path came to its hold within the patience of a test
    bool waitForHeld(const std::string& path) const;

private:
    void answerAll(LoopbackConnection& connection);
    Response answer(const HttpRequest& request) const;
    void waitWhileHeld(const std::string& path);

    mutable std::mutex mRouteMutex;
    mutable std::condition_variable mRouteChanged;
    std::map<std::string, Handler> mRoutes;
    std::map<std::string, Handler> mPrefixes;
    std::map<std::string, int> mHolds;  // path -> responses that wait
    bool mClosing = false;
};

}  // namespace support
