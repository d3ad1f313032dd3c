// One request on its way, and the response as it comes in.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "Network/IOLoop.h"
#include "Public/Network/HTTPClient.h"

namespace Public::Network {

/// Held by its client and, while it runs, by its loop. Everything but abandon runs on the loop's thread.
class HTTPClient::Exchange : public IOTransfer, public std::enable_shared_from_this<Exchange> {
public:
    /// @param url as the transfer library takes it
    Exchange(std::shared_ptr<IOLoop> loop, const std::string& url, const std::string& userAgent,
             std::shared_ptr<HTTPClientRequest> request, const Completion& completion, std::weak_ptr<HTTPClient> client);
    ~Exchange() override;

    bool start();
    /// No callback begins any more; waits for one that runs on another thread.
    void abandon();

    CURL* easy() override { return mEasy; }
    Instant expires() const override;
    void finished(CURLcode result, bool timedOut) override;

private:
    static size_t onHeader(char* data, size_t size, size_t count, void* self);
    static size_t onBody(char* data, size_t size, size_t count, void* self);
    static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);
    void configure(const std::string& url, const std::string& userAgent);
    void configureBody();
    void takeHeaderLine(const std::string& line);
    bool takeBody(const char* data, size_t length);
    std::shared_ptr<HTTPClientResponse> makeResponse(CURLcode result, bool timedOut) const;
    /// Takes the right to call back. @return false when the exchange was abandoned
    bool enter();
    void leave();
    void moved() { mLastMoved = std::chrono::steady_clock::now(); }

    const std::shared_ptr<IOLoop> mLoop;
    CURL* const mEasy;
    curl_slist* mFields = nullptr;
    std::shared_ptr<HTTPClientRequest> mRequest;
    Completion mCompletion;
    const std::weak_ptr<HTTPClient> mClient;
    std::shared_ptr<HTTPHeader> mHeader = std::make_shared<HTTPHeader>();
    std::string mBody;
    Instant mLastMoved;
    curl_off_t mSent = 0;

    std::mutex mMutex;  // guards what follows
    std::condition_variable mLeft;
    bool mAbandoned = false;
    std::thread::id mInside;  // the thread that is in a callback
};

}  // namespace Public::Network
