// Digital signatures of program files.
#pragma once

#include <string>
#include <vector>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Authenticode: the signature that a PE file carries in its certificate table (Microsoft, "Windows Authenticode
/// Portable Executable Signature Format"). The table, the digest (SHA-1 or SHA-2), the CMS signature (RFC 5652) and the
/// chain (RFC 5280) are checked, against the trusted roots, for the time of the time-stamp where there is one. The first
/// signature of the table decides. A table that does not end the file exactly, because bytes were appended or cut, and
/// bytes hidden in the padding of the signature are flaws. Lists of revoked certificates are not fetched. On Windows the
/// system's verifier must trust the file besides, so the systems may differ where it has rules of its own: it calls a
/// file unsigned that bytes were appended to, a flaw here; and a bad time-stamp, which counts as none on POSIX, may be
/// bad enough for it. Thread-safe.
class ORV_PLATFORM_API Signature {
public:
    /// @param file   wide path of the file
    /// @param signer subject of the signer, "unknown" when a signature is there but names none, empty when the file
    ///               carries no signature
    /// @param detail why the answer is false, for logs; empty when it is true
    /// @return true when the file carries a good signature of a trusted publisher. False with an empty signer:
    ///         unsigned, or not a readable PE file. False with a signer: the signature is bad.
    static bool Verify(const std::wstring& file, std::wstring& signer, std::wstring& detail);

    /// POSIX: the PEM file of the trusted roots, "/etc/orv/trusted.pem" by default and again for an empty text.
    /// Windows uses the system's roots.
    static void setTrustedRoots(const std::string& pemFile);
    /// Accepted publishers, by common name of the signer; an empty list accepts any that the roots vouch for.
    static void setTrustedPublishers(const std::vector<std::string>& names);
};

}  // namespace Public::Base
