// The shell of the machine below wine.
#pragma once

#include <string>

#include "Sockets.h"

namespace support {

/// Whether this program runs under wine.
bool underWine();
/// The name that the machine below has for a file. Only under wine.
std::string unixPath(const std::string& path);
/// Starts that machine's shell with a script. @return where its output comes in, until it ends
/// Throws std::runtime_error when there is no such shell.
sockets::Socket startInShell(const std::string& script);
/// Lets that machine's shell run a command. @return its exit code; -1 when it did not end by itself
/// Throws std::runtime_error when there is no such shell.
int runInShell(const std::string& command);

}  // namespace support
