#include "Base/Windows/Replacement.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

#include "Base/Windows/HeldFile.h"
#include "Base/Windows/MappedNames.h"
#include "Base/Windows/NameBeside.h"

namespace Public::Base {

namespace {

/// FILE_RENAME_INFO with flags, as winbase.h has had it since Windows 10 1709.
constexpr DWORD kReplaceIfExists = 1;
constexpr DWORD kPosixSemantics = 2;
constexpr DWORD kIgnoreReadOnly = 0x40;
constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

/// With its separator; empty for a name alone.
std::wstring directoryOf(const std::wstring& path) { return path.substr(0, path.rfind(L'\\') + 1); }

/// Short whatever the target's name is, since a name has but so much room.
std::wstring temporaryName() {
    static std::atomic<unsigned> sCount{0};
    return L".orv-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(sCount++) + L".part";
}

/// Where all links lead, in the form without a limit of length.
bool finalPath(HANDLE file, std::wstring& path) {
    const DWORD needed = ::GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED);
    path.assign(needed, L'\0');
    const DWORD length = needed == 0 ? 0 : ::GetFinalPathNameByHandleW(file, path.data(), needed, FILE_NAME_NORMALIZED);
    if (length == 0 || length >= needed) return failWithLastError();
    path.resize(length);
    return true;
}

}  // namespace

Replacement::~Replacement() {
    if (mTemporary.empty()) return;
    mFile.close();
    ::SetFileAttributesW(mTemporary.c_str(), FILE_ATTRIBUTE_NORMAL);  // one that is read-only cannot be removed
    deleteFile(mTemporary);
}

bool Replacement::find(const std::wstring& target) {
    mTarget = target;
    const OwnedHandle present = openShared(target, FILE_READ_ATTRIBUTES);
    if (!present.isOpen()) return ::GetLastError() == ERROR_FILE_NOT_FOUND || failWithLastError();
    mReplaces = true;
    if (!::GetFileInformationByHandle(present.get(), &mReplaced)) return failWithLastError();
    const bool isFile =
        ::GetFileType(present.get()) == FILE_TYPE_DISK && !(mReplaced.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
    if (!isFile) return failWith(ERROR_ACCESS_DENIED);
    const DWORD own = ::GetFileAttributesW(target.c_str());
    const bool isLink = own != INVALID_FILE_ATTRIBUTES && (own & FILE_ATTRIBUTE_REPARSE_POINT);
    return !isLink || finalPath(present.get(), mTarget);
}

bool Replacement::open(const std::wstring& target) { return find(target) && makeTemporary(); }

bool Replacement::makeTemporary() {
    constexpr int kAttempts = 100;  // what was left by a process of the same number
    for (int attempt = 0; attempt < kAttempts && !mFile.isOpen(); ++attempt) {
        const std::wstring path = directoryOf(mTarget) + temporaryName();
        mFile = openShared(path, GENERIC_WRITE | DELETE, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN);  // no scan takes it so
        if (mFile.isOpen()) {
            mTemporary = path;
        } else if (::GetLastError() != ERROR_FILE_EXISTS) {
            break;
        }
    }
    return mFile.isOpen() || failWithLastError();
}

bool Replacement::write(const char* data, size_t length) {
    constexpr size_t kLargestPiece = size_t{1} << 30;
    for (size_t done = 0; done < length;) {
        DWORD put = 0;
        const auto piece = static_cast<DWORD>(std::min(length - done, kLargestPiece));
        if (!::WriteFile(mFile.get(), data + done, piece, &put, nullptr)) return failWithLastError();
        if (put == 0) return failWith(ERROR_DISK_FULL);
        done += put;
    }
    return true;
}

bool Replacement::sync() { return ::FlushFileBuffers(mFile.get()) || failWithLastError(); }

bool Replacement::applyAttributes() {
    FILE_BASIC_INFO info{};
    info.FileAttributes = mAttributes != 0 ? mAttributes : FILE_ATTRIBUTE_NORMAL;  // none at all would mean no change
    return ::SetFileInformationByHandle(mFile.get(), FileBasicInfo, &info, sizeof info) || failWithLastError();
}

bool Replacement::putInPlace() {
    const size_t nameBytes = mTarget.size() * sizeof(wchar_t);
    std::vector<char> room(sizeof(FILE_RENAME_INFO) + nameBytes);
    auto* rename = reinterpret_cast<FILE_RENAME_INFO*>(room.data());
    const DWORD flags = kReplaceIfExists | kPosixSemantics | kIgnoreReadOnly;
    std::memcpy(room.data(), &flags, sizeof flags);  // where the older form has its one truth value
    rename->FileNameLength = static_cast<DWORD>(nameBytes);
    std::memcpy(rename->FileName, mTarget.data(), nameBytes);
    const auto length = static_cast<DWORD>(room.size());
    const auto attempt = [&] { return ::SetFileInformationByHandle(mFile.get(), kRenameInfoEx, rename, length) != 0; };
    if (persist(attempt)) return true;
    const DWORD refused = ::GetLastError();
    return isUnknownCall(refused) || refused == ERROR_USER_MAPPED_FILE ? moveOver() : failWith(refused);
}

bool Replacement::moveOver() {
    const bool isProtected = mReplaces && (mReplaced.dwFileAttributes & FILE_ATTRIBUTE_READONLY);
    if (isProtected) ::SetFileAttributesW(mTarget.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!mFile.close()) return failWithLastError();
    // Here it is refused while somebody has the old one open or mapped, mostly for a moment.
    constexpr int kAttempts = 20;
    const auto attempt = [&] {
        return ::MoveFileExW(mTemporary.c_str(), mTarget.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    };
    if (persist(attempt)) return true;
    DWORD refused = ::GetLastError();
    for (int again = 0; again < kAttempts && refused == ERROR_ACCESS_DENIED; ++again) {
        ::SwitchToThread();
        if (attempt()) return true;
        refused = ::GetLastError();
    }
    if (exchange()) return true;
    if (isProtected) ::SetFileAttributesW(mTarget.c_str(), mReplaced.dwFileAttributes);
    return failWith(refused);
}

bool Replacement::exchange() {
    const std::wstring aside = nameBeside(mTarget, L".old");
    if (!::MoveFileExW(mTarget.c_str(), aside.c_str(), 0)) return false;
    if (::MoveFileExW(mTemporary.c_str(), mTarget.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        if (deleteFile(aside) || MappedNames::deleteLater(aside)) return true;
        // A program that runs can be moved but not removed, and must not be left lying about.
        ::MoveFileExW(mTarget.c_str(), mTemporary.c_str(), 0);
    }
    // Somebody else may have put his own there meanwhile.
    if (!::MoveFileExW(aside.c_str(), mTarget.c_str(), 0)) deleteFile(aside);
    return false;
}

bool Replacement::commit() {
    if (!applyAttributes() || !putInPlace()) return false;
    mTemporary.clear();
    return mFile.close() || failWithLastError();
}

}  // namespace Public::Base
