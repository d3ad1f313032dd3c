#include "OpenFiles.h"

#include "OwnHandles.h"
#include "WideText.h"

namespace support {
namespace {

/// Where an open file lies by now; empty for what is no file.
std::wstring nameOf(HANDLE handle) {
    if (::GetFileType(handle) != FILE_TYPE_DISK) return {};
    std::wstring name(::GetFinalPathNameByHandleW(handle, nullptr, 0, 0), L'\0');
    name.resize(::GetFinalPathNameByHandleW(handle, name.data(), static_cast<DWORD>(name.size()), 0));
    return name;
}

bool sameFile(const std::wstring& a, const std::wstring& b) {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

}  // namespace

size_t timesOpenHere(const std::string& path) {
    const std::wstring name = longPath(path);
    size_t times = 0;
    for (const HANDLE handle : ownHandles()) times += sameFile(nameOf(handle), name) ? 1 : 0;
    return times;
}

size_t countOpenHere() {
    size_t count = 0;
    for (const HANDLE handle : ownHandles()) {
        if (::GetFileType(handle) == FILE_TYPE_DISK || isSocket(handle)) ++count;
    }
    return count;
}

}  // namespace support
