// One exchange on the wire.
#pragma once

#include <curl/curl.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Network/Exchange.h"

namespace Public::Network {

/// A response without fields or body, for a request that failed.
std::shared_ptr<HTTPClientResponse> failedResponse(int status);

/// Lives on the thread of its loop, from the start of the exchange to its end.
class Transfer {
public:
    explicit Transfer(std::shared_ptr<Exchange> exchange);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Null when curl refuses the request.
    CURL* easy() const { return mEasy; }
    const std::shared_ptr<Exchange>& exchange() const { return mExchange; }

    /// A byte moves. Does not count while the connection is being made, since that as a whole has the time-out.
    void noteMove();
    /// When the exchange has timed out if nothing moves; none without a time-out.
    std::optional<std::chrono::steady_clock::time_point> deadline() const;
    std::shared_ptr<HTTPClientResponse> response(CURLcode result);

private:
    static size_t onHeader(const char* text, size_t one, size_t length, void* transfer) noexcept;
    static size_t onBody(char* data, size_t one, size_t length, void* transfer) noexcept;
    static int onConnected(void* transfer, char* ip, char* localIp, int port, int localPort) noexcept;

    bool setOptions();
    bool setRoots();
    bool setAddress();
    bool setMethod();
    bool setCallbacks();
    bool gather(const char* data, size_t length);
    const std::shared_ptr<HTTPHeader>& header();
    bool lengthHolds();

    const std::shared_ptr<Exchange> mExchange;
    CURL* mEasy;
    curl_slist* mFields = nullptr;
    std::shared_ptr<HTTPHeader> mHeader;  // of the final response, once its body has begun
    std::string mBody;
    uint64_t mBodyBytes = 0;  // received, gathered or not
    size_t mHeaderBytes = 0;
    bool mHeaderWhole = false;  // of the newest response
    bool mConnected = false;
    std::chrono::steady_clock::time_point mLastMove;
};

}  // namespace Public::Network
