// What a signature's message says, and that nobody vouches for it.
#pragma once

#include "../Require.h"
#include "Base/Posix/SignatureChain.h"
#include "Base/Posix/SignatureCms.h"
#include "Base/Posix/SignatureTime.h"

namespace Public::Base {

inline void readMessage(ssl::Bytes entry) {
    constexpr std::time_t kNow = 1760000000;
    const ssl::ErrorQueueMark mark;
    ProgramSignature signature;
    const std::string flaw = parseSignature(entry, signature);
    if (signature.certificate) FUZZ_REQUIRE(!signerText(signature.certificate).empty());
    if (!flaw.empty()) return;
    FUZZ_REQUIRE(signature.certificate && signature.said.digest != SignedContent::Digest::None);
    (void)findSignatureFlaw(signature);
    const ssl::Store roots(X509_STORE_new());
    FUZZ_REQUIRE(!findStampedTime(signature, roots.get(), kNow));
    FUZZ_REQUIRE(!findChainFlaw({.leaf = signature.certificate,
                                 .others = signature.certificates,
                                 .roots = roots.get(),
                                 .usage = XKU_CODE_SIGN,
                                 .time = kNow})
                      .empty());
}

}  // namespace Public::Base
