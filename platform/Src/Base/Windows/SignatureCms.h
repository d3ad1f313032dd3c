// The signature of a program: a PKCS#7 message over the digest of the file.
#pragma once

#include <string>

#include "Base/SignatureContent.h"
#include "Base/Windows/CryptOwned.h"

namespace Public::Base {

/// A message taken apart.
struct ProgramSignature {
    crypt::Message message;
    crypt::Store certificates;       ///< what came with the signature
    crypt::Certificate certificate;  ///< the signer's; null when it is missing
    std::string content;             ///< what the signature covers
    SignedContent said;              ///< the same, taken apart
};

/// Takes an entry of the certificate table apart: one message in DER, then nothing but zeros.
/// @param signature is filled as far as the entry could be read   @return what is wrong, empty when nothing is
std::string parseSignature(crypt::Bytes entry, ProgramSignature& signature);

/// @return what is wrong with the signer's signature over the content, empty when it is good
std::string findSignatureFlaw(const ProgramSignature& signature);

}  // namespace Public::Base
