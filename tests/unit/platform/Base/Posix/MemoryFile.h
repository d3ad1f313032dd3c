// A file without a name, on a file system in memory.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace support {

class MemoryFile {
public:
    MemoryFile() : mFd(::memfd_create("test", MFD_CLOEXEC)) {}
    ~MemoryFile() { ::close(mFd); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    int fd() const { return mFd; }
    std::string path() const { return "/proc/self/fd/" + std::to_string(mFd); }

private:
    const int mFd;
};

}  // namespace support
