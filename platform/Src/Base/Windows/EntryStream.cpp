#include "Base/Windows/EntryStream.h"

#include <string_view>

namespace Public::Base {

EntryStream::EntryStream(std::wstring native) {
    if (!native.ends_with(L'\\')) native += L'\\';
    mSearch = ::FindFirstFileExW((native + L"*").c_str(), FindExInfoBasic, &mFound, FindExSearchNameMatch, nullptr,
                                 FIND_FIRST_EX_LARGE_FETCH);
    mHasFirst = mSearch != INVALID_HANDLE_VALUE;
    // The root of an empty drive has not even the two points.
    mIsOpen = mHasFirst || ::GetLastError() == ERROR_FILE_NOT_FOUND;
    if (!mIsOpen) mFailed = !failWithLastError();
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
    // Other reparse points, such as those of a cloud's folders, are directories for everybody.
    return !(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) || !IsReparseTagNameSurrogate(entry.dwReserved0);
}

}  // namespace Public::Base
