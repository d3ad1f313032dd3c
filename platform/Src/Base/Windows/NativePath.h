// Paths as this system takes them.
#pragma once

#include <string>

#include "Base/Windows/OwnedHandle.h"

namespace Public::Base {

/// UTF-16 with "\\" for every separator; in the form that has no limit of length where the path is long. @return false,
/// recording the failure, for a path that is empty, holds a zero byte or is no UTF-8
bool toNativePath(const std::string& path, std::wstring& native);
/// The UTF-8 of a name or path that the system gave. What is no whole UTF-16 gives replacement characters.
std::string fromNative(const std::wstring& native);

/// Records the system's last failure for ErrorInfo::getLastError. @return false
bool failWithLastError();
bool failWith(DWORD nativeError);

/// Opens what is there, a directory too, so that others may read, write, rename and remove it meanwhile.
OwnedHandle openShared(const std::wstring& native, DWORD access, DWORD disposition = OPEN_EXISTING, DWORD flags = 0);
/// What the system tells of a path; links are followed. @return false with GetLastError
bool queryStatus(const std::wstring& native, BY_HANDLE_FILE_INFORMATION& status);
bool isSameFile(const BY_HANDLE_FILE_INFORMATION& one, const BY_HANDLE_FILE_INFORMATION& other);

inline uint64_t joined(DWORD high, DWORD low) { return static_cast<uint64_t>(high) << 32 | low; }

}  // namespace Public::Base
