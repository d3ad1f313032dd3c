#include "Base/Windows/NativePath.h"

#include <algorithm>

#include "Base/Windows/HeldFile.h"
#include "Base/Windows/PathNames.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/StringEx.h"

namespace Public::Base {

namespace {

/// A directory may be no longer without the other form; files have twelve more.
constexpr size_t kLongestPlain = 247;
/// Counted by the system without what is put before a path to lift the limit.
constexpr size_t kLongest = 32750;

bool toWide(const std::string& text, std::wstring& wide) {
    const int length = static_cast<int>(std::min<size_t>(text.size(), INT_MAX));
    const int needed = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    wide.resize(static_cast<size_t>(std::max(needed, 0)));
    return needed > 0 && ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), needed);
}

/// From the root, without "." and "..", which the form without a limit would take for names.
bool makeFull(std::wstring& path) {
    const DWORD needed = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = needed == 0 ? 0 : ::GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) return failWithLastError();
    full.resize(length);
    path = std::move(full);
    return true;
}

}  // namespace

bool failWith(DWORD nativeError) {
    ErrorInfo::setLastSystemError(static_cast<int>(nativeError));
    return false;
}

bool failWithLastError() { return failWith(::GetLastError()); }

bool toNativePath(const std::string& path, std::wstring& native) {
    if (path.empty() || path.find('\0') != std::string::npos) return failWith(ERROR_INVALID_NAME);
    if (!toWide(path, native)) return failWith(ERROR_NO_UNICODE_TRANSLATION);
    std::replace(native.begin(), native.end(), L'/', L'\\');
    if (native.size() > kLongest) return failWith(ERROR_FILENAME_EXCED_RANGE);
    if (const DWORD refused = refusalOfNames(native)) return failWith(refused);
    if (native.starts_with(kUnlimited)) return true;
    if (!makeFull(native)) return false;
    if (native.size() > kLongest) return failWith(ERROR_FILENAME_EXCED_RANGE);
    if (native.size() > kLongestPlain) liftLimit(native);
    return true;
}

void liftLimit(std::wstring& native) {
    if (native.starts_with(kUnlimited)) return;
    if (native.starts_with(L"\\\\")) {
        native.replace(0, 1, L"\\\\?\\UNC");
    } else {
        native.insert(0, kUnlimited);
    }
}

std::string fromNative(const std::wstring& native) { return StringEx::wstring2string(native); }

bool meansAbsent(DWORD nativeError) {
    // A name that the system cannot have is one that nothing bears.
    return nativeError == ERROR_FILE_NOT_FOUND || nativeError == ERROR_PATH_NOT_FOUND ||
           nativeError == ERROR_INVALID_NAME || nativeError == ERROR_BAD_PATHNAME || nativeError == ERROR_DIRECTORY ||
           nativeError == ERROR_INVALID_DRIVE;
}

OwnedHandle openShared(const std::wstring& native, DWORD access, DWORD disposition, DWORD flags) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    OwnedHandle opened;
    persist([&] {
        opened = OwnedHandle(::CreateFileW(native.c_str(), access, kShareAll, nullptr, disposition,
                                           FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
        return opened.isOpen();
    });
    return opened;
}

bool queryStatus(const std::wstring& native, BY_HANDLE_FILE_INFORMATION& status) {
    const OwnedHandle opened = openShared(native, FILE_READ_ATTRIBUTES);
    return opened.isOpen() && ::GetFileInformationByHandle(opened.get(), &status);
}

DWORD attributesOf(const std::wstring& native) {
    BY_HANDLE_FILE_INFORMATION status{};
    if (queryStatus(native, status)) return status.dwFileAttributes;
    const DWORD refused = ::GetLastError();
    const bool mayBeThere = refused == ERROR_SHARING_VIOLATION || refused == ERROR_ACCESS_DENIED;
    const DWORD attributes = mayBeThere ? ::GetFileAttributesW(native.c_str()) : INVALID_FILE_ATTRIBUTES;
    if (attributes == INVALID_FILE_ATTRIBUTES) ::SetLastError(refused);
    return attributes;
}

bool isSameFile(const BY_HANDLE_FILE_INFORMATION& one, const BY_HANDLE_FILE_INFORMATION& other) {
    return one.dwVolumeSerialNumber == other.dwVolumeSerialNumber && one.nFileIndexHigh == other.nFileIndexHigh &&
           one.nFileIndexLow == other.nFileIndexLow;
}

}  // namespace Public::Base
