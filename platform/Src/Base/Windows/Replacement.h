// A file that takes another one's place in one step.
#pragma once

#include <string>

#include "Base/Windows/NativePath.h"

namespace Public::Base {

/// Writes beside the target and then puts the whole in its place: whoever looks, and whatever fails, sees the old file
/// or the new one. Whoever has the old one mapped, or open and shares its removal, keeps it. A link is followed to its
/// file. Failures are recorded for ErrorInfo::getLastError.
class Replacement {
public:
    Replacement() = default;
    /// What was not committed is removed.
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    bool open(const std::wstring& target);
    /// True when the target was there.
    bool replaces() const { return mReplaces; }
    /// The target as it was found.
    const BY_HANDLE_FILE_INFORMATION& replaced() const { return mReplaced; }
    bool write(const char* data, size_t length);
    /// Which attributes the file will have.
    void setAttributes(DWORD attributes) { mAttributes = attributes; }
    /// Waits until the disk has the bytes.
    bool sync();
    bool commit();

private:
    bool find(const std::wstring& target);
    bool makeTemporary();
    bool applyAttributes();
    bool putInPlace();
    /// For systems without a rename that takes the place of an open file.
    bool moveOver();
    /// Puts the old one aside, where it stays until nobody has it open any more. For a moment neither is there.
    bool exchange();

    OwnedHandle mFile;
    std::wstring mTarget;     // where the last link leads
    std::wstring mTemporary;  // empty before it is made and after it has taken its place
    DWORD mAttributes = FILE_ATTRIBUTE_ARCHIVE;
    bool mReplaces = false;
    BY_HANDLE_FILE_INFORMATION mReplaced{};
};

}  // namespace Public::Base
