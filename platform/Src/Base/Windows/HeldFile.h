// Calls that another program's look at a file holds up.
#pragma once

#include <string>

#include "Base/Windows/WindowsHeaders.h"

namespace Public::Base {

/// Tries again, for an eighth of a second at most, while somebody has the file open so that the call is refused.
/// Scanners and indexers open each new file for some milliseconds; whoever holds it longer means to. @return false with
/// GetLastError
template <class Attempt>
bool persist(const Attempt& attempt) {
    constexpr DWORD kLongestPause = 64;
    for (DWORD pause = 1; !attempt(); pause *= 2) {
        if (::GetLastError() != ERROR_SHARING_VIOLATION || pause > kLongestPause) return false;
        ::Sleep(pause);
    }
    return true;
}

inline bool deleteFile(const std::wstring& native) {
    return persist([&] { return ::DeleteFileW(native.c_str()) != 0; });
}

/// What a system from before an extended call says, or a file system that does not know it.
inline bool isUnknownCall(DWORD error) {
    return error == ERROR_INVALID_PARAMETER || error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION ||
           error == ERROR_CALL_NOT_IMPLEMENTED || error == ERROR_INVALID_LEVEL;
}

}  // namespace Public::Base
