#include "Public/Network/HTTPClient.h"

#include <algorithm>

#include "Network/Exchange.h"
#include "Network/HttpAddress.h"
#include "Network/IOWorkerImpl.h"

namespace Public::Network {

namespace {

bool isControl(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return code < 0x20 || code == 0x7F;
}

/// A token of RFC 9110, so that nothing else can slip into the request line.
bool isMethod(const std::string& text) {
    constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z') || kMarks.find(letter) != std::string_view::npos;
    });
}

}  // namespace

HTTPClient::HTTPClient(const std::shared_ptr<IOWorker>& worker, const std::string& userAgent)
    : mWorker(worker ? worker->impl() : nullptr), mUserAgent(userAgent) {}

HTTPClient::~HTTPClient() {
    if (!mExchange) return;
    mExchange->end();
    mWorker->wake();
}

bool HTTPClient::request(const std::shared_ptr<HTTPClientRequest>& request, const Completion& callback,
                         const std::string&) {
    if (!mWorker || !request || !isMethod(request->method())) return false;
    if (std::any_of(mUserAgent.begin(), mUserAgent.end(), isControl)) return false;
    const std::string address = httpAddress(request->url().text());
    if (address.empty()) return false;

    std::lock_guard lock(mMutex);
    if (mExchange) return false;
    const auto exchange = std::make_shared<Exchange>(weak_from_this(), request, callback, address, mUserAgent);
    mExchange = exchange;
    if (mWorker->submit(exchange)) return true;
    exchange->end();
    mExchange.reset();
    return false;
}

}  // namespace Public::Network
