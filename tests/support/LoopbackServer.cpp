#include "LoopbackServer.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace support {

namespace {

bool sameName(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

/// @param head lines of a request, without the blank line that ends it
bool parseHead(std::string_view head, HttpRequest& request) {
    auto end = head.find("\r\n");
    const auto first = head.substr(0, end);
    const auto afterMethod = first.find(' ');
    const auto afterTarget = first.rfind(' ');
    if (afterMethod == std::string_view::npos || afterTarget == afterMethod) return false;
    request.method = first.substr(0, afterMethod);
    request.target = first.substr(afterMethod + 1, afterTarget - afterMethod - 1);
    while (end != std::string_view::npos) {
        head.remove_prefix(end + 2);
        end = head.find("\r\n");
        const auto line = head.substr(0, end);
        const auto colon = line.find(':');
        if (colon == std::string_view::npos) continue;
        request.headers.emplace_back(line.substr(0, colon), trimmed(line.substr(colon + 1)));
    }
    return true;
}

}  // namespace

std::string HttpRequest::path() const { return target.substr(0, target.find('?')); }

std::string HttpRequest::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (sameName(key, name)) return value;
    }
    return {};
}

size_t HttpRequest::headerCount(std::string_view name) const {
    return static_cast<size_t>(
        std::count_if(headers.begin(), headers.end(), [&](const auto& field) { return sameName(field.first, name); }));
}

bool LoopbackConnection::readRequest(HttpRequest& request) {
    request = {};
    request.connection = mNumber;
    const auto receive = [this] {
        char buffer[16384];
        const size_t got = sockets::receive(mSocket, buffer, sizeof buffer);
        mUnread.append(buffer, got);
        return got > 0;
    };
    size_t end;
    while ((end = mUnread.find("\r\n\r\n")) == std::string::npos) {
        if (!receive()) return false;
    }
    if (!parseHead(std::string_view(mUnread).substr(0, end), request)) return false;
    mUnread.erase(0, end + 4);
    const size_t length = std::strtoul(request.header("Content-Length").c_str(), nullptr, 10);
    while (mUnread.size() < length) {
        if (!receive()) return false;
    }
    request.body = mUnread.substr(0, length);
    mUnread.erase(0, length);
    return true;
}

bool LoopbackConnection::send(std::string_view bytes) { return sockets::sendAll(mSocket, bytes); }

void LoopbackConnection::waitForClose() {
    char buffer[1024];
    while (sockets::receive(mSocket, buffer, sizeof buffer) > 0) {
    }
}

void LoopbackConnection::resetAtClose() { sockets::resetAtClose(mSocket); }

LoopbackServer::LoopbackServer() : mListener(sockets::listenOnLoopback(mPort)) {}

void LoopbackServer::begin(std::function<void(LoopbackConnection&)> service) {
    mService = std::move(service);
    mAcceptor = std::thread([this] { accept(); });
}

LoopbackServer::~LoopbackServer() { stop(); }

std::string LoopbackServer::host() const { return "127.0.0.1:" + std::to_string(mPort); }

std::string LoopbackServer::url(const std::string& path) const { return "http://" + host() + path; }

void LoopbackServer::accept() {
    size_t number = 0;
    for (;;) {
        const sockets::Socket socket = sockets::acceptPeer(mListener);
        if (socket == sockets::kNone) return;
        std::lock_guard lock(mMutex);
        if (mStopping) {
            sockets::close(socket);
            return;
        }
        mOpen.insert(socket);
        mThreads.emplace_back([this, socket, id = ++number] { run(socket, id); });
    }
}

void LoopbackServer::run(sockets::Socket socket, size_t number) {
    LoopbackConnection connection(socket, number);
    mService(connection);
    std::lock_guard lock(mMutex);
    mOpen.erase(socket);
    sockets::close(socket);
    mChanged.notify_all();
}

void LoopbackServer::stop() {
    std::list<std::thread> threads;
    {
        std::lock_guard lock(mMutex);
        if (mStopping) return;
        mStopping = true;
        for (const auto socket : mOpen) sockets::shutDown(socket);
        mChanged.notify_all();
    }
    if (mAcceptor.joinable()) {
        sockets::endAccepting(mListener);
        mAcceptor.join();
    }
    sockets::close(mListener);
    {
        std::lock_guard lock(mMutex);
        threads.swap(mThreads);
    }
    for (auto& thread : threads) thread.join();
}

bool LoopbackServer::stopping() const {
    std::lock_guard lock(mMutex);
    return mStopping;
}

void LoopbackServer::record(const HttpRequest& request) {
    std::lock_guard lock(mMutex);
    mRequests.push_back(request);
    mChanged.notify_all();
}

std::vector<HttpRequest> LoopbackServer::requests() const {
    std::lock_guard lock(mMutex);
    return mRequests;
}

size_t LoopbackServer::requestCount(const std::string& path) const {
    std::lock_guard lock(mMutex);
    return static_cast<size_t>(std::count_if(mRequests.begin(), mRequests.end(),
                                             [&](const HttpRequest& request) { return request.path() == path; }));
}

bool LoopbackServer::waitForRequests(size_t count) const {
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, kPatience, [&] { return mRequests.size() >= count; });
}

bool LoopbackServer::waitForNoConnection() const {
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, kPatience, [&] { return mOpen.empty(); });
}

}  // namespace support
