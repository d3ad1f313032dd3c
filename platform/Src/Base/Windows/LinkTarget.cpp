#include "Base/Windows/LinkTarget.h"

#include <winioctl.h>

#include <cstdint>
#include <cstring>

#include "Base/Windows/NativePath.h"

namespace Public::Base {

namespace {

/// Where the two names stand, behind the head of eight bytes (Microsoft, "REPARSE_DATA_BUFFER structure").
struct Names {
    uint16_t substituteOffset, substituteLength, printOffset, printLength;
};

constexpr size_t kHead = 8;

}  // namespace

bool leadsElsewhere(HANDLE entry) {
    FILE_ATTRIBUTE_TAG_INFO info{};
    if (!::GetFileInformationByHandleEx(entry, FileAttributeTagInfo, &info, sizeof info)) return true;  // may be one
    return IsReparseTagNameSurrogate(info.ReparseTag);
}

bool linkTarget(HANDLE link, std::wstring& target) {
    std::string data(MAXIMUM_REPARSE_DATA_BUFFER_SIZE, '\0');
    DWORD length = 0;
    if (!::DeviceIoControl(link, FSCTL_GET_REPARSE_POINT, nullptr, 0, data.data(), static_cast<DWORD>(data.size()),
                           &length, nullptr)) {
        return failWithLastError();
    }
    uint32_t tag = 0;
    std::memcpy(&tag, data.data(), sizeof tag);
    if (tag != IO_REPARSE_TAG_SYMLINK && tag != IO_REPARSE_TAG_MOUNT_POINT) return failWith(ERROR_NOT_SUPPORTED);
    Names names{};
    std::memcpy(&names, data.data() + kHead, sizeof names);
    const size_t texts = kHead + sizeof names + (tag == IO_REPARSE_TAG_SYMLINK ? sizeof(uint32_t) : 0);
    // The name for people is the one that it was made with; some makers leave it out.
    const bool hasPrint = names.printLength != 0;
    const size_t offset = texts + (hasPrint ? names.printOffset : names.substituteOffset);
    const size_t size = hasPrint ? names.printLength : names.substituteLength;
    if (offset + size > length) return failWith(ERROR_INVALID_DATA);
    target.resize(size / sizeof(wchar_t));
    std::memcpy(target.data(), data.data() + offset, target.size() * sizeof(wchar_t));
    return true;
}

}  // namespace Public::Base
