// The numbers under which the system's refusals are told, which every system has its own of.
#pragma once

namespace support {

enum class SystemError {
    NotThere,           ///< nothing of that name in a directory that is there
    DirectoryNotThere,  ///< a directory on the way is not there
    BelowAFile,         ///< a file stands where a directory on the way should be
    NoDirectory,        ///< it is there but is no directory
    IsDirectory,        ///< a file was wanted
    Withheld,           ///< somebody keeps it from being opened
    ReadOnly,           ///< it may not be written
    BadPath,            ///< empty, or no path at all
    NameTooLong,
    PathTooLong,
    SameFile,  ///< a file would be copied onto itself
    NotOpen,
    NoRight,     ///< opened for something else
    EmptyToMap,  ///< an empty file has nothing to be mapped
    FileLimit,   ///< a file would grow beyond a FileSizeLimit
};

/// As ErrorInfo::getLastError tells it.
int errorOf(SystemError error);

}  // namespace support
