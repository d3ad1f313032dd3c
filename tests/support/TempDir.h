// A directory of a test's own.
#pragma once

#include <string>

namespace support {

/// Made under a name that nothing else uses, and removed with all that it holds.
class TempDir {
public:
    /// @param parent where to make it; empty: the system's directory for such things
    /// Throws std::runtime_error when the system gives no directory.
    explicit TempDir(const std::string& parent = {});
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// Absolute, with "/", without one at its end.
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

}  // namespace support
