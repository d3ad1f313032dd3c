// The entries of a directory, as the system gives them.
#pragma once

#include <dirent.h>

#include <string>

#include "Base/Posix/Descriptor.h"

namespace Public::Base {

/// One thread at a time. Failures are recorded for ErrorInfo::getLastError.
class EntryStream {
public:
    /// One that cannot be opened has no entries.
    explicit EntryStream(const std::string& native);
    explicit EntryStream(Descriptor directory);
    ~EntryStream();
    EntryStream(const EntryStream&) = delete;
    EntryStream& operator=(const EntryStream&) = delete;

    bool isOpen() const { return mStream != nullptr; }
    /// Without "." and "..". @return null at the end, and on a fault
    const dirent* next();
    /// True when it could not be opened or read to its end.
    bool failed() const { return mFailed; }
    /// A link to a directory is none, so that no walk can be led in a circle.
    bool isDirectory(const dirent& entry) const;

private:
    DIR* mStream = nullptr;
    bool mFailed = false;
};

}  // namespace Public::Base
