// What this system's half of Signature says of one part of a signature by itself.
#pragma once

#include <ctime>
#include <string>

namespace support {

struct EntryVerdict {
    std::string flaw;        ///< before the chain and the file are looked at; empty when there is none
    std::string fileDigest;  ///< what the entry says of its file
    std::string signer;      ///< common name; empty when the certificate is missing
};

/// @param entry    of a certificate table
/// @param rootsPem where time-stamps are the engine's own work, the one of a sound entry is looked at with these roots
EntryVerdict examineEntry(const std::string& entry, const std::string& rootsPem = {});

/// All certificates are PEM. @return what is wrong with the leaf under the issuer under the root, at that time
std::string findFlawOfChain(const std::string& root, const std::string& issuer, const std::string& leaf,
                            std::time_t when);

/// The name by which a signer with that certificate is told.
std::string signerTextOf(const std::string& certificate);

}  // namespace support
