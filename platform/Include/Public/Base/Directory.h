// Reading a directory entry by entry.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// One entry of a directory.
struct ORV_PLATFORM_API Dirent {
    enum Type : int { Type_Directory = 0, Type_File = 1 };

    std::string name;
    std::string fullPath;   ///< the directory's path as given, one separator of the kind that it has, the name
    std::string suffix;     ///< the text after the last point of the name, without the point; empty without one
    Type type = Type_File;  ///< a symbolic link counts as what it leads to, but a link to a directory as a file
};

/// Gives the entries in the order of the file system, without "." and "..". One thread at a time.
class ORV_PLATFORM_API Directory {
public:
    /// A path that cannot be opened reads as empty; the reason is in ErrorInfo::getLastError.
    explicit Directory(const std::string& path);
    ~Directory();
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;

    /// @return false at the end
    bool read(Dirent& entry);
    bool isOpen() const;

private:
    struct Handle;
    std::unique_ptr<Handle> mHandle;
};

}  // namespace Public::Base
