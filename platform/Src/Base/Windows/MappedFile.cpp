#include "Base/Windows/HeldFile.h"
#include "Base/Windows/MappedNames.h"
#include "Base/Windows/NativePath.h"
#include "Public/Base/System.h"

namespace Public::Base {

MappedFile::~MappedFile() { close(); }

MappedFile::Result MappedFile::open(const std::string& path) {
    close();
    std::wstring native;
    if (!toNativePath(path, native)) return Result::CannotOpen;
    OwnedHandle file;
    persist([&] {
        constexpr DWORD kSharing = FILE_SHARE_READ | FILE_SHARE_DELETE;
        file = OwnedHandle(::CreateFileW(native.c_str(), GENERIC_READ, kSharing, nullptr, OPEN_EXISTING, 0, nullptr));
        return file.isOpen();
    });
    if (!file.isOpen()) {
        failWithLastError();
        return Result::CannotOpen;
    }
    LARGE_INTEGER size{};
    BY_HANDLE_FILE_INFORMATION status{};
    if (::GetFileType(file.get()) != FILE_TYPE_DISK) {
        failWith(ERROR_INVALID_PARAMETER);
        return Result::CannotMap;
    }
    // An empty file has nothing to map; the system says so itself.
    const OwnedHandle mapping(::CreateFileMappingW(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    void* view = mapping.isOpen() ? ::MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0) : nullptr;
    if (view == nullptr || !::GetFileSizeEx(file.get(), &size) || !::GetFileInformationByHandle(file.get(), &status)) {
        failWithLastError();
        if (view != nullptr) ::UnmapViewOfFile(view);
        return Result::CannotMap;
    }
    mData = static_cast<const unsigned char*>(view);
    mSize = static_cast<size_t>(size.QuadPart);
    mVolume = status.dwVolumeSerialNumber;
    mNumber = joined(status.nFileIndexHigh, status.nFileIndexLow);
    MappedNames::add(mVolume, mNumber);
    return Result::Mapped;
}

bool MappedFile::isReplacedAt(const std::string& path) const {
    std::wstring native;
    BY_HANDLE_FILE_INFORMATION status{};
    if (mData == nullptr || !toNativePath(path, native)) return false;
    if (!queryStatus(native, status)) {
        failWithLastError();
        return false;
    }
    return status.dwVolumeSerialNumber != mVolume || joined(status.nFileIndexHigh, status.nFileIndexLow) != mNumber;
}

void MappedFile::release(const unsigned char* begin, size_t length) const {
    // Unlocking what was never locked takes the pages out of the process's memory, and says that they were not locked.
    if (length != 0) ::VirtualUnlock(const_cast<unsigned char*>(begin), length);
}

void MappedFile::close() {
    if (mData != nullptr) {
        ::UnmapViewOfFile(mData);
        MappedNames::drop(mVolume, mNumber);
    }
    mData = nullptr;
    mSize = 0;
}

}  // namespace Public::Base
