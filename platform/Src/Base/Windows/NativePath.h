// Paths as this system takes them.
#pragma once

#include <string>

#include "Base/Windows/OwnedHandle.h"

namespace Public::Base {

/// UTF-16 from the root, without "." and "..", with "\\" for every separator; in the form that has no limit of length
/// where the path is long. One given in that form stays as it is. @return false, recording the failure, for a path that
/// is empty, holds a zero byte, is no UTF-8, is too long for the system or holds a name that no file can have
bool toNativePath(const std::string& path, std::wstring& native);
/// Puts a path that toNativePath gave into the form without a limit of length, so that what lies below it can be named
/// however deep it is.
void liftLimit(std::wstring& native);
/// The UTF-8 of a name or path that the system gave. What is no whole UTF-16 gives replacement characters.
std::string fromNative(const std::wstring& native);

/// Records the system's last failure for ErrorInfo::getLastError. @return false
bool failWithLastError();
bool failWith(DWORD nativeError);

/// True for a failure that tells that nothing lies under a name.
bool meansAbsent(DWORD nativeError);

/// Opens what is there, a directory too, so that others may read, write, rename and remove it meanwhile.
OwnedHandle openShared(const std::wstring& native, DWORD access, DWORD disposition = OPEN_EXISTING, DWORD flags = 0);
/// What the system tells of a path; links are followed. @return false with GetLastError
bool queryStatus(const std::wstring& native, BY_HANDLE_FILE_INFORMATION& status);
/// Those of what a path leads to, and of the entry itself where that may not be looked at. @return
/// INVALID_FILE_ATTRIBUTES with GetLastError
DWORD attributesOf(const std::wstring& native);
bool isSameFile(const BY_HANDLE_FILE_INFORMATION& one, const BY_HANDLE_FILE_INFORMATION& other);

inline uint64_t joined(DWORD high, DWORD low) { return static_cast<uint64_t>(high) << 32 | low; }

}  // namespace Public::Base
