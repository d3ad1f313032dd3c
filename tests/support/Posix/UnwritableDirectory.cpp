#include "UnwritableDirectory.h"

#include <sys/stat.h>

#include <stdexcept>

#include "WithoutRights.h"

namespace support {

struct UnwritableDirectory::Refusal {
    std::string path;
    struct stat before {};
    std::unique_ptr<WithoutRights> nobody;
};

UnwritableDirectory::UnwritableDirectory(const std::string& path) : mRefusal(new Refusal{path, {}, {}}) {
    if (::stat(path.c_str(), &mRefusal->before) != 0 || ::chmod(path.c_str(), 0555) != 0) {
        throw std::runtime_error("no directory " + path);
    }
    mRefusal->nobody = std::make_unique<WithoutRights>();
}

UnwritableDirectory::~UnwritableDirectory() {
    mRefusal->nobody.reset();
    ::chmod(mRefusal->path.c_str(), mRefusal->before.st_mode & 07777);
}

}  // namespace support
