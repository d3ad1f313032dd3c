// The shell of the machine below wine.
#pragma once

#include <string>

namespace support {

/// Whether this program runs under wine.
bool underWine();
/// The name that the machine below has for a file. Only under wine.
std::string unixPath(const std::string& path);
/// Lets that machine's shell run a command. @return its exit code; -1 when it did not end by itself
/// Throws std::runtime_error when there is no such shell.
int runInShell(const std::string& command);

}  // namespace support
