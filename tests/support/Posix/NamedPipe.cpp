#include "NamedPipe.h"

#include <sys/stat.h>

#include <stdexcept>

namespace support {

struct NamedPipe::Held {};

NamedPipe::NamedPipe(const std::string& path) : mPath(path) {
    if (::mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe at " + path);
}

NamedPipe::~NamedPipe() = default;

}  // namespace support
