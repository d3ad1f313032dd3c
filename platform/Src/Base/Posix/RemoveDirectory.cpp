// Removing a directory with all that it holds.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/EntryStream.h"
#include "Base/Posix/NativePath.h"
#include "Public/Base/File.h"

namespace Public::Base {

namespace {

constexpr int kWalk = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

Descriptor openBelow(const Descriptor& directory, const char* name) {
    int fd = -1;
    do {
        fd = ::openat(directory.get(), name, kWalk);
    } while (fd < 0 && errno == EINTR);
    return Descriptor(fd);
}

/// Goes down a tree and up again with one directory open at a time, so that no depth is too great, and never by a path,
/// so that nobody can lead it astray by putting a link in a directory's place meanwhile.
class TreeRemoval {
public:
    /// @return true when all that the directory holds is gone
    bool clear(Descriptor top) {
        mCurrent = std::move(top);
        if (!enter({})) return false;
        for (;;) {
            if (!mPath.back().left.empty()) {
                takeNext();
            } else if (mPath.size() == 1) {
                return mPath.back().whole;
            } else if (!leave()) {
                return false;
            }
        }
    }

private:
    struct Level {
        std::string name;  // in the directory above
        dev_t device = 0;
        ino_t inode = 0;
        std::vector<std::string> left;  // names still to be removed
        bool whole = true;              // nothing had to stay so far
    };

    /// Notes what the current directory holds.
    bool enter(const std::string& name) {
        struct stat status {};
        if (::fstat(mCurrent.get(), &status) != 0) return failWithErrno();
        Level level{name, status.st_dev, status.st_ino, {}, true};
        EntryStream entries(openBelow(mCurrent, "."));
        while (const dirent* entry = entries.next()) level.left.emplace_back(entry->d_name);
        level.whole = !entries.failed();
        mPath.push_back(std::move(level));
        return true;
    }

    /// Removes one entry, or goes into it.
    void takeNext() {
        const std::string name = std::move(mPath.back().left.back());
        mPath.back().left.pop_back();
        if (::unlinkat(mCurrent.get(), name.c_str(), 0) == 0) return;
        const int refused = errno;
        // That is how systems tell a directory; a file that is protected may answer the same.
        const bool mayBeDirectory = refused == EISDIR || refused == EPERM;
        Descriptor child = mayBeDirectory ? openBelow(mCurrent, name.c_str()) : Descriptor(-1);
        if (!child.isOpen()) {
            const bool isDirectory = refused == EISDIR;
            mPath.back().whole = isDirectory ? failWithErrno() : failWith(refused);
            return;
        }
        std::swap(mCurrent, child);
        if (enter(name)) return;
        std::swap(mCurrent, child);
        mPath.back().whole = false;
    }

    /// Goes up and removes the directory that was left.
    bool leave() {
        const Level done = std::move(mPath.back());
        mPath.pop_back();
        Level& above = mPath.back();
        Descriptor parent = openBelow(mCurrent, "..");
        struct stat status {};
        if (!parent.isOpen() || ::fstat(parent.get(), &status) != 0) return failWithErrno();
        // Someone has moved it meanwhile; what lies around it now is not ours to remove.
        if (status.st_dev != above.device || status.st_ino != above.inode) return failWith(EBUSY);
        mCurrent = std::move(parent);
        if (!done.whole) {
            above.whole = false;
        } else if (::unlinkat(mCurrent.get(), done.name.c_str(), AT_REMOVEDIR) != 0) {
            above.whole = failWithErrno();
        }
        return true;
    }

    Descriptor mCurrent{-1};
    std::vector<Level> mPath;
};

/// A directory under one of these names is the parent of what the caller means, or its own.
bool endsInPoints(const std::string& native) {
    const std::string last = native.substr(native.rfind('/') + 1);
    return last == "." || last == "..";
}

bool isRoot(const struct stat& status) {
    struct stat root {};
    return ::stat("/", &root) == 0 && root.st_dev == status.st_dev && root.st_ino == status.st_ino;
}

}  // namespace

bool File::removeDirectory(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    while (native.size() > 1 && native.back() == '/') native.pop_back();
    if (endsInPoints(native)) return failWith(EINVAL);
    struct stat status {};
    if (::lstat(native.c_str(), &status) != 0) return failWithErrno();
    if (S_ISLNK(status.st_mode)) return ::unlink(native.c_str()) == 0 || failWithErrno();
    if (!S_ISDIR(status.st_mode)) return failWith(ENOTDIR);
    if (isRoot(status)) return failWith(EBUSY);
    Descriptor top(openRetrying(native, kWalk));
    if (!top.isOpen()) return failWithErrno();
    return TreeRemoval().clear(std::move(top)) && (::rmdir(native.c_str()) == 0 || failWithErrno());
}

}  // namespace Public::Base
