// The certificates of a signature: whom they name, and whether a trusted root vouches for them.
#pragma once

#include <ctime>
#include <string>

#include "OpenSslOwned.h"

namespace Public::Base {

/// Reads the trusted roots from a PEM file. @return null, with the reason in flaw, when there are none
ssl::Store loadRoots(const std::string& pemFile, std::string& flaw);

struct ChainQuestion {
    X509* leaf = nullptr;
    STACK_OF(X509) * others = nullptr;  ///< what came with the signature, trusted only as far as a root vouches for it
    X509_STORE* roots = nullptr;
    uint32_t usage = 0;  ///< XKU_CODE_SIGN or XKU_TIMESTAMP: the leaf must be meant for it
    std::time_t time = 0;
};

/// @return what is wrong with the chain, empty when a root vouches for the leaf at that time
std::string findChainFlaw(const ChainQuestion& question);

/// UTF-8; empty when the certificate has none.
std::string commonName(X509* certificate);
/// The common name, else the whole subject in one line, else "unknown"; without control characters.
std::string signerText(X509* certificate);

}  // namespace Public::Base
