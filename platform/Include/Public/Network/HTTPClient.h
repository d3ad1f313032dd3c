// One HTTP request and its response (RFC 9110, RFC 9112).
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"
#include "Public/Base/SharedBuffer.h"
#include "Public/Base/URL.h"
#include "Public/Base/Value.h"
#include "Public/Network/IOWorker.h"

namespace Public::Network {

/// Where the body of a response goes.
enum HTTPCacheType : int {
    HTTPCacheType_Memory = 0,  ///< gathered, for HTTPClientResponse::content(); at most 64 MiB, more fails the request
    HTTPCacheType_Stream = 2,  ///< delivered to recvCallback only, of any length
};

/// Opaque; passed through recvCallback.
class Socket;
class Exchange;

/// Status and fields of a response. Written by the client before a callback sees it, read-only afterwards.
struct ORV_PLATFORM_API HTTPHeader {
    /// Status of the final response; 408 when the request timed out, 0 when no response came for another reason.
    int statuscode = 0;

    /// @param name  of a field, in any case   @param index 0 for the first field of that name
    /// @return its value, or a null Value
    Public::Base::Value header(const std::string& name, unsigned int index) const;
    void add(const std::string& name, const std::string& value);

private:
    std::vector<std::pair<std::string, std::string>> mFields;
};

/// A gathered body.
class ORV_PLATFORM_API ReadContent {
public:
    explicit ReadContent(Public::Base::SharedBuffer body) : mBody(std::move(body)) {}
    Public::Base::SharedBuffer readAll() const { return mBody; }

private:
    Public::Base::SharedBuffer mBody;
};

/// The body of a request.
class ORV_PLATFORM_API WriteContent {
public:
    /// Appends. @return bytes taken
    unsigned int write(const Public::Base::SharedBuffer& bytes);
    const std::string& bytes() const { return mBytes; }

private:
    std::string mBytes;
};

/// Filled by the caller, then given to HTTPClient::request and not touched again.
class ORV_PLATFORM_API HTTPClientRequest {
public:
    using RecvCallback = Public::Base::Function<void(const std::weak_ptr<Socket>&, const std::shared_ptr<HTTPHeader>&,
                                                     const char* data, unsigned int length)>;

    /// @param method such as "GET"; sent as it stands
    HTTPClientRequest(const std::string& method, const Public::Base::URL& url, HTTPCacheType cacheType);
    HTTPClientRequest(const std::string& method, const Public::Base::URL& url, int cacheType)
        : HTTPClientRequest(method, url, static_cast<HTTPCacheType>(cacheType)) {}

    const std::string& method() const { return mMethod; }
    const Public::Base::URL& url() const { return mUrl; }
    HTTPCacheType cacheType() const { return mCacheType; }
    /// Milliseconds; 0 means none. Governs the time to connect and, from then on, the longest silence: a request ends
    /// with status 408 when no byte has moved for so long. A long download that keeps moving is not cut.
    uint32_t& timeout() { return mTimeout; }
    /// When set, gets the body of the final response piece by piece, on one IOWorker thread after another, never two at
    /// a time; the body of a redirect is not delivered.
    RecvCallback& recvCallback() { return mRecvCallback; }
    /// Body of the request, empty at first; sent with a Content-Length when it is not empty.
    std::shared_ptr<WriteContent> content() const { return mContent; }

private:
    std::string mMethod;
    Public::Base::URL mUrl;
    HTTPCacheType mCacheType;
    uint32_t mTimeout = 0;
    RecvCallback mRecvCallback;
    std::shared_ptr<WriteContent> mContent;
};

/// What came back.
class ORV_PLATFORM_API HTTPClientResponse {
public:
    HTTPClientResponse(std::shared_ptr<HTTPHeader> header, std::shared_ptr<ReadContent> content)
        : mHeader(std::move(header)), mContent(std::move(content)) {}
    /// Never null.
    std::shared_ptr<HTTPHeader> header() const { return mHeader; }
    /// Never null; empty for a streamed body.
    std::shared_ptr<ReadContent> content() const { return mContent; }

private:
    std::shared_ptr<HTTPHeader> mHeader;
    std::shared_ptr<ReadContent> mContent;
};

/// One client for one request. The destructor ends a running request: it returns only when the callbacks of that
/// request have ended or can no longer begin, except on the thread of such a callback itself. A request ended in this
/// way calls its completion no more. So a lock that a callback takes must not be held while the client is destroyed,
/// and two callbacks must not each destroy the other's client. A finished or ended request lets go of both its
/// callbacks.
class ORV_PLATFORM_API HTTPClient : public std::enable_shared_from_this<HTTPClient> {
public:
    using Completion =
        Public::Base::Function<void(const std::shared_ptr<HTTPClient>&, const std::shared_ptr<HTTPClientRequest>&,
                                    const std::shared_ptr<HTTPClientResponse>&)>;

    /// The worker is not kept alive: when its owner lets go of it, the request ends with a failure.
    HTTPClient(const std::shared_ptr<IOWorker>& worker, const std::string& userAgent);
    ~HTTPClient();
    HTTPClient(const HTTPClient&) = delete;
    HTTPClient& operator=(const HTTPClient&) = delete;

    /// Starts the request. Follows at most 5 redirects, to HTTP and HTTPS only. TLS peers are verified:
    /// their name and validity, and that a trusted root vouches for them; lists of revoked certificates only where they
    /// can be had.
    /// @param callback called exactly once, later, on a thread of the IOWorker, with no lock held; it
    ///                 may take its time without holding up a transfer. The client pointer it receives is null when the
    ///                 owner has let go of the client. A request that got no response, an incomplete one (a body
    ///                 shorter than its Content-Length), or too many redirects has a response whose status is not 200:
    ///                 408 on a time-out, otherwise 0, and neither fields nor content. A streamed request too always
    ///                 gets a response with a header
    /// @param extra    always empty
    /// @return false when nothing was started and the callback will not be called: no IOWorker or one that has ended, a
    ///         null request, an address that is not HTTP or HTTPS, a method that is not a token, a user agent with a
    ///         control character, or a client that has had its request
    bool request(const std::shared_ptr<HTTPClientRequest>& request, const Completion& callback,
                 const std::string& extra);

    /// The roots that TLS peers of requests started from now on must stand under, as PEM text, in place of the
    /// system's; an empty text restores those. Thread-safe.
    static void setTrustedRoots(const std::string& pem);

private:
    const std::shared_ptr<IOWorker::Impl> mWorker;
    const std::string mUserAgent;
    std::mutex mMutex;  // guards mExchange while requests are being started
    std::shared_ptr<Exchange> mExchange;
};

}  // namespace Public::Network
