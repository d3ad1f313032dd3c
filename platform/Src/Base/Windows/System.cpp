#include "Base/NativeSystem.h"
#include "Base/Windows/HeldFile.h"
#include "Base/Windows/NameBeside.h"
#include "Base/Windows/NativePath.h"
#include "Public/Base/StringEx.h"

namespace Public::Base {

std::string nativeSystemDirectory() {
    wchar_t directory[MAX_PATH];
    const UINT length = ::GetSystemDirectoryW(directory, MAX_PATH);
    return length < MAX_PATH ? StringEx::wstring2string({directory, length}) : std::string();
}

bool System::copyFile(const std::string& from, const std::string& to) {
    std::wstring source, target;
    if (!toNativePath(from, source) || !toNativePath(to, target)) return false;
    BY_HANDLE_FILE_INFORMATION one{}, other{};
    if (queryStatus(source, one) && queryStatus(target, other) && isSameFile(one, other))
        return failWith(ERROR_FILE_EXISTS);
    // Beside the target first, for a copy that fails takes away what it was to replace.
    const std::wstring beside = nameBeside(target, L".part");
    if (!persist([&] { return ::CopyFileW(source.c_str(), beside.c_str(), TRUE) != 0; })) return failWithLastError();
    // The system replaces no file that is protected so, not even one that it copied itself.
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    const bool isProtected = attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY) &&
                             (attributes & FILE_ATTRIBUTE_READONLY);
    if (isProtected) ::SetFileAttributesW(target.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    const auto replace = [&] { return ::MoveFileExW(beside.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0; };
    if (persist(replace)) return true;
    const DWORD refused = ::GetLastError();
    if (isProtected) ::SetFileAttributesW(target.c_str(), attributes);
    ::SetFileAttributesW(beside.c_str(), FILE_ATTRIBUTE_NORMAL);
    deleteFile(beside);
    return failWith(refused);
}

bool System::isVersionOrLater(unsigned major, unsigned minor, unsigned servicePack) {
    OSVERSIONINFOEXW wanted{};
    wanted.dwOSVersionInfoSize = sizeof wanted;
    wanted.dwMajorVersion = major;
    wanted.dwMinorVersion = minor;
    wanted.wServicePackMajor = static_cast<WORD>(servicePack);
    DWORDLONG conditions = ::VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
    conditions = ::VerSetConditionMask(conditions, VER_MINORVERSION, VER_GREATER_EQUAL);
    conditions = ::VerSetConditionMask(conditions, VER_SERVICEPACKMAJOR, VER_GREATER_EQUAL);
    return ::VerifyVersionInfoW(&wanted, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR, conditions);
}

}  // namespace Public::Base
