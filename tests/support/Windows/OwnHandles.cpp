#include "OwnHandles.h"

namespace support {

// Not by the list that the system has of all processes: wine's server does not always survive the making of it. Handles
// are small numbers, four apart, and a new one takes the smallest that is free.
std::vector<HANDLE> ownHandles() {
    constexpr unsigned kGap = 256;
    std::vector<HANDLE> own;
    unsigned missing = 0;
    for (ULONG_PTR number = 4; missing < kGap; number += 4) {
        const auto handle = reinterpret_cast<HANDLE>(number);
        DWORD flags = 0;
        const bool isOpen = ::GetHandleInformation(handle, &flags) != 0;
        missing = isOpen ? 0 : missing + 1;
        if (isOpen) own.push_back(handle);
    }
    return own;
}

bool isSocket(HANDLE handle) {
    if (::GetFileType(handle) != FILE_TYPE_PIPE) return false;
    int type = 0;
    int length = sizeof type;
    return ::getsockopt(reinterpret_cast<SOCKET>(handle), SOL_SOCKET, SO_TYPE, reinterpret_cast<char*>(&type),
                        &length) != SOCKET_ERROR;
}

}  // namespace support
