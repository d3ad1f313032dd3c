// A disk that is full behind some bytes of each file.
#pragma once

#include <cstdint>
#include <memory>

namespace support {

/// While it lives, no file of this process grows beyond the limit: writing more fails as on a full disk. One at a time.
class FileSizeLimit {
public:
    explicit FileSizeLimit(uint64_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    struct Limit;
    std::unique_ptr<Limit> mLimit;
};

}  // namespace support
