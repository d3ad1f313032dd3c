// What the system's own verifier says of a signed program.
#pragma once

#include <string>

#include "Base/Windows/CryptOwned.h"

namespace Public::Base {

struct SystemVerdict {
    LONG status = 0;                 ///< 0: the system trusts the file
    crypt::Certificate certificate;  ///< the signer's; null when the system found none
    FILETIME time = {};              ///< of the time-stamp, by which it judged
    crypt::Certificate stamper;      ///< the time-stamp authority's; null when the system found no time-stamp
    crypt::Store stampersIssuers;
};

/// Asks without showing or fetching anything. @param file opened for reading   @param native its path
SystemVerdict askSystem(HANDLE file, const std::wstring& native);

}  // namespace Public::Base
