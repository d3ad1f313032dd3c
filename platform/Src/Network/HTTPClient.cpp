#include "Public/Network/HTTPClient.h"

#include "Network/HTTPExchange.h"
#include "Network/IOWorkerImpl.h"

namespace Public::Network {

namespace {

struct UrlParts {
    UrlParts() : handle(curl_url()) {}
    ~UrlParts() { curl_url_cleanup(handle); }
    UrlParts(const UrlParts&) = delete;
    UrlParts& operator=(const UrlParts&) = delete;

    std::string get(CURLUPart part) const {
        char* text = nullptr;
        if (curl_url_get(handle, part, &text, 0) != CURLUE_OK) return {};
        std::string result = text;
        curl_free(text);
        return result;
    }
    CURLU* handle;
};

/// The address as the transfer library takes it; empty when it is none of HTTP or HTTPS.
std::string acceptable(const std::string& url) {
    if (url.find('\0') != std::string::npos) return {};
    const UrlParts parts;
    if (curl_url_set(parts.handle, CURLUPART_URL, url.c_str(), CURLU_URLENCODE) != CURLUE_OK) return {};
    const std::string scheme = parts.get(CURLUPART_SCHEME);
    if ((scheme != "http" && scheme != "https") || parts.get(CURLUPART_HOST).empty()) return {};
    return parts.get(CURLUPART_URL);
}

/// A token of RFC 9110.
bool isMethod(const std::string& method) {
    static constexpr std::string_view kOthers = "!#$%&'*+-.^_`|~";
    return !method.empty() && std::all_of(method.begin(), method.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || kOthers.find(c) != std::string_view::npos;
    });
}

bool isOneLine(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

}  // namespace

HTTPClient::HTTPClient(const std::shared_ptr<IOWorker>& worker, const std::string& userAgent)
    : mWorker(worker), mUserAgent(userAgent) {}

HTTPClient::~HTTPClient() {
    if (mExchange) mExchange->abandon();
}

bool HTTPClient::request(const std::shared_ptr<HTTPClientRequest>& request, const Completion& callback,
                         const std::string&) {
    if (!mWorker || !request || mExchange || !isMethod(request->method()) || !isOneLine(mUserAgent)) return false;
    const std::string url = acceptable(request->url().text());
    if (url.empty()) return false;
    auto exchange = std::make_shared<Exchange>(mWorker->impl()->nextLoop(), url, mUserAgent, request, callback,
                                               weak_from_this());
    mExchange = exchange;
    if (exchange->start()) return true;
    mExchange.reset();
    return false;
}

}  // namespace Public::Network
