// Open files: what is read, written and mapped.
#include "PathText.h"
#include "ReplacedImport.h"

ORV_IMPORT(CreateFileW)
ORV_IMPORT(CloseHandle)
ORV_IMPORT(ReadFile)
ORV_IMPORT(WriteFile)
ORV_IMPORT(FlushFileBuffers)
ORV_IMPORT(SetEndOfFile)
ORV_IMPORT(SetFilePointerEx)
ORV_IMPORT(GetFileSizeEx)
ORV_IMPORT(GetFileInformationByHandle)
ORV_IMPORT(GetFinalPathNameByHandleW)
ORV_IMPORT(SetFileInformationByHandle)
ORV_IMPORT(CreateFileMappingW)
ORV_IMPORT(MapViewOfFile)

namespace faults::replaced {

namespace {

Call openingCall(DWORD access, DWORD disposition) {
    if (disposition != OPEN_EXISTING) return Call::Create;
    // Who asks for no more only wants to look at what is there.
    return (access & ~static_cast<DWORD>(FILE_READ_ATTRIBUTES | SYNCHRONIZE)) == 0 ? Call::Look : Call::Open;
}

Call settingCall(FILE_INFO_BY_HANDLE_CLASS what) {
    constexpr int kRenameEx = 22, kDispositionEx = 21;
    switch (static_cast<int>(what)) {
        case FileRenameInfo:
        case kRenameEx:
            return Call::Rename;
        case FileDispositionInfo:
        case kDispositionEx:
            return Call::Remove;
        case FileEndOfFileInfo:
        case FileAllocationInfo:
            return Call::Truncate;
        default:
            return Call::ChangeMode;
    }
}

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                          DWORD flags, HANDLE model) {
    const std::string text = pathText(path);
    if (!passes(judgePath(openingCall(access, disposition), "CreateFileW", text.c_str()))) return INVALID_HANDLE_VALUE;
    const HANDLE file = real::CreateFileW(path, access, sharing, security, disposition, flags, model);
    if (file != INVALID_HANDLE_VALUE) followPath(numberOf(file), text.c_str());
    return file;
}

/// Closing does not fail here, whatever the disk does.
BOOL WINAPI CloseHandle(HANDLE handle) {
    forget(numberOf(handle));
    return real::CloseHandle(handle);
}

BOOL WINAPI ReadFile(HANDLE file, LPVOID data, DWORD length, LPDWORD got, LPOVERLAPPED at) {
    const Verdict verdict = judgeHandle(Call::Read, "ReadFile", numberOf(file));
    return passes(verdict) && real::ReadFile(file, data, static_cast<DWORD>(allowed(verdict, length)), got, at);
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD length, LPDWORD put, LPOVERLAPPED at) {
    const Verdict verdict = judgeHandle(Call::Write, "WriteFile", numberOf(file));
    return passes(verdict) && real::WriteFile(file, data, static_cast<DWORD>(allowed(verdict, length)), put, at);
}

BOOL WINAPI FlushFileBuffers(HANDLE file) {
    return passesFor(Call::Sync, "FlushFileBuffers", file) && real::FlushFileBuffers(file);
}

BOOL WINAPI SetEndOfFile(HANDLE file) {
    return passesFor(Call::Truncate, "SetEndOfFile", file) && real::SetEndOfFile(file);
}

BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD origin) {
    return passesFor(Call::Seek, "SetFilePointerEx", file) && real::SetFilePointerEx(file, distance, position, origin);
}

BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size) {
    return passesFor(Call::Look, "GetFileSizeEx", file) && real::GetFileSizeEx(file, size);
}

BOOL WINAPI GetFileInformationByHandle(HANDLE file, LPBY_HANDLE_FILE_INFORMATION status) {
    return passesFor(Call::Look, "GetFileInformationByHandle", file) && real::GetFileInformationByHandle(file, status);
}

DWORD WINAPI GetFinalPathNameByHandleW(HANDLE file, LPWSTR path, DWORD room, DWORD flags) {
    return passesFor(Call::Look, "GetFinalPathNameByHandleW", file)
               ? real::GetFinalPathNameByHandleW(file, path, room, flags)
               : 0;
}

BOOL WINAPI SetFileInformationByHandle(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, LPVOID value, DWORD length) {
    return passesFor(settingCall(what), "SetFileInformationByHandle", file) &&
           real::SetFileInformationByHandle(file, what, value, length);
}

HANDLE WINAPI CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protection, DWORD high, DWORD low,
                                 LPCWSTR name) {
    if (!passesFor(Call::Map, "CreateFileMappingW", file)) return nullptr;
    const HANDLE mapping = real::CreateFileMappingW(file, security, protection, high, low, name);
    const KeptError kept;
    if (mapping != nullptr) follow(numberOf(mapping), isFollowed(numberOf(file)));
    return mapping;
}

LPVOID WINAPI MapViewOfFile(HANDLE mapping, DWORD access, DWORD high, DWORD low, SIZE_T length) {
    return passesFor(Call::Map, "MapViewOfFile", mapping) ? real::MapViewOfFile(mapping, access, high, low, length)
                                                          : nullptr;
}

}  // namespace

}  // namespace faults::replaced

void faults::replaceFileCalls() {
    ORV_REPLACE(CreateFileW);
    ORV_REPLACE(CloseHandle);
    ORV_REPLACE(ReadFile);
    ORV_REPLACE(WriteFile);
    ORV_REPLACE(FlushFileBuffers);
    ORV_REPLACE(SetEndOfFile);
    ORV_REPLACE(SetFilePointerEx);
    ORV_REPLACE(GetFileSizeEx);
    ORV_REPLACE(GetFileInformationByHandle);
    ORV_REPLACE(GetFinalPathNameByHandleW);
    ORV_REPLACE(SetFileInformationByHandle);
    ORV_REPLACE(CreateFileMappingW);
    ORV_REPLACE(MapViewOfFile);
}
