// Making what was written outlast a power cut.
#pragma once

#include <string>
#include <vector>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

class ORV_PLATFORM_API Durability {
public:
    /// Waits until a file's content and permissions, or the names in a directory, have reached the disk itself. A new
    /// file is safe when the directory that it lies in has been brought there too. Links are followed.
    /// @return false when it is not there, or the disk could not take it (ErrorInfo::getLastError)
    static bool sync(const std::string& path);
    /// The same for many, in less time than one by one. @return false at the first that fails
    static bool syncAll(const std::vector<std::string>& paths);
};

}  // namespace Public::Base
