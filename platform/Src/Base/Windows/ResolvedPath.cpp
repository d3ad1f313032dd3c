// Paths made absolute, with links followed.
#include <algorithm>
#include <iterator>

#include "Base/Windows/NativePath.h"
#include "Public/Base/FileEntry.h"

namespace Public::Base {

namespace {

constexpr wchar_t kLongForm[] = L"\\\\?\\";
constexpr wchar_t kLongShare[] = L"\\\\?\\UNC\\";

std::wstring withoutLongForm(const std::wstring& path) {
    if (path.starts_with(kLongShare)) return L"\\\\" + path.substr(std::size(kLongShare) - 1);
    return path.starts_with(kLongForm) ? path.substr(std::size(kLongForm) - 1) : path;
}

std::wstring absolute(const std::wstring& native) {
    if (native.starts_with(kLongForm)) return native;
    const DWORD needed = ::GetFullPathNameW(native.c_str(), 0, nullptr, nullptr);
    std::wstring whole(needed, L'\0');
    const DWORD length = ::GetFullPathNameW(native.c_str(), needed, whole.data(), nullptr);
    whole.resize(length < needed ? length : 0);
    return whole;
}

/// Of something that is there, its path without links and short names. @return false when it is not there or cannot be
/// looked at, by GetLastError
bool finalPath(const std::wstring& path, std::wstring& found) {
    const OwnedHandle entry = openShared(path, 0);
    if (!entry.isOpen()) return false;
    const DWORD needed = ::GetFinalPathNameByHandleW(entry.get(), nullptr, 0, FILE_NAME_NORMALIZED);
    found.assign(needed, L'\0');
    const DWORD length = ::GetFinalPathNameByHandleW(entry.get(), found.data(), needed, FILE_NAME_NORMALIZED);
    found.resize(length < needed ? length : 0);
    if (found.empty()) found = path;  // of a volume without a letter
    return true;
}

bool meansAbsent(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME ||
           error == ERROR_DIRECTORY;
}

}  // namespace

std::string FileEntry::resolved(const std::string& path) {
    std::wstring native;
    if (!toNativePath(path, native)) return {};
    std::wstring there = absolute(native);
    std::wstring rest;
    std::wstring found;
    while (!there.empty() && !finalPath(there, found)) {
        if (const DWORD reason = ::GetLastError(); !meansAbsent(reason)) {
            failWith(reason);
            return {};
        }
        const size_t separator = there.find_last_of(L"\\/", there.size() - 2);
        if (separator == std::wstring::npos || there.ends_with(L':')) {
            found = there;  // nothing is there, not even the volume
            break;
        }
        rest = there.substr(separator) + rest;
        there.resize(separator);
        if (there.ends_with(L':')) there += L'\\', rest.erase(0, 1);
    }
    std::wstring whole = withoutLongForm(found);
    if (!rest.empty() && !rest.starts_with(L'\\') && !whole.ends_with(L'\\')) whole += L'\\';
    whole += rest;
    std::replace(whole.begin(), whole.end(), L'\\', L'/');
    while (whole.size() > 1 && whole.ends_with(L'/') && !whole.ends_with(L":/")) whole.pop_back();
    return fromNative(whole);
}

}  // namespace Public::Base
