// The system's calls that change files, this program's own versions of them.
#include "ImportHook.h"
#include "KillPoint.h"

namespace fs = std::filesystem;
using killpoints::halvesWrites;
using killpoints::isArmed;
using killpoints::Point;
using killpoints::unsynced;
using support::ImportHook;

// Where this program keeps the addresses of what it imports.
extern "C" {
extern decltype(&::CreateFileW) __imp_CreateFileW;
extern decltype(&::WriteFile) __imp_WriteFile;
extern decltype(&::SetEndOfFile) __imp_SetEndOfFile;
extern decltype(&::MoveFileExW) __imp_MoveFileExW;
extern decltype(&::ReplaceFileW) __imp_ReplaceFileW;
extern decltype(&::DeleteFileW) __imp_DeleteFileW;
extern decltype(&::CreateDirectoryW) __imp_CreateDirectoryW;
extern decltype(&::RemoveDirectoryW) __imp_RemoveDirectoryW;
extern decltype(&::SetFileAttributesW) __imp_SetFileAttributesW;
extern decltype(&::SetFileTime) __imp_SetFileTime;
extern decltype(&::SetFileInformationByHandle) __imp_SetFileInformationByHandle;
extern decltype(&::FlushFileBuffers) __imp_FlushFileBuffers;
}

void killpoints::killThisProcess() {
    ::TerminateProcess(::GetCurrentProcess(), 0xDEADDEAD);
    for (;;) ::Sleep(INFINITE);
}

namespace {

/// Where the entry lies now, links followed; empty for what is no file.
fs::path pathOf(HANDLE file) {
    wchar_t path[1024];
    const DWORD length = ::GetFinalPathNameByHandleW(file, path, 1024, FILE_NAME_NORMALIZED);
    return length == 0 || length >= 1024 ? fs::path() : fs::path(std::wstring(path + 4, length - 4));
}

extern const ImportHook<decltype(&::CreateFileW)> sCreateFile;

/// One name for each, as the system tells them for open files.
fs::path plainPath(const wchar_t* path) {
    std::wstring whole(32768, L'\0');
    whole.resize(::GetFullPathNameW(path, static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    if (whole.starts_with(L"\\\\?\\")) whole.erase(0, 4);
    const fs::path full = whole;
    const HANDLE parent = sCreateFile.original()(full.parent_path().c_str(), 0, 7, nullptr, OPEN_EXISTING,
                                                 FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (parent == INVALID_HANDLE_VALUE) return full;
    const fs::path found = pathOf(parent);
    ::CloseHandle(parent);
    return found / full.filename();
}

bool isThere(const wchar_t* path) { return ::GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES; }

/// One call that changes something. @param note what is not on the disk once it has been made
template <class Note, class Call>
auto change(Note note, Call call) {
    Point point;
    if (!point.pass().armed()) return call();
    const Unsynced before = unsynced();
    note();
    const auto result = call();
    if (!result) {
        const DWORD reason = ::GetLastError();
        unsynced() = before;
        ::SetLastError(reason);
    }
    return result;
}

HANDLE WINAPI createFile(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                         DWORD disposition, DWORD flags, HANDLE pattern) {
    const auto call = [&] {
        return sCreateFile.original()(path, access, share, security, disposition, flags, pattern);
    };
    if (!isArmed() || disposition == OPEN_EXISTING) return call();
    Point point;
    if (!point.pass().armed()) return call();
    const bool isNew = !isThere(path);
    const HANDLE file = call();
    if (file == INVALID_HANDLE_VALUE) return file;
    const DWORD told = ::GetLastError();
    if (isNew) unsynced().created(plainPath(path));
    if (isNew || disposition != OPEN_ALWAYS) unsynced().spoil(plainPath(path));
    ::SetLastError(told);
    return file;
}
const ImportHook<decltype(&::CreateFileW)> sCreateFile(&__imp_CreateFileW, createFile);

BOOL WINAPI writeFile(HANDLE file, const void* data, DWORD length, DWORD* done, OVERLAPPED* later);
const ImportHook<decltype(&::WriteFile)> sWriteFile(&__imp_WriteFile, writeFile);

BOOL WINAPI writeFile(HANDLE file, const void* data, DWORD length, DWORD* done, OVERLAPPED* later) {
    if (!isArmed() || ::GetFileType(file) != FILE_TYPE_DISK)
        return sWriteFile.original()(file, data, length, done, later);
    Point point;
    if (point.armed()) unsynced().spoil(pathOf(file));
    if (point.isLast() && halvesWrites()) sWriteFile.original()(file, data, length / 2, done, later);
    point.pass();
    return sWriteFile.original()(file, data, length, done, later);
}

BOOL WINAPI setEndOfFile(HANDLE file);
const ImportHook<decltype(&::SetEndOfFile)> sSetEndOfFile(&__imp_SetEndOfFile, setEndOfFile);

BOOL WINAPI setEndOfFile(HANDLE file) {
    return change([&] { unsynced().spoil(pathOf(file)); }, [&] { return sSetEndOfFile.original()(file); });
}

BOOL WINAPI moveFile(const wchar_t* from, const wchar_t* to, DWORD flags);
const ImportHook<decltype(&::MoveFileExW)> sMoveFile(&__imp_MoveFileExW, moveFile);

BOOL WINAPI moveFile(const wchar_t* from, const wchar_t* to, DWORD flags) {
    return change([&] { unsynced().renaming(plainPath(from), plainPath(to)); },
                  [&] { return sMoveFile.original()(from, to, flags); });
}

BOOL WINAPI replaceFile(const wchar_t* replaced, const wchar_t* by, const wchar_t* backup, DWORD flags, void* one,
                        void* other);
const ImportHook<decltype(&::ReplaceFileW)> sReplaceFile(&__imp_ReplaceFileW, replaceFile);

BOOL WINAPI replaceFile(const wchar_t* replaced, const wchar_t* by, const wchar_t* backup, DWORD flags, void* one,
                        void* other) {
    return change([&] { unsynced().renaming(plainPath(by), plainPath(replaced)); },
                  [&] { return sReplaceFile.original()(replaced, by, backup, flags, one, other); });
}

BOOL WINAPI deleteFile(const wchar_t* path);
const ImportHook<decltype(&::DeleteFileW)> sDeleteFile(&__imp_DeleteFileW, deleteFile);

BOOL WINAPI deleteFile(const wchar_t* path) {
    return change([&] { unsynced().removing(plainPath(path)); }, [&] { return sDeleteFile.original()(path); });
}

BOOL WINAPI createDirectory(const wchar_t* path, SECURITY_ATTRIBUTES* security);
const ImportHook<decltype(&::CreateDirectoryW)> sCreateDirectory(&__imp_CreateDirectoryW, createDirectory);

BOOL WINAPI createDirectory(const wchar_t* path, SECURITY_ATTRIBUTES* security) {
    return change([&] { unsynced().created(plainPath(path)); },
                  [&] { return sCreateDirectory.original()(path, security); });
}

BOOL WINAPI removeDirectory(const wchar_t* path);
const ImportHook<decltype(&::RemoveDirectoryW)> sRemoveDirectory(&__imp_RemoveDirectoryW, removeDirectory);

BOOL WINAPI removeDirectory(const wchar_t* path) {
    return change([&] { unsynced().removing(plainPath(path)); }, [&] { return sRemoveDirectory.original()(path); });
}

BOOL WINAPI setAttributes(const wchar_t* path, DWORD attributes);
const ImportHook<decltype(&::SetFileAttributesW)> sSetAttributes(&__imp_SetFileAttributesW, setAttributes);

BOOL WINAPI setAttributes(const wchar_t* path, DWORD attributes) {
    return change([&] { unsynced().spoil(plainPath(path)); },
                  [&] { return sSetAttributes.original()(path, attributes); });
}

BOOL WINAPI setTime(HANDLE file, const FILETIME* made, const FILETIME* read, const FILETIME* written);
const ImportHook<decltype(&::SetFileTime)> sSetTime(&__imp_SetFileTime, setTime);

BOOL WINAPI setTime(HANDLE file, const FILETIME* made, const FILETIME* read, const FILETIME* written) {
    return change([&] { unsynced().spoil(pathOf(file)); },
                  [&] { return sSetTime.original()(file, made, read, written); });
}

BOOL WINAPI setInformation(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* data, DWORD size);
const ImportHook<decltype(&::SetFileInformationByHandle)> sSetInformation(&__imp_SetFileInformationByHandle,
                                                                          setInformation);

/// The renaming that replaces, newer than this compiler's headers.
constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

BOOL WINAPI setInformation(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* data, DWORD size) {
    return change(
        [&] {
            if (kind != kRenameInfoEx && kind != FileRenameInfo) return unsynced().spoil(pathOf(file));
            const auto* rename = static_cast<const FILE_RENAME_INFO*>(data);
            const std::wstring to(rename->FileName, rename->FileNameLength / sizeof(wchar_t));
            unsynced().renaming(pathOf(file), plainPath(to.c_str()));
        },
        [&] { return sSetInformation.original()(file, kind, data, size); });
}

/// The disk that is modelled here needs no time.
BOOL WINAPI flush(HANDLE file);
const ImportHook<decltype(&::FlushFileBuffers)> sFlush(&__imp_FlushFileBuffers, flush);

BOOL WINAPI flush(HANDLE file) {
    Point point;
    if (!point.pass().armed()) return sFlush.original()(file);
    unsynced().synced(pathOf(file));
    return TRUE;
}

}  // namespace
