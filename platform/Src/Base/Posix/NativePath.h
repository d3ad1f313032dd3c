// Paths as this system takes them.
#pragma once

#include <string>

namespace Public::Base {

/// Turns every "\\" into "/". @return false, recording the failure, for a path that is empty or holds a zero byte
bool toNativePath(const std::string& path, std::string& native);

/// Records the system's last failure for ErrorInfo::getLastError. @return false
bool failWithErrno();
bool failWith(int nativeError);

/// The path with its last part in the case in which the directory has it, where no entry of the exact name is there.
std::string findRegardlessOfCase(const std::string& native);

}  // namespace Public::Base
