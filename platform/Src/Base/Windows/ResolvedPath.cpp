// Paths made absolute, with links followed.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "Base/Windows/NativePath.h"
#include "Public/Base/FileEntry.h"

namespace Public::Base {

namespace {

/// Where a file lies on its volume, beginning with a separator; empty on failure.
std::wstring placeOnVolume(const OwnedHandle& opened) {
    constexpr size_t kLongest = 32768;
    std::vector<unsigned char> buffer(sizeof(FILE_NAME_INFO) + kLongest * sizeof(wchar_t));
    if (!::GetFileInformationByHandleEx(opened.get(), FileNameInfo, buffer.data(), static_cast<DWORD>(buffer.size()))) {
        return {};
    }
    FILE_NAME_INFO found{};
    std::memcpy(&found, buffer.data(), sizeof found);
    std::wstring name(found.FileNameLength / sizeof(wchar_t), L'\0');
    std::memcpy(name.data(), buffer.data() + offsetof(FILE_NAME_INFO, FileName), found.FileNameLength);
    return name;
}

/// The drive under which a path was given, when what is open lies on its volume; else empty.
std::wstring driveOf(const std::wstring& full, const OwnedHandle& opened) {
    const size_t begin = full.starts_with(L"\\\\?\\") ? 4 : 0;
    if (full.size() < begin + 2 || full[begin + 1] != L':') return {};
    const std::wstring drive = full.substr(begin, 2);
    BY_HANDLE_FILE_INFORMATION root{}, here{};
    const bool isKnown = queryStatus(drive + L"\\", root) && ::GetFileInformationByHandle(opened.get(), &here);
    return isKnown && root.dwVolumeSerialNumber == here.dwVolumeSerialNumber ? drive : std::wstring();
}

/// Where the system has what was opened under this path; empty on failure.
std::wstring placeOf(const std::wstring& full, const OwnedHandle& opened) {
    std::wstring place(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetFinalPathNameByHandleW(opened.get(), place.data(), static_cast<DWORD>(place.size()), 0);
        if (length == 0) break;
        const bool fits = length < place.size();
        place.resize(length);
        if (fits) return place;
    }
    // Some systems tell long ones in this way alone.
    const DWORD refused = ::GetLastError();
    const std::wstring drive = driveOf(full, opened);
    const std::wstring name = drive.empty() ? drive : placeOnVolume(opened);
    if (name.empty()) failWith(refused);
    return name.empty() ? name : drive + name;
}

std::string plainText(std::wstring path) {
    if (path.starts_with(L"\\\\?\\UNC\\")) {
        path.replace(0, 7, L"\\");
    } else if (path.starts_with(L"\\\\?\\")) {
        path.erase(0, 4);
    }
    std::replace(path.begin(), path.end(), L'\\', L'/');
    while (path.size() > 1 && path.ends_with(L'/') && !path.ends_with(L":/")) path.pop_back();
    return fromNative(path);
}

/// Takes the last name off, and puts it in front of the rest. @return false at a root
bool climb(std::wstring& path, std::wstring& rest) {
    const size_t at = path.rfind(L'\\');
    if (at == std::wstring::npos || at + 1 == path.size()) return false;
    const bool isBelowDrive = at > 0 && path[at - 1] == L':';
    rest.insert(0, path.substr(isBelowDrive ? at + 1 : at));
    path.resize(isBelowDrive ? at + 1 : at);
    return true;
}

}  // namespace

std::string FileEntry::resolved(const std::string& path) {
    std::wstring full;
    if (!toNativePath(path, full)) return {};
    std::wstring rest;
    for (;;) {
        const OwnedHandle opened = openShared(full, 0);
        const DWORD refused = opened.isOpen() ? 0 : ::GetLastError();
        if (opened.isOpen()) full = placeOf(full, opened);
        if (full.empty()) return {};
        if (refused != 0 && !meansAbsent(refused)) return failWith(refused), std::string();
        if (refused == 0 || !climb(full, rest)) return plainText(full + rest);
    }
}

}  // namespace Public::Base
