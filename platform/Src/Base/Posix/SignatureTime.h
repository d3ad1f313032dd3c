// When a program was signed, as a time-stamp authority says.
#pragma once

#include <ctime>
#include <optional>

#include "SignatureCms.h"

namespace Public::Base {

/// The time of the first good time-stamp (RFC 3161, or the older PKCS#9 counter-signature) among the signature's
/// attributes. A stamp is good when it covers this signature, is not of the future, and a root vouched for its
/// authority at its time. A flawed one counts as none.
std::optional<std::time_t> findStampedTime(const ProgramSignature& signature, X509_STORE* roots, std::time_t now);

}  // namespace Public::Base
