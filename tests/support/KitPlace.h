// Where the signing kit of the tests lies, and how its authorities are made.
#pragma once

#include <string>

#include "CertificateMaker.h"

namespace support {

/// A system that looks for trusted roots in one place for all programs gets a kit, and with it roots, of each process.
struct KitPlace {
    std::string directory;
    CertificateSpec::KeyKind authoritiesKeys = CertificateSpec::Rsa2048;
    std::string signersKey = {};  ///< PEM, for all that sign; empty: to be made with the kit

    static KitPlace usual();
};

}  // namespace support
