// A disk that is full behind some bytes of each file.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace support {

/// While it lives, no file of this process grows beyond the limit: writing more fails as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : mHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const struct rlimit small = {bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &mBefore);
        std::signal(SIGXFSZ, mHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*mHandler)(int);
    struct rlimit mBefore {};
};

}  // namespace support
