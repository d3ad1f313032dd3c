#include "Base/Windows/PathNames.h"

#include <algorithm>
#include <array>

namespace Public::Base {

namespace {

constexpr size_t kLongestName = 255;
constexpr std::wstring_view kNeverInNames = L"<>:\"|?*";

bool isSameName(std::wstring_view one, std::wstring_view other) {
    return ::CompareStringOrdinal(one.data(), static_cast<int>(one.size()), other.data(),
                                  static_cast<int>(other.size()), TRUE) == CSTR_EQUAL;
}

/// "COM1" to "COM9", "LPT1" to "LPT9"; raised digits count as well.
bool isNumberedDevice(std::wstring_view name) {
    if (name.size() != 4 || !(isSameName(name.substr(0, 3), L"COM") || isSameName(name.substr(0, 3), L"LPT")))
        return false;
    const wchar_t digit = name[3];
    return (digit >= L'1' && digit <= L'9') || digit == 0xB9 || digit == 0xB2 || digit == 0xB3;
}

/// Whatever its suffix is, such a name stands for the device.
bool isDevice(std::wstring_view name) {
    constexpr std::array<std::wstring_view, 6> kDevices = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
    name = name.substr(0, name.find(L'.'));
    while (name.ends_with(L' ')) name.remove_suffix(1);
    return isNumberedDevice(name) || std::any_of(kDevices.begin(), kDevices.end(),
                                                 [name](std::wstring_view each) { return isSameName(name, each); });
}

DWORD refusalOfName(std::wstring_view name, bool atItsWord) {
    if (name.size() > kLongestName) return ERROR_FILENAME_EXCED_RANGE;
    const bool isForbidden = std::any_of(name.begin(), name.end(), [](wchar_t c) {
        return c < L' ' || kNeverInNames.find(c) != std::wstring_view::npos;
    });
    if (isForbidden) return ERROR_INVALID_NAME;
    if (atItsWord || name == L"." || name == L"..") return 0;
    return isDevice(name) || name.ends_with(L'.') || name.ends_with(L' ') ? ERROR_INVALID_NAME : 0;
}

bool beginsWithDrive(std::wstring_view path) {
    return path.size() >= 2 && path[1] == L':' &&
           ((path[0] >= L'A' && path[0] <= L'Z') || (path[0] >= L'a' && path[0] <= L'z'));
}

constexpr std::wstring_view kServer = L"UNC\\";  // what stands for the two backslashes in the unlimited form

}  // namespace

size_t rootLength(std::wstring_view full) {
    size_t at = full.starts_with(kUnlimited) ? kUnlimited.size() : 0;
    const bool isUnlimitedServer = at != 0 && isSameName(full.substr(at, kServer.size()), kServer);
    const bool isServer = isUnlimitedServer || (at == 0 && full.starts_with(L"\\\\"));
    if (isServer) at = isUnlimitedServer ? at + kServer.size() : 2;
    for (int names = isServer ? 2 : 1; names > 0; --names) {
        at = full.find(L'\\', at);
        if (at == std::wstring_view::npos) return full.size();
        ++at;
    }
    return at;
}

DWORD refusalOfNames(std::wstring_view path) {
    if (path.starts_with(L"\\\\.\\")) return ERROR_INVALID_NAME;
    const bool atItsWord = path.starts_with(kUnlimited);
    if (atItsWord) {
        path.remove_prefix(kUnlimited.size());
        const bool isFile = beginsWithDrive(path) || isSameName(path.substr(0, kServer.size()), kServer) ||
                            isSameName(path.substr(0, 7), L"Volume{");
        if (!isFile) return ERROR_INVALID_NAME;
    }
    if (beginsWithDrive(path)) path.remove_prefix(2);
    while (!path.empty()) {
        const std::wstring_view name = path.substr(0, path.find(L'\\'));
        if (const DWORD refused = refusalOfName(name, atItsWord)) return refused;
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    return 0;
}

}  // namespace Public::Base
