// Paths as this system takes them.
#pragma once

#include <string>

namespace Public::Base {

/// Turns every "\\" into "/". @return false, recording the failure, for a path that is empty or holds a zero byte
bool toNativePath(const std::string& path, std::string& native);

/// Records the system's last failure for ErrorInfo::getLastError. @return false
bool failWithErrno();
bool failWith(int nativeError);

/// Opens a file, never waiting for the other end of a pipe. Directories, pipes and sockets are refused.
/// @return -1, recording the failure
int openNative(const std::string& native, int flags, unsigned permissions = 0);

/// The path with its last part in the case in which the directory has it, where no entry of the exact name is there.
std::string findRegardlessOfCase(const std::string& native);

}  // namespace Public::Base
