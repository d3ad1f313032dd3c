// Removing a directory with all that it holds.
#include <string>
#include <vector>

#include "Base/Windows/EntryStream.h"
#include "Base/Windows/HeldFile.h"
#include "Base/Windows/NativePath.h"
#include "Base/Windows/PathNames.h"
#include "Public/Base/File.h"

namespace Public::Base {

namespace {

struct Entry {
    std::wstring name;
    DWORD attributes = 0;
    bool isDirectory = false;
};

bool removeEmptyDirectory(const std::wstring& path) {
    return persist([&] { return ::RemoveDirectoryW(path.c_str()) != 0; });
}

/// A file, or a link to whatever it may be; that it may not be written does not protect it.
bool removeEntry(const std::wstring& path, DWORD attributes) {
    if (attributes & FILE_ATTRIBUTE_READONLY) ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    const bool isDirectory = attributes & FILE_ATTRIBUTE_DIRECTORY;
    if (isDirectory ? removeEmptyDirectory(path) : deleteFile(path)) return true;
    const DWORD refused = ::GetLastError();
    if (attributes & FILE_ATTRIBUTE_READONLY) ::SetFileAttributesW(path.c_str(), attributes);
    return failWith(refused);
}

/// Goes down a tree and up again. Each directory on the way is held open so that nobody can put a link in its place
/// meanwhile and lead the walk astray.
class TreeRemoval {
public:
    /// @return true when the directory and all that it holds is gone
    bool remove(const std::wstring& top, DWORD attributes) {
        mPath = top;
        if (!enter(attributes)) return false;
        for (;;) {
            Level& level = mLevels.back();
            if (!level.left.empty()) {
                takeNext();
            } else if (!leave()) {
                return mLastWhole;
            }
        }
    }

private:
    struct Level {
        OwnedHandle held;
        DWORD attributes = 0;
        size_t parentLength = 0;  // of the path without this directory
        std::vector<Entry> left;  // still to be removed
        bool whole = true;        // nothing had to stay so far
    };

    /// Notes what the directory at mPath holds.
    bool enter(DWORD attributes, size_t parentLength = 0) {
        Level level;
        level.attributes = attributes;
        level.parentLength = parentLength;
        level.held = OwnedHandle(::CreateFileW(mPath.c_str(), FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        BY_HANDLE_FILE_INFORMATION status{};
        if (!level.held.isOpen() || !::GetFileInformationByHandle(level.held.get(), &status))
            return failWithLastError();
        if ((status.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) && !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
            return failWith(ERROR_BUSY);  // someone has put it there since it was listed
        EntryStream entries(mPath);
        while (const WIN32_FIND_DATAW* entry = entries.next())
            level.left.push_back({entry->cFileName, entry->dwFileAttributes, isDirectory(*entry)});
        level.whole = !entries.failed();
        mLevels.push_back(std::move(level));
        return true;
    }

    /// Removes one entry, or goes into it.
    void takeNext() {
        const Entry entry = std::move(mLevels.back().left.back());
        mLevels.back().left.pop_back();
        const size_t parentLength = mPath.size();
        if (!mPath.ends_with(L'\\')) mPath += L'\\';
        mPath += entry.name;
        const bool entered = entry.isDirectory && enter(entry.attributes, parentLength);
        if (entered) return;
        if (entry.isDirectory || !removeEntry(mPath, entry.attributes)) mLevels.back().whole = false;
        mPath.resize(parentLength);
    }

    /// Removes the directory that was emptied and goes up. @return false when it was the last
    bool leave() {
        Level done = std::move(mLevels.back());
        mLevels.pop_back();
        done.held.close();
        mLastWhole = done.whole && removeEntry(mPath, done.attributes | FILE_ATTRIBUTE_DIRECTORY);
        if (mLevels.empty()) return false;
        if (!mLastWhole) mLevels.back().whole = false;
        mPath.resize(done.parentLength);
        return true;
    }

    std::wstring mPath;
    std::vector<Level> mLevels;
    bool mLastWhole = true;
};

/// A directory under one of these names is the parent of what the caller means, or its own; a drive alone stands for
/// its current directory.
bool endsInPoints(const std::string& path) {
    const size_t end = path.find_last_not_of("\\/") + 1;
    const std::string trimmed = path.substr(0, end);
    const std::string last = trimmed.substr(trimmed.find_last_of("\\/:") + 1);
    return last == "." || last == ".." || trimmed.ends_with(':');
}

}  // namespace

bool File::removeDirectory(const std::string& path) {
    std::wstring native;
    if (endsInPoints(path)) return failWith(ERROR_INVALID_NAME);
    if (!toNativePath(path, native)) return false;
    liftLimit(native);
    const size_t root = rootLength(native);
    while (native.size() > root && native.back() == L'\\') native.pop_back();
    if (native.size() <= root) return failWith(ERROR_BUSY);
    if (::GetFileAttributesW(native.c_str()) == INVALID_FILE_ATTRIBUTES) return failWithLastError();
    // Only a search tells what kind of link it may be.
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW(native.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return failWithLastError();
    ::FindClose(search);
    if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return failWith(ERROR_DIRECTORY);
    return isDirectory(found) ? TreeRemoval().remove(native, found.dwFileAttributes)
                              : removeEntry(native, found.dwFileAttributes);
}

}  // namespace Public::Base
