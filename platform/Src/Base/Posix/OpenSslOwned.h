// Owning pointers for OpenSSL's objects.
#pragma once

#include <openssl/err.h>
#include <openssl/pkcs7.h>
#include <openssl/ts.h>
#include <openssl/x509v3.h>

#include <memory>
#include <span>

namespace Public::Base::ssl {

using Bytes = std::span<const unsigned char>;

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};
template <typename T, auto release>
using Owned = std::unique_ptr<T, Release<release>>;

using Bio = Owned<BIO, &BIO_free_all>;
using Certificate = Owned<X509, &X509_free>;
using Store = Owned<X509_STORE, &X509_STORE_free>;
using SignedData = Owned<PKCS7, &PKCS7_free>;

/// Leaves the thread's error queue as it was found, so that other users of the library see only their own errors.
class ErrorQueueMark {
public:
    ErrorQueueMark() { ERR_set_mark(); }
    ~ErrorQueueMark() { ERR_pop_to_mark(); }
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
};

inline Bytes contentOf(const ASN1_STRING* text) {
    return {ASN1_STRING_get0_data(text), static_cast<size_t>(ASN1_STRING_length(text))};
}

}  // namespace Public::Base::ssl
