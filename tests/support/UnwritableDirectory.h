// A directory that the program may read but not change.
#pragma once

#include <memory>
#include <string>

namespace support {

/// While it lives, nothing can be created in the directory. One at a time.
class UnwritableDirectory {
public:
    explicit UnwritableDirectory(const std::string& path);
    ~UnwritableDirectory();
    UnwritableDirectory(const UnwritableDirectory&) = delete;
    UnwritableDirectory& operator=(const UnwritableDirectory&) = delete;

private:
    struct Refusal;
    std::unique_ptr<Refusal> mRefusal;
};

}  // namespace support
