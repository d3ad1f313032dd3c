// The certificates of a signature: whom they name, and whether a root of the system vouches for them.
#pragma once

#include <string>

#include "Base/Windows/CryptOwned.h"

namespace Public::Base {

struct ChainQuestion {
    PCCERT_CONTEXT leaf = nullptr;
    HCERTSTORE others = nullptr;  ///< what came with the signature, trusted only as far as a root vouches for it
    FILETIME time = {};
    const char* purpose = szOID_PKIX_KP_CODE_SIGNING;  ///< object identifier: what the leaf must be meant for
    HCERTCHAINENGINE engine = nullptr;                 ///< null: the system's own, with the system's roots
};

struct ChainFlaw {
    std::string text;         ///< empty when a root vouches for the leaf at that time
    bool onlyOfTime = false;  ///< it might be sound at another time
};

/// Nothing is fetched: neither lists of revoked certificates nor missing issuers.
ChainFlaw findChainFlaw(const ChainQuestion& question);

/// A certificate with this usage vouches for nothing beyond its own validity, whatever a time-stamp says.
bool endsWithValidity(PCCERT_CONTEXT certificate);

/// UTF-8; empty when the certificate has none.
std::string commonName(PCCERT_CONTEXT certificate);
/// The common name, else the whole subject in one line, else "unknown"; without control characters.
std::string signerText(PCCERT_CONTEXT certificate);

FILETIME timeNow();

}  // namespace Public::Base
