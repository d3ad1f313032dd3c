#include "HttpFileServer.h"

namespace support {

namespace {

std::string headOf(const HttpFileServer::Response& response) {
    std::string head = "HTTP/1.1 " + std::to_string(response.status) + " Status\r\n";
    for (const auto& [name, value] : response.headers) head += name + ": " + value + "\r\n";
    if (response.status != 204 && response.status != 304) {
        head += "Content-Length: " + std::to_string(response.body.size()) + "\r\n";
    }
    return head + "\r\n";
}

}  // namespace

HttpFileServer::HttpFileServer() {
    begin([this](LoopbackConnection& connection) { answerAll(connection); });
}

HttpFileServer::~HttpFileServer() {
    {
        std::lock_guard lock(mRouteMutex);
        mClosing = true;
        mRouteChanged.notify_all();
    }
    stop();
}

void HttpFileServer::serve(const std::string& path, std::string body, int status) {
    serve(path, [status, body = std::move(body)](const HttpRequest&) { return Response{status, body, {}}; });
}

void HttpFileServer::serve(const std::string& path, Handler handler) {
    std::lock_guard lock(mRouteMutex);
    mRoutes[path] = std::move(handler);
}

void HttpFileServer::servePrefix(const std::string& prefix, Handler handler) {
    std::lock_guard lock(mRouteMutex);
    mPrefixes[prefix] = std::move(handler);
}

void HttpFileServer::forget(const std::string& path) {
    std::lock_guard lock(mRouteMutex);
    mRoutes.erase(path);
}

void HttpFileServer::hold(const std::string& path) {
    std::lock_guard lock(mRouteMutex);
    mHolds.emplace(path, 0);
}

void HttpFileServer::release(const std::string& path) {
    std::lock_guard lock(mRouteMutex);
    mHolds.erase(path);
    mRouteChanged.notify_all();
}

bool HttpFileServer::waitForHeld(const std::string& path) const {
    std::unique_lock lock(mRouteMutex);
    return mRouteChanged.wait_for(lock, kPatience, [&] {
        const auto found = mHolds.find(path);
        return found != mHolds.end() && found->second > 0;
    });
}

void HttpFileServer::waitWhileHeld(const std::string& path) {
    std::unique_lock lock(mRouteMutex);
    const auto found = mHolds.find(path);
    if (found == mHolds.end()) return;
    ++found->second;
    mRouteChanged.notify_all();
    mRouteChanged.wait(lock, [&] { return mClosing || mHolds.count(path) == 0; });
}

HttpFileServer::Response HttpFileServer::answer(const HttpRequest& request) const {
    Handler handler;
    {
        std::lock_guard lock(mRouteMutex);
        auto found = mRoutes.find(request.target);
        if (found == mRoutes.end()) found = mRoutes.find(request.path());
        if (found != mRoutes.end()) {
            handler = found->second;
        } else {
            // In ascending order the longest prefix that fits comes last.
            for (const auto& [prefix, candidate] : mPrefixes) {
                if (request.target.compare(0, prefix.size(), prefix) == 0) handler = candidate;
            }
        }
    }
    return handler ? handler(request) : Response{404, "nothing here", {}};
}

void HttpFileServer::answerAll(LoopbackConnection& connection) {
    HttpRequest request;
    while (connection.readRequest(request)) {
        record(request);
        const Response response = answer(request);
        const std::string_view body = request.method == "HEAD" ? std::string_view() : std::string_view(response.body);
        const size_t half = body.size() / 2;
        if (!connection.send(headOf(response)) || !connection.send(body.substr(0, half))) return;
        waitWhileHeld(request.path());
        if (!connection.send(body.substr(half))) return;
    }
}

}  // namespace support
