#include "Base/Windows/RemoveName.h"

#include "Base/Windows/HeldFile.h"
#include "Base/Windows/MappedNames.h"
#include "Base/Windows/NameBeside.h"
#include "Base/Windows/OwnedHandle.h"

namespace Public::Base {

namespace {

/// FileDispositionInfoEx, as winbase.h has had it since Windows 10 1709.
constexpr auto kDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
constexpr DWORD kDelete = 1;
constexpr DWORD kPosixSemantics = 2;

/// Not a directory: the system refuses those when they are opened so.
OwnedHandle openToDelete(const std::wstring& native) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    OwnedHandle file;
    persist([&] {
        file = OwnedHandle(::CreateFileW(native.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        return file.isOpen();
    });
    return file;
}

/// Elsewhere a name lasts until the last handle is closed, so that the file is to bear another by then.
bool renameAndDelete(const std::wstring& native) {
    const std::wstring aside = nameBeside(native, L".old");
    const auto rename = [](const std::wstring& from, const std::wstring& to) {
        return persist([&] { return ::MoveFileExW(from.c_str(), to.c_str(), 0) != 0; });
    };
    if (!rename(native, aside)) return deleteFile(native);
    if (deleteFile(aside)) return true;
    const DWORD refused = ::GetLastError();
    if (MappedNames::deleteLater(aside)) return true;
    rename(aside, native);
    ::SetLastError(refused);
    return false;
}

}  // namespace

bool removeName(const std::wstring& native) {
    OwnedHandle file = openToDelete(native);
    if (!file.isOpen()) return false;
    DWORD how = kDelete | kPosixSemantics;
    const auto attempt = [&] {
        return ::SetFileInformationByHandle(file.get(), kDispositionInfoEx, &how, sizeof how) != 0;
    };
    if (persist(attempt)) return true;
    const DWORD refused = ::GetLastError();
    file.close();
    if (isUnknownCall(refused)) return renameAndDelete(native);
    if (MappedNames::moveAside(native)) return true;
    ::SetLastError(refused);
    return false;
}

}  // namespace Public::Base
