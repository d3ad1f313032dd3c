// What a signature's message says, and that nobody vouches for it.
#pragma once

#include "../Require.h"
#include "Base/Windows/SignatureChain.h"
#include "Base/Windows/SignatureCms.h"

namespace Public::Base {

inline void readMessage(crypt::Bytes entry) {
    constexpr FILETIME kNow{0x294A8000, 0x01DC38FA};  // 1760000000 seconds since 1970
    ProgramSignature signature;
    const std::string flaw = parseSignature(entry, signature);
    if (signature.certificate) FUZZ_REQUIRE(!signerText(signature.certificate.get()).empty());
    if (!flaw.empty()) return;
    FUZZ_REQUIRE(signature.certificate && signature.said.digest != SignedContent::Digest::None);
    (void)findSignatureFlaw(signature);
    const ChainFlaw chain =
        findChainFlaw({.leaf = signature.certificate.get(), .others = signature.certificates.get(), .time = kNow});
    FUZZ_REQUIRE(!chain.text.empty());
}

}  // namespace Public::Base
