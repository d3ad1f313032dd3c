#include "FileSizeLimit.h"

#include <algorithm>

#include "ImportHook.h"

extern "C" {
using WriteFileFunction = BOOL(WINAPI*)(HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED);
extern WriteFileFunction __imp_WriteFile;
}

namespace support {
namespace {

uint64_t sLimit = 0;
WriteFileFunction sWriteFile = nullptr;

uint64_t placeOf(HANDLE file, const OVERLAPPED* at) {
    if (at != nullptr) return uint64_t{at->OffsetHigh} << 32 | at->Offset;
    LARGE_INTEGER here{};
    ::SetFilePointerEx(file, LARGE_INTEGER{}, &here, FILE_CURRENT);
    return static_cast<uint64_t>(here.QuadPart);
}

/// Writes what there is room for, and fails when that is nothing.
BOOL WINAPI writeUpToTheLimit(HANDLE file, LPCVOID bytes, DWORD length, LPDWORD written, LPOVERLAPPED at) {
    if (::GetFileType(file) != FILE_TYPE_DISK) return sWriteFile(file, bytes, length, written, at);
    const uint64_t place = placeOf(file, at);
    const uint64_t room = sLimit - std::min(sLimit, place);
    if (length > 0 && room == 0) {
        if (written != nullptr) *written = 0;
        ::SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }
    return sWriteFile(file, bytes, static_cast<DWORD>(std::min<uint64_t>(length, room)), written, at);
}

}  // namespace

struct FileSizeLimit::Limit {
    ImportHook<WriteFileFunction> hook{&__imp_WriteFile, &writeUpToTheLimit};
};

FileSizeLimit::FileSizeLimit(uint64_t bytes) {
    sLimit = bytes;
    sWriteFile = __imp_WriteFile;
    mLimit = std::make_unique<Limit>();
}

FileSizeLimit::~FileSizeLimit() = default;

}  // namespace support
