#include "Public/Base/DirectoryLock.h"

#include <cwchar>

#include "Base/Windows/NativePath.h"

namespace Public::Base {

struct DirectoryLock::Handle {
    OwnedHandle directory;  // as long as it is open no other directory gets its number
    OwnedHandle mark;       // goes with the process at the latest
};

namespace {

/// The same for every name of a directory, in every session of the machine.
std::wstring markName(const BY_HANDLE_FILE_INFORMATION& status) {
    wchar_t name[80];
    std::swprintf(name, sizeof name / sizeof *name, L"Global\\OrvDirectoryLock-%08lx-%08lx%08lx",
                  status.dwVolumeSerialNumber, status.nFileIndexHigh, status.nFileIndexLow);
    return name;
}

}  // namespace

DirectoryLock::DirectoryLock() = default;

DirectoryLock::~DirectoryLock() = default;

DirectoryLock::Result DirectoryLock::take(const std::string& directory) {
    release();
    const auto fail = [](DWORD reason) {
        failWith(reason);
        return Result::Failed;
    };
    std::wstring native;
    if (!toNativePath(directory, native)) return Result::Failed;
    Handle handle{openShared(native, FILE_LIST_DIRECTORY), OwnedHandle()};
    BY_HANDLE_FILE_INFORMATION status{};
    if (!handle.directory.isOpen() || !::GetFileInformationByHandle(handle.directory.get(), &status))
        return fail(::GetLastError());
    if (!(status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return fail(ERROR_DIRECTORY);
    // That it exists is the lock. Nobody owns it, so that any thread may give it back.
    handle.mark = OwnedHandle(::CreateEventW(nullptr, TRUE, FALSE, markName(status).c_str()));
    const DWORD told = ::GetLastError();
    const bool isAnothers = handle.mark.isOpen() ? told == ERROR_ALREADY_EXISTS : told == ERROR_ACCESS_DENIED;
    if (isAnothers) {
        failWith(ERROR_LOCK_VIOLATION);
        return Result::Held;
    }
    if (!handle.mark.isOpen()) return fail(told);
    mHandle = std::make_unique<Handle>(std::move(handle));
    return Result::Taken;
}

void DirectoryLock::release() { mHandle.reset(); }

}  // namespace Public::Base
