#include "Base/ProgramDirectory.h"

#include <unistd.h>
#include <climits>

namespace Public::Base {

std::string programDirectory() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0) return {};
    const std::string program(path, static_cast<size_t>(length));
    const size_t separator = program.rfind('/');
    return separator == std::string::npos ? std::string() : program.substr(0, separator);
}

}  // namespace Public::Base
