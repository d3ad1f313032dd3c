#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Posix/NativePath.h"
#include "Public/Base/System.h"

namespace Public::Base {

MappedFile::~MappedFile() { close(); }

MappedFile::Result MappedFile::open(const std::string& path) {
    close();
    std::string native;
    if (!toNativePath(path, native)) return Result::CannotOpen;
    // Without waiting, for a queue that nobody writes to.
    const int fd = openRetrying(findRegardlessOfCase(native), O_RDONLY | O_NONBLOCK);
    if (fd < 0) {
        failWithErrno();
        return Result::CannotOpen;
    }
    struct stat status {};
    Result result = Result::CannotMap;
    if (::fstat(fd, &status) != 0) {
        failWithErrno();
    } else if (S_ISDIR(status.st_mode)) {
        failWith(EISDIR);
        result = Result::CannotOpen;
    } else if (!S_ISREG(status.st_mode) || status.st_size <= 0) {
        failWith(EINVAL);
    } else {
        const auto size = static_cast<size_t>(status.st_size);
        void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        if (mapped != MAP_FAILED) {
            mData = static_cast<const unsigned char*>(mapped);
            mSize = size;
            mVolume = status.st_dev;
            mNumber = status.st_ino;
            result = Result::Mapped;
        } else {
            failWithErrno();
        }
    }
    ::close(fd);
    return result;
}

bool MappedFile::isReplacedAt(const std::string& path) const {
    std::string native;
    struct stat status {};
    if (mData == nullptr || !toNativePath(path, native)) return false;
    if (::stat(native.c_str(), &status) != 0) {
        failWithErrno();
        return false;
    }
    return status.st_dev != mVolume || status.st_ino != mNumber;
}

void MappedFile::release(const unsigned char* begin, size_t length) const {
    // The system works on whole pages; those that the range only begins or ends in are given back too.
    static const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    const auto first = static_cast<size_t>(begin - mData) / page * page;
    const size_t end = static_cast<size_t>(begin - mData) + length;
    if (length != 0) ::madvise(const_cast<unsigned char*>(mData) + first, end - first, MADV_DONTNEED);
}

void MappedFile::close() {
    if (mData != nullptr) ::munmap(const_cast<unsigned char*>(mData), mSize);
    mData = nullptr;
    mSize = 0;
}

}  // namespace Public::Base
