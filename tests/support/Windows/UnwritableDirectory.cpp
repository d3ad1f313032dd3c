#include "UnwritableDirectory.h"

#include "ImportHook.h"
#include "WideText.h"

extern "C" {
using CreateFileFunction = HANDLE(WINAPI*)(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE);
extern CreateFileFunction __imp_CreateFileW;
}

namespace support {
namespace {

// An administrator, and wine, may write everywhere; so it is the program's own calls that are refused.
std::wstring sDirectory;
CreateFileFunction sCreateFile = nullptr;

bool liesWithin(const std::wstring& path) {
    const std::wstring full = longPath(narrow(path));
    return full.size() > sDirectory.size() && full[sDirectory.size()] == L'\\' &&
           ::CompareStringOrdinal(full.data(), static_cast<int>(sDirectory.size()), sDirectory.data(),
                                  static_cast<int>(sDirectory.size()), TRUE) == CSTR_EQUAL;
}

HANDLE WINAPI refuseWithin(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                           DWORD flags, HANDLE model) {
    if (disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING && liesWithin(path)) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return sCreateFile(path, access, share, security, disposition, flags, model);
}

}  // namespace

struct UnwritableDirectory::Refusal {
    ImportHook<CreateFileFunction> hook{&__imp_CreateFileW, &refuseWithin};
};

UnwritableDirectory::UnwritableDirectory(const std::string& path) {
    sDirectory = longPath(path);
    sCreateFile = __imp_CreateFileW;
    mRefusal = std::make_unique<Refusal>();
}

UnwritableDirectory::~UnwritableDirectory() = default;

}  // namespace support
