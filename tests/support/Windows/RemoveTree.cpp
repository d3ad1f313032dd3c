#include "RemoveTree.h"

#include "WideText.h"

namespace support {
namespace {

constexpr DWORD kLink = FILE_ATTRIBUTE_REPARSE_POINT;

/// @param path without limit of length
void remove(const std::wstring& path, DWORD attributes) {
    // What is only for reading cannot be deleted either.
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        ::DeleteFileW(path.c_str());
        return;
    }
    WIN32_FIND_DATAW found{};
    // A link goes, not what it leads to.
    const HANDLE search = (attributes & kLink) == 0 ? ::FindFirstFileW((path + L"\\*").c_str(), &found) : nullptr;
    if (search != nullptr && search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name != L"." && name != L"..") remove(path + L"\\" + name, found.dwFileAttributes);
        } while (::FindNextFileW(search, &found) != 0);
        ::FindClose(search);
    }
    ::RemoveDirectoryW(path.c_str());
}

}  // namespace

void removeTree(const std::string& directory) {
    const std::wstring path = longPath(directory);
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) remove(path, attributes);
}

}  // namespace support
