// A file that takes another one's place in one step.
#pragma once

#include <sys/stat.h>

#include <string>

#include "Base/Posix/Descriptor.h"

namespace Public::Base {

/// Writes beside the target and then puts the whole in its place: whoever looks, and whatever fails, sees the old file
/// or the new one. Whoever has the old one open or mapped keeps it. A link is followed to its file. A target that is no
/// regular file, such as a device, is written as it stands. Failures are recorded for ErrorInfo::getLastError.
class Replacement {
public:
    Replacement() = default;
    /// What was not committed is removed.
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// @param permissions of the file while it is written, and for good where none are given later
    bool open(const std::string& target, mode_t permissions);
    /// True when the target was there.
    bool replaces() const { return mReplaces; }
    /// The target as it was found.
    const struct stat& replaced() const { return mReplaced; }
    int get() const { return mFile.get(); }
    bool write(const char* data, size_t length);
    /// Without effect on what is no regular file.
    bool setPermissions(mode_t permissions);
    /// Waits until the disk has the bytes.
    bool sync();
    bool commit();

private:
    bool find(const std::string& target);
    bool makeTemporary(mode_t permissions);

    Descriptor mFile{-1};
    std::string mTarget;     // where the last link leads
    std::string mTemporary;  // empty for a target that is written as it stands
    bool mReplaces = false;
    bool mInPlace = false;
    struct stat mReplaced {};
};

}  // namespace Public::Base
