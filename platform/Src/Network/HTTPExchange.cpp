#include "Network/HTTPExchange.h"

namespace Public::Network {

namespace {

constexpr size_t kLongestGathered = size_t{64} << 20;
constexpr long kMostRedirects = 5;
constexpr long kBufferSize = 512 * 1024;
constexpr int kStatusTimeout = 408;

}  // namespace

HTTPClient::Exchange::Exchange(std::shared_ptr<IOLoop> loop, const std::string& url, const std::string& userAgent,
                               std::shared_ptr<HTTPClientRequest> request, const Completion& completion,
                               std::weak_ptr<HTTPClient> client)
    : mLoop(std::move(loop)),
      mEasy(curl_easy_init()),
      mRequest(std::move(request)),
      mCompletion(completion),
      mClient(std::move(client)) {
    moved();
    if (mEasy != nullptr) configure(url, userAgent);
}

HTTPClient::Exchange::~Exchange() {
    if (mEasy != nullptr) curl_easy_cleanup(mEasy);
    curl_slist_free_all(mFields);
}

void HTTPClient::Exchange::configure(const std::string& url, const std::string& userAgent) {
    curl_easy_setopt(mEasy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(mEasy, CURLOPT_USERAGENT, userAgent.c_str());
    curl_easy_setopt(mEasy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(mEasy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(mEasy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(mEasy, CURLOPT_MAXREDIRS, kMostRedirects);
    curl_easy_setopt(mEasy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    curl_easy_setopt(mEasy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(mEasy, CURLOPT_PROXY, "");  // the environment has no say
    curl_easy_setopt(mEasy, CURLOPT_BUFFERSIZE, kBufferSize);
    // Silence is judged by expires(); the library's own limit on connecting would come first.
    curl_easy_setopt(mEasy, CURLOPT_CONNECTTIMEOUT_MS, long{mRequest->timeout() == 0 ? 86400000L : 2L * mRequest->timeout()});
    curl_easy_setopt(mEasy, CURLOPT_HEADERFUNCTION, &Exchange::onHeader);
    curl_easy_setopt(mEasy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(mEasy, CURLOPT_WRITEFUNCTION, &Exchange::onBody);
    curl_easy_setopt(mEasy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(mEasy, CURLOPT_XFERINFOFUNCTION, &Exchange::onProgress);
    curl_easy_setopt(mEasy, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(mEasy, CURLOPT_NOPROGRESS, 0L);
    configureBody();
}

void HTTPClient::Exchange::configureBody() {
    const std::string& method = mRequest->method();
    const std::string& body = mRequest->content()->bytes();
    if (!body.empty()) {
        curl_easy_setopt(mEasy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        curl_easy_setopt(mEasy, CURLOPT_POSTFIELDS, body.data());
        for (const char* field : {"Content-Type:", "Expect:"}) mFields = curl_slist_append(mFields, field);
        curl_easy_setopt(mEasy, CURLOPT_HTTPHEADER, mFields);
    }
    if (method == "HEAD") curl_easy_setopt(mEasy, CURLOPT_NOBODY, 1L);
    if (method != "GET" || !body.empty()) curl_easy_setopt(mEasy, CURLOPT_CUSTOMREQUEST, method.c_str());
}

bool HTTPClient::Exchange::start() { return mEasy != nullptr && mLoop->add(shared_from_this()); }

void HTTPClient::Exchange::abandon() {
    {
        std::unique_lock lock(mMutex);
        mAbandoned = true;
        mLeft.wait(lock, [this] { return mInside == std::thread::id() || mInside == std::this_thread::get_id(); });
    }
    mLoop->remove(shared_from_this());
}

bool HTTPClient::Exchange::enter() {
    std::lock_guard lock(mMutex);
    if (mAbandoned) return false;
    mInside = std::this_thread::get_id();
    return true;
}

void HTTPClient::Exchange::leave() {
    {
        std::lock_guard lock(mMutex);
        mInside = std::thread::id();
    }
    mLeft.notify_all();
}

IOTransfer::Instant HTTPClient::Exchange::expires() const {
    if (!mRequest || mRequest->timeout() == 0) return Instant::max();
    return mLastMoved + std::chrono::milliseconds(mRequest->timeout());
}

size_t HTTPClient::Exchange::onHeader(char* data, size_t size, size_t count, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    exchange.moved();
    exchange.takeHeaderLine(std::string(data, size * count));
    return size * count;
}

void HTTPClient::Exchange::takeHeaderLine(const std::string& line) {
    if (line.starts_with("HTTP/")) {
        // A new response: what came before was a redirect, or news that it is under way.
        mHeader = std::make_shared<HTTPHeader>();
        long status = 0;
        curl_easy_getinfo(mEasy, CURLINFO_RESPONSE_CODE, &status);
        mHeader->statuscode = static_cast<int>(status);
        return;
    }
    const size_t colon = line.find(':');
    if (colon == std::string::npos) return;
    const size_t begin = line.find_first_not_of(" \t", colon + 1);
    const size_t end = line.find_last_not_of(" \t\r\n");
    const bool empty = begin == std::string::npos || end < begin;
    mHeader->add(line.substr(0, colon), empty ? std::string() : line.substr(begin, end - begin + 1));
}

size_t HTTPClient::Exchange::onBody(char* data, size_t size, size_t count, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    const bool taken = exchange.takeBody(data, size * count);
    exchange.moved();
    return taken ? size * count : 0;
}

bool HTTPClient::Exchange::takeBody(const char* data, size_t length) {
    if (mRequest->recvCallback()) {
        if (!enter()) return false;
        mRequest->recvCallback()({}, mHeader, data, static_cast<unsigned int>(length));
        leave();
        return true;
    }
    if (mRequest->cacheType() == HTTPCacheType_Stream) return true;
    if (mBody.size() + length > kLongestGathered) return false;
    mBody.append(data, length);
    return true;
}

int HTTPClient::Exchange::onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
    auto& exchange = *static_cast<Exchange*>(self);
    if (sent != exchange.mSent) exchange.moved();
    exchange.mSent = sent;
    return 0;
}

std::shared_ptr<HTTPClientResponse> HTTPClient::Exchange::makeResponse(CURLcode result, bool timedOut) const {
    auto header = std::make_shared<HTTPHeader>(*mHeader);
    if (result != CURLE_OK) header->statuscode = timedOut || result == CURLE_OPERATION_TIMEDOUT ? kStatusTimeout : 0;
    return std::make_shared<HTTPClientResponse>(header, std::make_shared<ReadContent>(Base::SharedBuffer(mBody)));
}

void HTTPClient::Exchange::finished(CURLcode result, bool timedOut) {
    if (!enter()) return;
    {
        const auto request = std::move(mRequest);
        Completion completion;
        std::swap(completion, mCompletion);
        completion(mClient.lock(), request, makeResponse(result, timedOut));
        // The closure goes here, often with the last reference to the client.
    }
    leave();
}

}  // namespace Public::Network
