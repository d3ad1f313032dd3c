#include "Public/Base/Durability.h"

#include <algorithm>

#include "Base/Windows/NativePath.h"

namespace Public::Base {

namespace {

/// Only what may be written can be flushed, so a read-only file is made writable until it is open.
OwnedHandle openToFlush(const std::wstring& native) {
    OwnedHandle opened = openShared(native, GENERIC_WRITE);
    if (opened.isOpen() || ::GetLastError() != ERROR_ACCESS_DENIED) return opened;
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    const bool isProtected = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (!isProtected ||
        !::SetFileAttributesW(native.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY))) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return opened;
    }
    opened = openShared(native, GENERIC_WRITE);
    const DWORD told = ::GetLastError();
    ::SetFileAttributesW(native.c_str(), attributes);
    ::SetLastError(told);
    return opened;
}

}  // namespace

bool Durability::sync(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    const OwnedHandle opened = openToFlush(native);
    if (!opened.isOpen()) return failWithLastError();
    if (::FlushFileBuffers(opened.get())) return true;
    // Some file systems have nothing to bring to a disk and say that they do not know the call.
    const DWORD refused = ::GetLastError();
    return refused == ERROR_INVALID_FUNCTION || refused == ERROR_NOT_SUPPORTED || failWith(refused);
}

bool Durability::syncAll(const std::vector<std::string>& paths) {
    return std::all_of(paths.begin(), paths.end(), sync);
}

}  // namespace Public::Base
