// Paths as this system takes them.
#pragma once

#include <sys/types.h>

#include <string>

namespace Public::Base {

/// Turns every "\\" into "/". @return false, recording the failure, for a path that is empty or holds a zero byte
bool toNativePath(const std::string& path, std::string& native);

/// Records the system's last failure for ErrorInfo::getLastError. @return false
bool failWithErrno();
bool failWith(int nativeError);

/// Opens a native path, closed on exec; goes on after a signal. @return -1 with errno
int openRetrying(const std::string& native, int flags, mode_t permissions = 0);

/// The path with its last part in the case in which the directory has it, where no entry of the exact name is there.
std::string findRegardlessOfCase(const std::string& native);

}  // namespace Public::Base
