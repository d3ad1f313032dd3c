// Files of a test's own, on disk and in memory.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include "FileText.h"
#include "Public/Base/File.h"
#include "TempDir.h"

namespace support {

class FileTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    TempDir mDir;
};

/// A file without a name, on a file system in memory.
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
