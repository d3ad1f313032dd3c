// An open file.
#include "Public/Base/File.h"

#include <algorithm>

#include "Base/Windows/NativePath.h"

namespace Public::Base {

struct File::Handle {
    OwnedHandle file;
};

namespace {

/// The most that one call of the system is given.
constexpr size_t kLargestPiece = size_t{1} << 30;

DWORD pieceOf(size_t length) { return static_cast<DWORD>(std::min(length, kLargestPiece)); }

/// Not a directory, nor what a server has beside its files, such as a pipe. @return false with GetLastError
bool isFile(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION status{};
    const bool isOnDisk = ::GetFileType(file) == FILE_TYPE_DISK;
    if (isOnDisk && !::GetFileInformationByHandle(file, &status)) return false;
    if (isOnDisk && !(status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return true;
    ::SetLastError(ERROR_ACCESS_DENIED);
    return false;
}

/// @return closed with GetLastError on failure
OwnedHandle openFor(const std::wstring& native, int mode) {
    switch (mode) {
        case OpenMode_ReadDefault:
        case OpenMode_Read:
            return openShared(native, GENERIC_READ);
        case OpenMode_Create:
            // Emptied once it is known to be a file. The system's way of creating anew refuses a hidden one.
            return openShared(native, GENERIC_WRITE, OPEN_ALWAYS);
        case OpenMode_CreateKeep:
            return openShared(native, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
        default:
            ::SetLastError(ERROR_INVALID_PARAMETER);
            return OwnedHandle();
    }
}

}  // namespace

File::File(const std::string& path) : mPath(path) {}

File::~File() { mHandle.reset(); }

bool File::open(int mode) { return open(mPath, mode); }

bool File::open(const std::string& path, int mode) {
    close();
    mPath = path;
    mReadFailed = false;
    std::wstring native;
    if (!toNativePath(mPath, native)) return false;
    auto handle = std::make_unique<Handle>(Handle{openFor(native, mode)});
    if (!handle->file.isOpen()) return failWithLastError();
    if (!isFile(handle->file.get())) return failWithLastError();
    if (mode == OpenMode_Create && !::SetEndOfFile(handle->file.get())) return failWithLastError();
    mHandle = std::move(handle);
    return true;
}

bool File::close() {
    const auto handle = std::move(mHandle);
    return !handle || handle->file.close() || failWithLastError();
}

bool File::isOpen() const { return mHandle != nullptr; }

size_t File::read(void* data, size_t length) {
    if (!mHandle) {
        failWith(ERROR_INVALID_HANDLE);
        return 0;
    }
    size_t done = 0;
    while (done < length) {
        DWORD got = 0;
        const bool good =
            ::ReadFile(mHandle->file.get(), static_cast<char*>(data) + done, pieceOf(length - done), &got, nullptr);
        if (!good && ::GetLastError() != ERROR_HANDLE_EOF && ::GetLastError() != ERROR_BROKEN_PIPE)
            mReadFailed = !failWithLastError();
        if (!good || got == 0) break;
        done += got;
    }
    return done;
}

size_t File::write(const void* data, size_t length) {
    if (!mHandle) {
        failWith(ERROR_INVALID_HANDLE);
        return 0;
    }
    size_t done = 0;
    while (done < length) {
        DWORD put = 0;
        const bool good = ::WriteFile(mHandle->file.get(), static_cast<const char*>(data) + done,
                                      pieceOf(length - done), &put, nullptr);
        if (!good || put == 0) {
            failWith(good ? ERROR_DISK_FULL : ::GetLastError());
            break;
        }
        done += put;
    }
    return done;
}

bool File::flush() {
    // Bytes go to the system as they are written; nothing is held back here.
    return mHandle != nullptr || failWith(ERROR_INVALID_HANDLE);
}

int64_t File::seek(int64_t distance, SeekPosition position) {
    if (!mHandle) {
        failWith(ERROR_INVALID_HANDLE);
        return -1;
    }
    const DWORD origin = position == SeekPosition_Begin     ? FILE_BEGIN
                         : position == SeekPosition_Current ? FILE_CURRENT
                                                            : FILE_END;
    LARGE_INTEGER way{};
    LARGE_INTEGER offset{};
    way.QuadPart = distance;
    if (!::SetFilePointerEx(mHandle->file.get(), way, &offset, origin)) {
        failWithLastError();
        return -1;
    }
    return offset.QuadPart;
}

int64_t File::getPosition() { return seek(0, SeekPosition_Current); }

}  // namespace Public::Base
