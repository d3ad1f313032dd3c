// What the system's own verifier says of a signed program.
#pragma once

#include <string>

#include "Base/Windows/CryptOwned.h"

namespace Public::Base {

struct SystemVerdict {
    LONG status = 0;                 ///< 0: the system trusts the file
    FILETIME time = {};              ///< by which it judged: the time-stamp's where there is a good one, else now
    crypt::Certificate certificate;  ///< the signer's; null when the system found none
};

/// Asks without showing or fetching anything. @param file opened for reading   @param native its path
SystemVerdict askSystem(HANDLE file, const std::wstring& native);

}  // namespace Public::Base
