#include "Public/Base/FileEntry.h"

#include <algorithm>

#include "Base/Windows/HeldFile.h"
#include "Base/Windows/LinkTarget.h"
#include "Base/Windows/NativePath.h"
#include "Public/Base/StringEx.h"

namespace Public::Base {

namespace {

/// The attributes that people and programs set; the others tell how the system keeps the file.
constexpr DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                            FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

FileEntry::Kind kindOf(HANDLE file, const BY_HANDLE_FILE_INFORMATION& told) {
    if (::GetFileType(file) != FILE_TYPE_DISK) return FileEntry::Kind::Other;
    if ((told.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && leadsElsewhere(file))
        return FileEntry::Kind::Link;
    return (told.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileEntry::Kind::Directory : FileEntry::Kind::File;
}

}  // namespace

FileEntry FileEntry::at(const std::string& path) {
    FileEntry entry;
    std::wstring native;
    if (!toNativePath(path, native)) return entry;
    const OwnedHandle file = openShared(native, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file.isOpen()) {
        const DWORD reason = ::GetLastError();
        failWith(reason);
        if (meansAbsent(reason)) entry.kind = Kind::Absent;
        return entry;
    }
    BY_HANDLE_FILE_INFORMATION told{};
    if (!::GetFileInformationByHandle(file.get(), &told)) {
        if (::GetFileType(file.get()) != FILE_TYPE_DISK) entry.kind = Kind::Other;
        failWithLastError();
        return entry;
    }
    entry.kind = kindOf(file.get(), told);
    entry.permissions = told.dwFileAttributes & kSettable;
    const FILETIME& time = told.ftLastWriteTime;
    if (entry.kind == Kind::File)
        entry.modified = static_cast<int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime));
    return entry;
}

bool FileEntry::setPermissions(const std::string& path, unsigned permissions) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    const DWORD wanted = permissions & kSettable;
    return ::SetFileAttributesW(native.c_str(), wanted != 0 ? wanted : FILE_ATTRIBUTE_NORMAL) || failWithLastError();
}

bool FileEntry::setModified(const std::string& path, int64_t modified) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    const OwnedHandle file = openShared(native, FILE_WRITE_ATTRIBUTES);
    if (!file.isOpen()) return failWithLastError();
    const auto ticks = static_cast<uint64_t>(modified);
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    return ::SetFileTime(file.get(), nullptr, nullptr, &time) || failWithLastError();
}

bool FileEntry::readLink(const std::string& path, std::string& target) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    const OwnedHandle link = openShared(native, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!link.isOpen()) return failWithLastError();
    std::wstring found;
    if (!linkTarget(link.get(), found)) return false;
    target = fromNative(found);
    return true;
}

bool FileEntry::makeLink(const std::string& target, const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    std::wstring wanted = StringEx::string2wstring(target);
    std::replace(wanted.begin(), wanted.end(), L'/', L'\\');
    // Whether it is one to a directory must be said, and is told by what it leads to.
    const bool isAbsolute = wanted.starts_with(L'\\') || wanted.find(L':') != std::wstring::npos;
    const size_t folderLength = isAbsolute ? 0 : native.rfind(L'\\') + 1;
    const DWORD leadsTo = ::GetFileAttributesW((native.substr(0, folderLength) + wanted).c_str());
    DWORD flags = SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
    if (leadsTo != INVALID_FILE_ATTRIBUTES && (leadsTo & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        flags |= SYMBOLIC_LINK_FLAG_DIRECTORY;
    }
    if (!::CreateSymbolicLinkW(native.c_str(), wanted.c_str(), flags)) return failWithLastError();
    // Not every system that says so has made one.
    return at(path).kind == Kind::Link || failWith(ERROR_NOT_SUPPORTED);
}

bool FileEntry::rename(const std::string& from, const std::string& to) {
    std::wstring source;
    std::wstring target;
    if (!toNativePath(from, source) || !toNativePath(to, target)) return false;
    constexpr DWORD kHow = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return persist([&] { return ::MoveFileExW(source.c_str(), target.c_str(), kHow) != 0; }) || failWithLastError();
}

bool FileEntry::removeEmptyDirectory(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    const bool removed = persist([&] { return ::RemoveDirectoryW(native.c_str()) != 0; });
    return removed || ::GetLastError() == ERROR_DIR_NOT_EMPTY || failWithLastError();
}

bool FileEntry::isInUse(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    const OwnedHandle file = openShared(native, GENERIC_WRITE);
    if (file.isOpen()) return false;
    const DWORD reason = ::GetLastError();
    return reason == ERROR_SHARING_VIOLATION || reason == ERROR_LOCK_VIOLATION || reason == ERROR_USER_MAPPED_FILE;
}

}  // namespace Public::Base
