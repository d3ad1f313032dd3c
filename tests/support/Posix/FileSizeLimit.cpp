#include "FileSizeLimit.h"

#include <sys/resource.h>

#include <csignal>

namespace support {

struct FileSizeLimit::Limit {
    void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit before {};
};

FileSizeLimit::FileSizeLimit(uint64_t bytes) : mLimit(std::make_unique<Limit>()) {
    getrlimit(RLIMIT_FSIZE, &mLimit->before);
    const struct rlimit small = {bytes, mLimit->before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
}

FileSizeLimit::~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &mLimit->before);
    std::signal(SIGXFSZ, mLimit->handler);
}

}  // namespace support
