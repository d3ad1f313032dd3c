// Files: whole, in pieces, and as entries of a directory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Public/Base/PlatformExport.h"
#include "Public/Base/SharedBuffer.h"

namespace Public::Base {

enum AccessMode : int {
    AccessMode_Exists = 0,  ///< the path names something that is there
};

enum SeekPosition : int {
    SeekPosition_Begin = 0,
    SeekPosition_Current = 1,
    SeekPosition_End = 2,
};

/// Ways of opening a file. Any other number is refused.
enum OpenMode : int {
    OpenMode_ReadDefault = 0,      ///< read
    OpenMode_Read = 2,             ///< read
    OpenMode_Create = 0x1001,      ///< create and write, truncating a file that is there
    OpenMode_CreateKeep = 0x1002,  ///< create when missing, read and write, nothing truncated
};

/// One open file, and what can be done to files by path. Paths are UTF-8; "/" and "\\" both separate. An empty path, or
/// one that holds a zero byte, is refused; on Windows also one with a name that the system takes for something else: a
/// device ("nul.txt"), a stream ("name:x"), a point or blank at the end. There paths may have any length, and one in
/// the form "\\?\" is taken at its word. An open file may be renamed, removed and replaced by others. Every failure is
/// recorded for ErrorInfo::getLastError. No operation throws. One object belongs to one thread at a time; the static
/// operations may run on any.
class ORV_PLATFORM_API File {
public:
    explicit File(const std::string& path = {});
    /// Closes.
    virtual ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Opens the path given at construction. @param mode an OpenMode   @return false when it cannot be opened
    virtual bool open(int mode);
    /// Opens another path, which becomes the object's. An open file is closed first. A directory is refused.
    virtual bool open(const std::string& path, int mode);
    /// Without effect on a closed file. @return false when the system could not keep what was written; closed it is all
    /// the same
    virtual bool close();
    /// @return bytes read, fewer than length only at the end of the file or on a fault; 0 on a closed file
    virtual size_t read(void* data, size_t length);
    /// @return bytes written, fewer than length on a fault; 0 on a closed file
    virtual size_t write(const void* data, size_t length);
    /// Hands written bytes to the operating system. @return false on a fault
    virtual bool flush();
    /// @param distance bytes from position   @return the new offset from the beginning, -1 on failure
    virtual int64_t seek(int64_t distance, SeekPosition position);
    /// Offset from the beginning in bytes, -1 on a closed file.
    virtual int64_t getPosition();
    /// Reads one line without its "\n" or "\r\n". @return false at the end of the file
    virtual bool gets(std::string& line);
    /// Writes the text as it stands. @return false when not all of it could be written
    virtual bool puts(const std::string& text);

    bool isOpen() const;

    static bool access(const std::string& path, AccessMode mode);
    /// True when nothing is there. Not the opposite of access: what cannot be looked at is neither there nor absent.
    static bool isAbsent(const std::string& path);
    /// The whole file; empty when not all of it can be read.
    static SharedBuffer load(const std::string& path);
    /// Replaces the whole file, or leaves it as it was: nothing else is ever seen of it, and on success the disk has
    /// it. Keeps its permissions, follows a link to its file, and refuses one that may not be written. Makes no
    /// directory.
    static bool save(const std::string& path, const SharedBuffer& content);
    /// Bytes; 0 for a missing file.
    static uint64_t getLength(const std::string& path);
    /// Takes away what a file holds beyond the length; a shorter one stays as it is.
    static bool cut(const std::string& path, uint64_t length);
    /// Removes one file; false for a directory.
    static bool remove(const std::string& path);
    /// Copies one file with its permissions; an existing target is replaced as a whole, a read-only one too, and stays
    /// as it was when the copy fails. Whoever has the old one open keeps it; on Windows it is replaced only where he
    /// shares its removal, and never a program that runs.
    /// A target that is the source itself is refused, so that nothing is lost.
    static bool copy(const std::string& from, const std::string& to);
    /// Makes the whole chain of directories; succeeds when it is there already.
    static bool makeDirectory(const std::string& path);
    /// Removes the directory with all that it holds, read-only entries too. A symbolic link or junction is removed,
    /// never followed. A root is refused; an absent directory is a failure.
    static bool removeDirectory(const std::string& path);

    /// Directory of the running program, without a trailing separator.
    static std::string getExcutableFileFullPath();
    /// Puts another text in its place; an empty one restores the default. May be called while other threads run.
    static void setExcutableFileFullPath(const std::string& path);

private:
    struct Handle;
    std::string mPath;
    std::unique_ptr<Handle> mHandle;
    bool mReadFailed = false;  // since it was opened; tells a fault from the end of the file
};

}  // namespace Public::Base
