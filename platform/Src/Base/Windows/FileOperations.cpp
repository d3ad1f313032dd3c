// What can be done to files and directories by path.
#include <vector>

#include "Base/Windows/NativePath.h"
#include "Base/Windows/PathNames.h"
#include "Base/Windows/RemoveName.h"
#include "Base/Windows/Replacement.h"
#include "Public/Base/File.h"

namespace Public::Base {

namespace {

/// What a copy or a new content takes over from a file.
constexpr DWORD kKeptAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

bool copyContent(HANDLE from, Replacement& to) {
    std::string buffer(1 << 18, '\0');
    for (;;) {
        DWORD got = 0;
        if (!::ReadFile(from, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr))
            return failWithLastError();
        if (got == 0) return true;
        if (!to.write(buffer.data(), got)) return false;
    }
}

/// Makes one directory. @return the system's number of the failure, 0 when it is there now
DWORD makeOne(const std::wstring& native) {
    if (::CreateDirectoryW(native.c_str(), nullptr)) return 0;
    const DWORD refused = ::GetLastError();
    const DWORD attributes = attributesOf(native);
    const bool seen = attributes != INVALID_FILE_ATTRIBUTES;
    if (seen && (attributes & FILE_ATTRIBUTE_DIRECTORY)) return 0;
    return seen || refused == ERROR_ALREADY_EXISTS ? ERROR_DIRECTORY : refused;
}

}  // namespace

bool File::access(const std::string& path, AccessMode) {
    std::wstring native;
    return toNativePath(path, native) && (attributesOf(native) != INVALID_FILE_ATTRIBUTES || failWithLastError());
}

bool File::isAbsent(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return true;
    BY_HANDLE_FILE_INFORMATION status{};
    if (queryStatus(native, status)) return false;
    const DWORD reason = ::GetLastError();
    failWith(reason);
    return meansAbsent(reason);
}

uint64_t File::getLength(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return 0;
    BY_HANDLE_FILE_INFORMATION status{};
    if (!queryStatus(native, status)) {
        failWithLastError();
        return 0;
    }
    const bool isDirectory = status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
    return isDirectory ? 0 : joined(status.nFileSizeHigh, status.nFileSizeLow);
}

bool File::cut(const std::string& path, uint64_t length) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    BY_HANDLE_FILE_INFORMATION status{};
    if (!queryStatus(native, status)) return failWithLastError();
    if (joined(status.nFileSizeHigh, status.nFileSizeLow) <= length) return true;
    const OwnedHandle file = openShared(native, GENERIC_WRITE);
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(length);
    return (file.isOpen() && ::SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(file.get())) ||
           failWithLastError();
}

bool File::remove(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    if (removeName(native)) return true;
    const DWORD refused = ::GetLastError();
    // Whether a file can be removed is the directory's matter; that it may not be written does not protect it.
    const DWORD attributes =
        refused == ERROR_ACCESS_DENIED ? ::GetFileAttributesW(native.c_str()) : INVALID_FILE_ATTRIBUTES;
    const bool isProtected = attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY) &&
                             (attributes & FILE_ATTRIBUTE_READONLY);
    if (!isProtected || !::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL)) return failWith(refused);
    if (removeName(native)) return true;
    const DWORD again = ::GetLastError();
    ::SetFileAttributesW(native.c_str(), attributes);
    return failWith(again);
}

bool File::copy(const std::string& from, const std::string& to) {
    std::wstring source;
    std::wstring target;
    if (!toNativePath(from, source) || !toNativePath(to, target)) return false;
    const OwnedHandle input = openShared(source, GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!input.isOpen()) return failWithLastError();
    BY_HANDLE_FILE_INFORMATION status{};
    if (::GetFileType(input.get()) != FILE_TYPE_DISK) return failWith(ERROR_INVALID_PARAMETER);
    if (!::GetFileInformationByHandle(input.get(), &status)) return failWithLastError();
    if (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return failWith(ERROR_ACCESS_DENIED);
    Replacement output;
    if (!output.open(target)) return false;
    if (output.replaces() && isSameFile(output.replaced(), status)) return failWith(ERROR_FILE_EXISTS);
    output.setAttributes(status.dwFileAttributes & kKeptAttributes);
    return copyContent(input.get(), output) && output.commit();
}

bool File::save(const std::string& path, const SharedBuffer& content) {
    std::wstring target;
    if (!toNativePath(path, target)) return false;
    Replacement output;
    if (!output.open(target)) return false;
    if (output.replaces()) {
        const DWORD attributes = output.replaced().dwFileAttributes;
        // One that may not be written is not replaced either.
        if (attributes & FILE_ATTRIBUTE_READONLY) return failWith(ERROR_ACCESS_DENIED);
        output.setAttributes(attributes & kKeptAttributes);
    }
    return output.write(content.buf(), content.size()) && output.sync() && output.commit();
}

bool File::makeDirectory(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return false;
    // Mostly all but the last is there, or all of it.
    const DWORD refused = makeOne(native);
    if (refused != ERROR_PATH_NOT_FOUND) return refused == 0 || failWith(refused);
    const size_t root = rootLength(native);
    for (size_t at = native.find(L'\\', root);; at = native.find(L'\\', at + 1)) {
        const std::wstring part = native.substr(0, at);
        if (const DWORD stopped = makeOne(part)) return failWith(stopped);
        if (at == std::wstring::npos) return true;
    }
}

}  // namespace Public::Base
