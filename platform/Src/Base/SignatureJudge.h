// The system-specific half of Signature: what a signature that was found is worth.
#pragma once

#include <string>

#include "PeSecurity.h"
#include "SignatureSettings.h"

namespace Public::Base {

struct Judgement {
    std::string signer;  ///< empty only when there is no signature
    std::string flaw;    ///< in plain words; empty when there is none
};

/// @param program the file at the path, its state Signed
Judgement judgeSigned(const PeSecurity& program, const std::string& path, const SignatureSettings& settings);

}  // namespace Public::Base
