// The signature of a program: a PKCS#7 message over the digest of the file.
#pragma once

#include <string>

#include "../SignatureContent.h"
#include "OpenSslOwned.h"

namespace Public::Base {

/// A message taken apart. The borrowed pointers live as long as `message`.
struct ProgramSignature {
    ssl::SignedData message;
    PKCS7_SIGNER_INFO* signer = nullptr;      ///< borrowed
    STACK_OF(X509) * certificates = nullptr;  ///< borrowed; null when there are none
    X509* certificate = nullptr;              ///< borrowed: the signer's; null when it is missing
    ssl::Bytes content;                       ///< borrowed: what the signature covers
    SignedContent said;                       ///< the same, taken apart
};

/// OpenSSL's name for a digest.
const EVP_MD* digestMethod(SignedContent::Digest digest);

/// Takes an entry of the certificate table apart: one message in DER, then nothing but zeros.
/// @param signature is filled as far as the entry could be read   @return what is wrong, empty when nothing is
std::string parseSignature(ssl::Bytes entry, ProgramSignature& signature);

/// @return what is wrong with the signer's signature over the content, empty when it is good
std::string findSignatureFlaw(const ProgramSignature& signature);

/// @return null when it is not among them
X509* findSignerCertificate(const PKCS7_SIGNER_INFO& signer, STACK_OF(X509) * certificates);

/// Whether `signer` signed the bytes with the certificate's key. It must sign attributes that name these bytes' type
/// and hold their digest.
bool isSignedBy(PKCS7* message, PKCS7_SIGNER_INFO* signer, X509* certificate, ssl::Bytes bytes,
                const char* contentType);

}  // namespace Public::Base
