// Lets the engine trust the roots of a test.
#pragma once

#include <string>

namespace support {

/// The roots are trusted while it lives, and any publisher; the defaults are restored at its end. On Windows, where the
/// roots are the system's, they become some of these until the process ends, which takes them away again.
class TrustRoots {
public:
    explicit TrustRoots(const std::string& pemFile);
    ~TrustRoots();
    TrustRoots(const TrustRoots&) = delete;
    TrustRoots& operator=(const TrustRoots&) = delete;
};

}  // namespace support
