// Makes keys and certificates for tests: authorities, publishers, time-stamp authorities, sound and flawed.
#pragma once

#include <ctime>
#include <string>

namespace support {

/// A certificate with its key, both PEM; `certificate` may hold the certificates of its issuers behind its own.
struct Credential {
    std::string certificate;
    std::string key;
};

struct CertificateSpec {
    enum KeyKind { Rsa2048, EcP256, EcP384, RsaPss, Rsa512, Rsa1024 };

    std::string commonName = {};    ///< left out when empty
    std::string organization = {};  ///< left out when empty
    std::string notBefore = "20200101000000Z";
    std::string notAfter = "20491231000000Z";
    bool authority = false;             ///< may issue certificates
    bool constrained = true;            ///< says whether it is an authority at all
    int pathLength = -1;                ///< authorities that may stand below this one; any number when negative
    std::string keyUsage = {};          ///< as OpenSSL's configuration writes it; left out when empty
    std::string extendedKeyUsage = {};  ///< likewise
    std::string alternativeName = {};   ///< likewise, such as "DNS:localhost"
    std::string revocationList = {};    ///< where the issuer's list is to be had; left out when empty
    std::string digest = "sha256";      ///< of the issuer's signature
    KeyKind keyKind = Rsa2048;
    std::string key = {};  ///< PEM of a key to use again; empty makes a new one
};

/// @param issuer null for a certificate that signs itself. All functions here throw std::runtime_error.
Credential makeCertificate(const CertificateSpec& spec, const Credential* issuer = nullptr);

/// RFC 3161 token (DER) that says that the bytes were there at that time.
/// @param authority a certificate with the critical extended usage "timeStamping"
std::string makeTimeStampToken(const Credential& authority, const std::string& bytes, std::time_t when);

/// PKCS#9 counter-signature (DER) of the bytes, the older form of a time-stamp.
std::string makeCounterSignature(const Credential& authority, const std::string& bytes, std::time_t when);

}  // namespace support
