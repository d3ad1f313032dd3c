// Which files this process has open.
#pragma once

#include <cstddef>
#include <string>

namespace support {

/// How often the file is open here, under any name that it had.
size_t timesOpenHere(const std::string& path);

inline bool isOpenHere(const std::string& path) { return timesOpenHere(path) > 0; }

/// How many files, sockets and the like this process has open.
size_t countOpenHere();

}  // namespace support
