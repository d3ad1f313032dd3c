// The entries of a directory, as the system gives them.
#pragma once

#include <string>

#include "Base/Windows/NativePath.h"

namespace Public::Base {

/// One thread at a time. Failures are recorded for ErrorInfo::getLastError.
class EntryStream {
public:
    /// One that cannot be opened has no entries.
    explicit EntryStream(const std::wstring& directory);
    ~EntryStream();
    EntryStream(const EntryStream&) = delete;
    EntryStream& operator=(const EntryStream&) = delete;

    bool isOpen() const { return mIsOpen; }
    /// "." and ".." among them. @return null at the end, and on a fault
    const WIN32_FIND_DATAW* nextOfAll();
    /// Without "." and "..".
    const WIN32_FIND_DATAW* next();
    /// True when it could not be opened or read to its end.
    bool failed() const { return mFailed; }

private:
    HANDLE mSearch = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW mFound{};
    bool mHasFirst = false;  // the opening brings the first entry along
    bool mIsOpen = false;
    bool mFailed = false;
};

/// A link or junction to a directory is none, so that no walk can be led in a circle.
bool isDirectory(const WIN32_FIND_DATAW& entry);

}  // namespace Public::Base
