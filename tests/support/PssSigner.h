// Signs a signature again, with the padding PSS, which the signing tool itself does not make.
#pragma once

#include <string>

#include "CertificateMaker.h"

namespace support {

/// @param signature one entry of the certificate table (DER)
/// @param signer    of a key of the kind RsaPss, or of plain RSA; takes the place of the one signer and certificate
/// @return the new entry
std::string signAgainWithPss(const std::string& signature, const Credential& signer);

}  // namespace support
