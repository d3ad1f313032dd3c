// What a client, its transfer and the completion share of one request.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "Public/Network/HTTPClient.h"

namespace Public::Network {

/// Sees to it that the callbacks of a request run one at a time, that none begins after `end`, and that the closures go
/// as soon as no callback can run any more. The fields of the request are constant and may be read on any thread.
class Exchange {
public:
    Exchange(std::weak_ptr<HTTPClient> client, std::shared_ptr<HTTPClientRequest> request,
             HTTPClient::Completion completion, std::string address, std::string userAgent);

    ~Exchange() { --sLive; }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    /// How many there are in this process: requests that are under way, or whose client is still held.
    static size_t live() { return sLive; }

    const std::string& method() const { return mMethod; }
    const std::string& address() const { return mAddress; }
    const std::string& userAgent() const { return mUserAgent; }
    uint32_t timeout() const { return mTimeout; }
    const std::string& body() const { return mContent->bytes(); }
    /// Whether the body of the response is gathered for the completion.
    bool gathers() const { return mGathers; }

    /// Hands a piece of the body to the receive callback. @return false when the exchange has ended
    bool deliver(const std::shared_ptr<HTTPHeader>& header, const char* data, unsigned int length);
    /// Calls the completion, unless the exchange has ended, and lets go of the closures.
    void complete(const std::shared_ptr<HTTPClientResponse>& response);

    /// No callback begins from now on. Waits for one that runs on another thread.
    void end();
    bool ended() const { return mEnded; }

private:
    bool enter();
    void leave();
    void dropClosures();

    static inline std::atomic<size_t> sLive{0};

    const std::string mMethod;
    const std::string mAddress;
    const std::string mUserAgent;
    const uint32_t mTimeout;
    const bool mGathers;
    const std::shared_ptr<WriteContent> mContent;
    const std::weak_ptr<HTTPClient> mClient;

    std::mutex mMutex;  // guards all below
    std::condition_variable mLeft;
    std::thread::id mInside;  // the thread of the callback that runs, if one does
    std::atomic<bool> mEnded{false};
    std::shared_ptr<HTTPClientRequest> mRequest;
    HTTPClientRequest::RecvCallback mReceive;
    HTTPClient::Completion mCompletion;
};

}  // namespace Public::Network
