// One process at a time at work on a directory.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Keeps other holders of such a lock, in this process or another, away from a directory. It binds only those who ask
/// for it too, leaves nothing in the directory, and ends with the process, however that ends. A directory reached
/// by two names is the same one. One thread at a time.
class ORV_PLATFORM_API DirectoryLock {
public:
    enum class Result {
        Taken,
        Held,    ///< somebody else has it
        Failed,  ///< there is no such directory, or it may not be read; ErrorInfo::getLastError
    };

    DirectoryLock();
    /// Gives the lock back.
    ~DirectoryLock();
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;

    /// Does not wait. What the object held before is given back first.
    Result take(const std::string& directory);
    void release();

private:
    struct Handle;
    std::unique_ptr<Handle> mHandle;
};

}  // namespace Public::Base
