// What the engine needs of the operating system beyond the foundation types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// A file seen through a read-only mapping. A file that shrinks under the mapping can fault a reader on POSIX, as it
/// cannot on Windows, where a mapped file cannot be cut. One thread at a time opens and closes; any may read the bytes.
class ORV_PLATFORM_API MappedFile {
public:
    MappedFile() = default;
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    enum class Result {
        Mapped,
        CannotOpen,  ///< no such file, no right to read it, or a directory
        CannotMap,   ///< it is there but cannot be mapped; an empty file is one of these
    };
    /// Opens for reading, sharing with other readers. The last part of the path is found without regard to case where
    /// no entry of the exact name is there.
    Result open(const std::string& path);
    void close();
    /// True when another file than the mapped one lies at the path. While it is mapped, no other is taken for it.
    bool isReplacedAt(const std::string& path) const;
    /// Lets the system take back the memory of bytes that were read; they are read from the file again when wanted.
    void release(const unsigned char* begin, size_t length) const;
    const unsigned char* data() const { return mData; }
    /// Bytes; 0 while nothing is mapped.
    size_t size() const { return mSize; }

private:
    const unsigned char* mData = nullptr;
    size_t mSize = 0;
    uint64_t mVolume = 0;  // with the number, what tells the file from any other
    uint64_t mNumber = 0;
};

/// One entry of a plain listing.
struct ListedFile {
    static constexpr unsigned Hidden = 2;         ///< attribute bit; on POSIX a name that begins with a point
    static constexpr unsigned SubDirectory = 16;  ///< attribute bit
    std::string name;
    unsigned attributes = 0;
};

/// The plain listing of a directory with attributes, "." and ".." first where the system reports them.
class ORV_PLATFORM_API FileListing {
public:
    /// @param directory path without a trailing separator; every name in it is listed
    explicit FileListing(const std::string& directory);
    ~FileListing();
    FileListing(const FileListing&) = delete;
    FileListing& operator=(const FileListing&) = delete;

    /// @return false at the end, and at once for a directory that cannot be read
    bool next(ListedFile& file);

private:
    struct Handle;
    std::unique_ptr<Handle> mHandle;
};

/// How a program is started.
struct ProgramStart {
    std::string program;     ///< path
    std::string parameters;  ///< one command line: arguments in double quotes, separated by blanks
    bool show = true;        ///< show its window
    bool elevated = true;    ///< with raised rights
};

class ORV_PLATFORM_API System {
public:
    /// The system directory, such as "C:\\Windows\\system32"; on POSIX "/var/lib/orv/Windows/system32".
    static std::string getSystemDirectory();
    /// Puts another in its place; an empty text restores the default.
    static void setSystemDirectory(const std::string& path);

    /// Text in the system's code page, in which its loader takes the names of modules, as UTF-8; on POSIX it is UTF-8.
    static std::string fromCodePage(const std::string& text);

    /// Copies a file as the system does, overwriting the target. @return false on failure (ErrorInfo::getLastError)
    static bool copyFile(const std::string& from, const std::string& to);

    /// True when the operating system is of that version or later. POSIX systems are later than any.
    static bool isVersionOrLater(unsigned major, unsigned minor, unsigned servicePack);

    /// Starts a program with raised rights and does not wait for it: "runas" on Windows; on POSIX directly for root and
    /// through pkexec for others. A file that the kernel will not execute is given to /bin/sh. On Windows a program under
    /// a path of more than 247 characters is started by its short name, and not at all where the volume keeps none.
    /// @return false when it cannot be started (ErrorInfo::getLastError)
    static bool startElevated(const ProgramStart& start);
    /// Starts a program with the rights of this one. @return false only when the system gives no handle at all
    static bool startPlain(const ProgramStart& start);
    /// Puts a function in the place of both starts, for tests and demonstrations; an empty one restores them. Its
    /// result is theirs.
    static void setProgramStarter(const Function<bool(const ProgramStart&)>& starter);
};

}  // namespace Public::Base
