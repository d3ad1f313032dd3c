// What lies under a path, links themselves not followed, and what programs that change installed files do with it.
#pragma once

#include <cstdint>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Paths are UTF-8. Every failure is recorded for ErrorInfo::getLastError. No operation throws.
struct ORV_PLATFORM_API FileEntry {
    enum class Kind {
        Absent,
        File,
        Directory,
        Link,     ///< a symbolic link, also one that leads nowhere; on Windows any other that leads elsewhere too
        Other,    ///< such as a device
        Unknown,  ///< cannot be looked at
    };
    Kind kind = Kind::Unknown;
    unsigned permissions = 0;  ///< on POSIX the mode's lowest twelve bits, on Windows the attributes that can be set
    int64_t modified = 0;      ///< of a file, in the system's own ticks

    bool operator==(const FileEntry&) const = default;

    static FileEntry at(const std::string& path);

    /// Both of a file, as at() gave them; links are followed.
    static bool setPermissions(const std::string& path, unsigned permissions);
    static bool setModified(const std::string& path, int64_t modified);

    static bool readLink(const std::string& path, std::string& target);
    /// Windows may keep it from those who have not been given the right.
    static bool makeLink(const std::string& target, const std::string& path);

    /// Gives a file another name on the same volume, in one step; what has that name is replaced.
    static bool rename(const std::string& from, const std::string& to);
    /// Removes a directory unless it holds something. @return false when it holds nothing and is still there
    static bool removeEmptyDirectory(const std::string& path);
    /// True for a file that cannot be written now because a program has it open or is run from it.
    static bool isInUse(const std::string& path);

    /// Where the path leads, once links are followed as far as something is there, and it is made absolute. With "/",
    /// without one at its end. Empty when it cannot be looked at.
    static std::string resolved(const std::string& path);
};

}  // namespace Public::Base
