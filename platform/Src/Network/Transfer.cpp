#include "Network/Transfer.h"

#include <charconv>
#include <new>
#include <string_view>

#include "Network/TrustedRoots.h"

namespace Public::Network {

namespace {

constexpr int kStatusTimeout = 408;
constexpr size_t kLargestGathered = size_t{64} << 20;
constexpr size_t kLargestHeader = size_t{1} << 20;  // of all responses on the way together
constexpr long kBufferBytes = 512L << 10;
constexpr long kMostRedirects = 5;
constexpr long kUnlimitedMs = 0x7FFFFFFF;
constexpr const char* kSchemes = "http,https";

/// A status line of RFC 9112. curl also takes "HTTP/200 OK", which has no status, and numbers that are none of HTTP's.
bool isStatusLine(std::string_view line) {
    constexpr std::string_view kForm = "HTTP/1.N NNN";
    if (line.size() <= kForm.size() || line[9] == '0') return false;
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    for (size_t i = 0; i < kForm.size(); ++i) {
        if (kForm[i] == 'N' ? !isDigit(line[i]) : line[i] != kForm[i]) return false;
    }
    return !isDigit(line[kForm.size()]);
}

/// Sets options one after the other, and remembers whether all were taken.
class Options {
public:
    explicit Options(CURL* easy) : mEasy(easy) {}
    template <class Value>
    Options& set(CURLoption option, Value value) {
        mTaken = mTaken && curl_easy_setopt(mEasy, option, value) == CURLE_OK;
        return *this;
    }
    bool taken() const { return mTaken; }

private:
    CURL* mEasy;
    bool mTaken = true;
};

}  // namespace

std::shared_ptr<HTTPClientResponse> failedResponse(int status) {
    auto header = std::make_shared<HTTPHeader>();
    header->statuscode = status;
    return std::make_shared<HTTPClientResponse>(std::move(header),
                                                std::make_shared<ReadContent>(Public::Base::SharedBuffer()));
}

Transfer::Transfer(std::shared_ptr<Exchange> exchange)
    : mExchange(std::move(exchange)), mEasy(curl_easy_init()), mLastMove(std::chrono::steady_clock::now()) {
    if (!mEasy || setOptions()) return;
    curl_easy_cleanup(mEasy);
    mEasy = nullptr;
}

Transfer::~Transfer() {
    if (mEasy) curl_easy_cleanup(mEasy);
    curl_slist_free_all(mFields);
}

bool Transfer::setOptions() {
    // Nothing of the machine's surroundings has a say: no proxy variables, no netrc, no cookies, no signals.
    const bool plain = Options(mEasy)
                           .set(CURLOPT_NOSIGNAL, 1L)
                           .set(CURLOPT_PROXY, "")
                           .set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED))
                           .set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1))
                           .set(CURLOPT_SSL_VERIFYPEER, 1L)
                           .set(CURLOPT_SSL_VERIFYHOST, 2L)
                           .set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2))
                           // A node without a way out cannot ask for such a list, and must update too.
                           .set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT))
                           .set(CURLOPT_BUFFERSIZE, kBufferBytes)
                           .taken();
    return plain && setRoots() && setAddress() && setMethod() && setCallbacks();
}

bool Transfer::setRoots() {
    std::string roots = trustedRoots();
    if (roots.empty()) return true;
    const curl_blob bytes{roots.data(), roots.size(), CURL_BLOB_COPY};
    return Options(mEasy).set(CURLOPT_CAINFO_BLOB, &bytes).taken();
}

bool Transfer::setAddress() {
    const long connect = mExchange->timeout() == 0 ? kUnlimitedMs : static_cast<long>(mExchange->timeout());
    return Options(mEasy)
        .set(CURLOPT_URL, mExchange->address().c_str())
        .set(CURLOPT_PROTOCOLS_STR, kSchemes)
        .set(CURLOPT_REDIR_PROTOCOLS_STR, kSchemes)
        .set(CURLOPT_FOLLOWLOCATION, 1L)
        .set(CURLOPT_MAXREDIRS, kMostRedirects)
        // A name that is still being looked up when the exchange ends holds up no other.
        .set(CURLOPT_QUICK_EXIT, 1L)
        .set(CURLOPT_CONNECTTIMEOUT_MS, connect)
        .taken();
}

bool Transfer::setMethod() {
    Options options(mEasy);
    const std::string& body = mExchange->body();
    if (mExchange->method() == "HEAD") {
        options.set(CURLOPT_NOBODY, 1L);
    } else if (body.empty()) {
        options.set(CURLOPT_HTTPGET, 1L);
    } else {
        // The body goes at once, untyped, and along with every redirect.
        for (const char* field : {"Expect:", "Content-Type:"}) {
            curl_slist* longer = curl_slist_append(mFields, field);
            if (!longer) return false;
            mFields = longer;
        }
        options.set(CURLOPT_POST, 1L)
            .set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()))
            .set(CURLOPT_POSTFIELDS, body.data())
            .set(CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_ALL))
            .set(CURLOPT_HTTPHEADER, mFields);
    }
    options.set(CURLOPT_CUSTOMREQUEST, mExchange->method().c_str());
    if (!mExchange->userAgent().empty()) options.set(CURLOPT_USERAGENT, mExchange->userAgent().c_str());
    return options.taken();
}

bool Transfer::setCallbacks() {
    return Options(mEasy)
        .set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader)
        .set(CURLOPT_HEADERDATA, static_cast<void*>(this))
        .set(CURLOPT_WRITEFUNCTION, &Transfer::onBody)
        .set(CURLOPT_WRITEDATA, static_cast<void*>(this))
        .set(CURLOPT_PREREQFUNCTION, &Transfer::onConnected)
        .set(CURLOPT_PREREQDATA, static_cast<void*>(this))
        .taken();
}

int Transfer::onConnected(void* transfer, char*, char*, int, int) noexcept {
    auto* self = static_cast<Transfer*>(transfer);
    self->mConnected = true;
    self->noteMove();
    return CURL_PREREQFUNC_OK;
}

size_t Transfer::onHeader(const char* text, size_t one, size_t length, void* transfer) noexcept {
    auto* self = static_cast<Transfer*>(transfer);
    const std::string_view line(text, one * length);
    // curl is content with a connection that closes between two fields; the blank line is the proof of a whole header.
    if (line.starts_with("HTTP/")) {
        if (!isStatusLine(line)) return 0;
        self->mHeaderWhole = false;
    }
    if (line == "\r\n" || line == "\n") self->mHeaderWhole = true;
    self->mHeaderBytes += line.size();
    return self->mHeaderBytes <= kLargestHeader ? line.size() : 0;
}

size_t Transfer::onBody(char* data, size_t one, size_t length, void* transfer) noexcept {
    auto* self = static_cast<Transfer*>(transfer);
    const size_t bytes = one * length;
    self->mBodyBytes += bytes;
    const bool taken = self->mExchange->gathers()
                           ? self->gather(data, bytes)
                           : self->mExchange->deliver(self->header(), data, static_cast<unsigned int>(bytes));
    // A callback that takes its time is no silence of the peer.
    self->noteMove();
    return taken ? bytes : CURL_WRITEFUNC_ERROR;
}

bool Transfer::gather(const char* data, size_t length) {
    if (mExchange->ended() || length > kLargestGathered - mBody.size()) return false;
    try {
        mBody.append(data, length);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void Transfer::noteMove() {
    if (mConnected) mLastMove = std::chrono::steady_clock::now();
}

std::optional<std::chrono::steady_clock::time_point> Transfer::deadline() const {
    if (mExchange->timeout() == 0) return {};
    return mLastMove + std::chrono::milliseconds(mExchange->timeout());
}

const std::shared_ptr<HTTPHeader>& Transfer::header() {
    if (mHeader) return mHeader;
    mHeader = std::make_shared<HTTPHeader>();
    long status = 0;
    curl_easy_getinfo(mEasy, CURLINFO_RESPONSE_CODE, &status);
    mHeader->statuscode = static_cast<int>(status);
    constexpr int kLastResponse = -1;
    curl_header* field = nullptr;
    while ((field = curl_easy_nextheader(mEasy, CURLH_HEADER, kLastResponse, field)) != nullptr) {
        mHeader->add(field->name, field->value);
    }
    return mHeader;
}

// curl takes a length beyond its own range for none, and of several the last.
bool Transfer::lengthHolds() {
    const int status = header()->statuscode;
    if (mExchange->method() == "HEAD" || status == 204 || status == 304) return true;
    if (!mHeader->header("Transfer-Encoding", 0).isNull()) return true;
    for (unsigned int index = 0;; ++index) {
        const Public::Base::Value field = mHeader->header("Content-Length", index);
        if (field.isNull()) return true;
        const std::string text = field.toString();
        uint64_t length = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
        if (error != std::errc() || length != mBodyBytes) return false;
    }
}

std::shared_ptr<HTTPClientResponse> Transfer::response(CURLcode result) {
    if (result == CURLE_OPERATION_TIMEDOUT) return failedResponse(kStatusTimeout);
    if (result != CURLE_OK || !mHeaderWhole || !lengthHolds()) return failedResponse(0);
    return std::make_shared<HTTPClientResponse>(
        header(), std::make_shared<ReadContent>(Public::Base::SharedBuffer(std::move(mBody))));
}

}  // namespace Public::Network
