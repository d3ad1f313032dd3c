#include "Base/Windows/EntryStream.h"

#include <string_view>

namespace Public::Base {

EntryStream::EntryStream(const std::wstring& directory) {
    std::wstring native = directory;
    if (!native.ends_with(L'\\')) native += L'\\';
    mSearch = ::FindFirstFileExW((native + L"*").c_str(), FindExInfoBasic, &mFound, FindExSearchNameMatch, nullptr,
                                 FIND_FIRST_EX_LARGE_FETCH);
    mHasFirst = mSearch != INVALID_HANDLE_VALUE;
    // The root of an empty drive has not even the two points.
    mIsOpen = mHasFirst || ::GetLastError() == ERROR_FILE_NOT_FOUND;
    if (mIsOpen) return;
    const DWORD refused = ::GetLastError();
    const DWORD attributes = attributesOf(directory);
    const bool isFile = attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
    mFailed = !failWith(isFile ? ERROR_DIRECTORY : refused);
}

EntryStream::~EntryStream() {
    if (mSearch != INVALID_HANDLE_VALUE) ::FindClose(mSearch);
}

const WIN32_FIND_DATAW* EntryStream::nextOfAll() {
    if (mSearch == INVALID_HANDLE_VALUE) return nullptr;
    if (std::exchange(mHasFirst, false)) return &mFound;
    if (::FindNextFileW(mSearch, &mFound)) return &mFound;
    if (::GetLastError() != ERROR_NO_MORE_FILES) mFailed = !failWithLastError();
    return nullptr;
}

const WIN32_FIND_DATAW* EntryStream::next() {
    while (const WIN32_FIND_DATAW* entry = nextOfAll()) {
        const std::wstring_view name = entry->cFileName;
        if (name != L"." && name != L"..") return entry;
    }
    return nullptr;
}

bool isDirectory(const WIN32_FIND_DATAW& entry) {
    if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return false;
    if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) return true;
    // Other reparse points than links, such as those of a cloud's folders, are directories for everybody. One of which
    // the system does not tell the kind is not followed.
    const DWORD kind = entry.dwReserved0;
    return kind != 0 && !IsReparseTagNameSurrogate(kind);
}

}  // namespace Public::Base
