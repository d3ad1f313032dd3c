// Entries of directories: what is made, looked at, renamed, removed and listed.
#include "PathText.h"
#include "ReplacedImport.h"

ORV_IMPORT(CopyFileW)
ORV_IMPORT(MoveFileExW)
ORV_IMPORT(DeleteFileW)
ORV_IMPORT(RemoveDirectoryW)
ORV_IMPORT(CreateDirectoryW)
ORV_IMPORT(GetFileAttributesW)
ORV_IMPORT(SetFileAttributesW)
ORV_IMPORT(FindFirstFileExW)
ORV_IMPORT(FindNextFileW)
ORV_IMPORT(FindClose)

namespace faults::replaced {

namespace {

/// Where it runs out of room the system removes what it has made of the target by then, and what was there is lost.
BOOL WINAPI CopyFileW(LPCWSTR from, LPCWSTR to, BOOL keepsExisting) {
    const Verdict verdict = judgePath(Call::Create, "CopyFileW", pathText(to).c_str());
    if (verdict.error == ERROR_DISK_FULL && !keepsExisting) real::DeleteFileW(to);
    return passes(verdict) && real::CopyFileW(from, to, keepsExisting);
}

BOOL WINAPI MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
    return passesAt(Call::Rename, "MoveFileExW", to) && real::MoveFileExW(from, to, flags);
}

BOOL WINAPI DeleteFileW(LPCWSTR path) { return passesAt(Call::Remove, "DeleteFileW", path) && real::DeleteFileW(path); }

BOOL WINAPI RemoveDirectoryW(LPCWSTR path) {
    return passesAt(Call::Remove, "RemoveDirectoryW", path) && real::RemoveDirectoryW(path);
}

BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    return passesAt(Call::MakeDirectory, "CreateDirectoryW", path) && real::CreateDirectoryW(path, security);
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) {
    return passesAt(Call::Look, "GetFileAttributesW", path) ? real::GetFileAttributesW(path) : INVALID_FILE_ATTRIBUTES;
}

BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) {
    return passesAt(Call::ChangeMode, "SetFileAttributesW", path) && real::SetFileAttributesW(path, attributes);
}

HANDLE WINAPI FindFirstFileExW(LPCWSTR pattern, FINDEX_INFO_LEVELS level, LPVOID found, FINDEX_SEARCH_OPS operation,
                               LPVOID filter, DWORD flags) {
    const std::string text = pathText(pattern);
    if (!passes(judgePath(Call::OpenDirectory, "FindFirstFileExW", text.c_str()))) return INVALID_HANDLE_VALUE;
    const HANDLE search = real::FindFirstFileExW(pattern, level, found, operation, filter, flags);
    if (search != INVALID_HANDLE_VALUE) followPath(numberOf(search), text.c_str());
    return search;
}

BOOL WINAPI FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW found) {
    return passesFor(Call::ReadDirectory, "FindNextFileW", search) && real::FindNextFileW(search, found);
}

BOOL WINAPI FindClose(HANDLE search) {
    forget(numberOf(search));
    return real::FindClose(search);
}

}  // namespace

}  // namespace faults::replaced

void faults::replaceDirectoryCalls() {
    ORV_REPLACE(CopyFileW);
    ORV_REPLACE(MoveFileExW);
    ORV_REPLACE(DeleteFileW);
    ORV_REPLACE(RemoveDirectoryW);
    ORV_REPLACE(CreateDirectoryW);
    ORV_REPLACE(GetFileAttributesW);
    ORV_REPLACE(SetFileAttributesW);
    ORV_REPLACE(FindFirstFileExW);
    ORV_REPLACE(FindNextFileW);
    ORV_REPLACE(FindClose);
}
