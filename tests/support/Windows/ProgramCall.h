// Starts programs for Windows for the tests.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace support {

/// What a program gets instead of this program's streams; all of them must be inheritable.
struct Streams {
    HANDLE in;
    HANDLE out;
    HANDLE err;
};

/// @param directory where it works; empty: where this program does   @return the process; null when it is not started
HANDLE startProgram(const std::vector<std::string>& words, const std::string& directory, const Streams& streams);

/// Waits for its end and lets go of it. @return its exit code
int endOf(HANDLE process);

}  // namespace support
