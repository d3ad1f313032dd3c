// Owning pointers for what the certificate tests hold of OpenSSL, and its errors as exceptions.
#pragma once

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs7.h>
#include <openssl/ts.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace support::ssl {

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
using Key = Owned<EVP_PKEY, &EVP_PKEY_free>;
using Certificate = Owned<X509, &X509_free>;
using SignedData = Owned<PKCS7, &PKCS7_free>;
using SignerInfo = Owned<PKCS7_SIGNER_INFO, &PKCS7_SIGNER_INFO_free>;

inline void require(bool good, const char* what) {
    if (good) return;
    char text[256] = "no reason given";
    if (const unsigned long code = ERR_get_error()) ERR_error_string_n(code, text, sizeof text);
    ERR_clear_error();
    throw std::runtime_error(std::string(what) + ": " + text);
}

inline Bio reader(const std::string& bytes) {
    return Bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
}

inline Certificate readCertificate(const std::string& pem) {
    Certificate certificate(PEM_read_bio_X509(reader(pem).get(), nullptr, nullptr, nullptr));
    require(certificate != nullptr, "certificate");
    return certificate;
}

inline Key readKey(const std::string& pem) {
    Key key(PEM_read_bio_PrivateKey(reader(pem).get(), nullptr, nullptr, nullptr));
    require(key != nullptr, "key");
    return key;
}

/// @param encode one of OpenSSL's i2d functions
template <typename T, typename Encode>
std::string toDer(T* object, Encode encode) {
    unsigned char* bytes = nullptr;
    const int length = encode(object, &bytes);
    require(length > 0, "encode");
    std::string der(reinterpret_cast<char*>(bytes), static_cast<size_t>(length));
    OPENSSL_free(bytes);
    return der;
}

}  // namespace support::ssl
