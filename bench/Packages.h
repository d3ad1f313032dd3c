// Testing and unpacking a package, for those who measure the time and those who measure the memory.
#pragma once

#include <string>

namespace bench {

/// The package test. Throws when the package is refused.
void check(const std::string& path);
/// Unpacks all roles into an empty directory. Throws when that fails.
void unpack(const std::string& path, const std::string& target);

}  // namespace bench
