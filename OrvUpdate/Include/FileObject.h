// A file with positioned access, shared by a reader and a writer.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "OrvUpdateExport.h"
#include "Public/Base/File.h"

namespace Tarnwick::OrvUpdate {

/// Seek and read or write are one unit, so threads may share one object.
class ORV_UPDATE_API FileObject : public Public::Base::File {
public:
    FileObject();
    /// @param position bytes from the file's start   @param length bytes at data
    /// @return bytes written; 0 when the position cannot be reached
    virtual size_t writeAt(uint32_t position, const void* data, size_t length);
    /// @return bytes read; 0 when the position cannot be reached
    virtual size_t readAt(uint32_t position, void* data, size_t length);
    /// When writeAt or readAt was last called, milliseconds of the Clock; 0 before the first call.
    uint64_t lastAccess() const { return mLastAccess; }

private:
    std::mutex mMutex;  // held for seek and the access that follows it
    std::atomic<uint64_t> mLastAccess{0};
};

}  // namespace Tarnwick::OrvUpdate
