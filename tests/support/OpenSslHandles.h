// Owning pointers for what the certificate tests hold of OpenSSL, and its errors as exceptions.
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <stdexcept>
#include <string>

#include "Base/Posix/OpenSslOwned.h"

namespace support::ssl {

using Public::Base::ssl::Bio;
using Public::Base::ssl::Certificate;
using Public::Base::ssl::Owned;
using Public::Base::ssl::SignedData;

using Key = Owned<EVP_PKEY, &EVP_PKEY_free>;
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

/// @param der a signature or a time-stamp token
inline SignedData readMessage(const std::string& der) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
    SignedData message(d2i_PKCS7(nullptr, &bytes, static_cast<long>(der.size())));
    require(message && PKCS7_get_signer_info(message.get()), "read a signature");
    return message;
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
