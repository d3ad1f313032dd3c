// One request of a test, and what became of it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "Public/Network/HTTPClient.h"

namespace support {

using Public::Base::SharedBuffer;
using Public::Base::URL;
using Public::Network::HTTPCacheType_Memory;
using Public::Network::HTTPCacheType_Stream;
using Public::Network::HTTPClient;
using Public::Network::HTTPClientRequest;
using Public::Network::HTTPClientResponse;
using Public::Network::HTTPHeader;
using Public::Network::IOWorker;
using Public::Network::Socket;

/// Happens once; any number of threads may wait for it.
class Event {
public:
    void set() {
        std::lock_guard lock(mMutex);
        mSet = true;
        mChanged.notify_all();
    }
    bool isSet() const {
        std::lock_guard lock(mMutex);
        return mSet;
    }
    /// @return false when it has not happened within the patience of a test
    bool wait() const {
        std::unique_lock lock(mMutex);
        return mChanged.wait_for(lock, std::chrono::seconds(30), [this] { return mSet; });
    }

private:
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    bool mSet = false;
};

inline std::shared_ptr<HTTPClientRequest> makeRequest(const std::string& url, int cacheType = HTTPCacheType_Memory,
                                                      const std::string& method = "GET") {
    auto request = std::make_shared<HTTPClientRequest>(method, URL(url, false), cacheType);
    request->timeout() = 20000;
    return request;
}

/// Settings, then `start`, then `wait`, then the outcome.
class Fetch {
public:
    explicit Fetch(const std::string& url, int cacheType = HTTPCacheType_Memory, const std::string& method = "GET")
        : mRequest(makeRequest(url, cacheType, method)) {
        if (cacheType == HTTPCacheType_Stream) stream([](const std::string&) {});
    }

    Fetch& timeout(uint32_t milliseconds) {
        mRequest->timeout() = milliseconds;
        return *this;
    }
    Fetch& agent(const std::string& name) {
        mAgent = name;
        return *this;
    }
    Fetch& body(const std::string& bytes) {
        mRequest->content()->write(SharedBuffer(bytes));
        return *this;
    }
    /// The body is streamed, and each piece is told to the function.
    Fetch& stream(std::function<void(const std::string&)> onPiece) {
        mRequest->recvCallback() = [this, onPiece](const std::weak_ptr<Socket>&,
                                                   const std::shared_ptr<HTTPHeader>& header, const char* data,
                                                   unsigned int length) {
            pieceHeader = header;
            streamed.append(data, length);
            onPiece(std::string(data, length));
        };
        return *this;
    }

    bool start(const std::shared_ptr<IOWorker>& worker) {
        client = std::make_shared<HTTPClient>(worker, mAgent);
        return client->request(
            mRequest,
            [this](const auto&, const auto&, const std::shared_ptr<HTTPClientResponse>& given) {
                ++completions;
                thread = std::this_thread::get_id();
                response = given;
                done.set();
            },
            "");
    }
    Fetch& run(const std::shared_ptr<IOWorker>& worker) {
        if (start(worker)) done.wait();
        return *this;
    }

    int status() const { return response ? response->header()->statuscode : -1; }
    std::string content() const { return response ? response->content()->readAll().toStdString() : "no response"; }
    std::string field(const std::string& name, unsigned int index = 0) const {
        return response ? response->header()->header(name, index).toString() : "no response";
    }

    std::shared_ptr<HTTPClient> client;
    Event done;
    std::atomic<int> completions{0};
    std::thread::id thread;
    std::shared_ptr<HTTPClientResponse> response;
    std::shared_ptr<HTTPHeader> pieceHeader;
    std::string streamed;

private:
    std::shared_ptr<HTTPClientRequest> mRequest;
    std::string mAgent = "TestAgent";
};

}  // namespace support
