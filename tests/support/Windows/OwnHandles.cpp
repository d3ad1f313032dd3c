#include "OwnHandles.h"

namespace support {

namespace {

// The list of the handles of all processes.
constexpr ULONG kAllHandles = 64;
constexpr LONG kListIsLonger = static_cast<LONG>(0xC0000004);

struct ListedHandle {
    void* object;
    ULONG_PTR process, handle;
    ULONG access;
    USHORT trace, type;
    ULONG attributes, reserved;
};
struct HandleList {
    ULONG_PTR count, reserved;
    ListedHandle handles[1];
};

using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);

}  // namespace

std::vector<HANDLE> ownHandles() {
    const HMODULE library = ::GetModuleHandleW(L"ntdll.dll");
    static const auto query =
        reinterpret_cast<Query>(reinterpret_cast<void*>(::GetProcAddress(library, "NtQuerySystemInformation")));
    std::vector<ULONG_PTR> room(1 << 14);
    while (query(kAllHandles, room.data(), static_cast<ULONG>(room.size() * sizeof room[0]), nullptr) ==
           kListIsLonger) {
        room.resize(2 * room.size());
    }
    const auto* const list = reinterpret_cast<const HandleList*>(room.data());
    std::vector<HANDLE> own;
    for (ULONG_PTR i = 0; i < list->count; ++i) {
        const ListedHandle& each = list->handles[i];
        if (each.process == ::GetCurrentProcessId()) own.push_back(reinterpret_cast<HANDLE>(each.handle));
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
