#include "Held.h"

#include <winsock2.h>

#include <windows.h>

#include <psapi.h>

#include <vector>

#include "OwnHandles.h"
#include "PathText.h"

namespace faults {

namespace {

std::string fileName(HANDLE file) {
    std::wstring name(::GetFinalPathNameByHandleW(file, nullptr, 0, 0), L'\0');
    name.resize(::GetFinalPathNameByHandleW(file, name.data(), static_cast<DWORD>(name.size()), 0));
    return pathText(name.c_str());
}

/// Empty for what leads to no file and to no other machine.
std::string leadsTo(HANDLE handle) {
    if (::GetFileType(handle) == FILE_TYPE_DISK) return fileName(handle);
    return support::isSocket(handle) ? "socket " + std::to_string(numberOf(handle)) : std::string();
}

}  // namespace

std::multiset<std::string> openHere() {
    std::multiset<std::string> open;
    for (const HANDLE handle : support::ownHandles()) {
        std::string name = leadsTo(handle);
        if (!name.empty()) open.insert(std::move(name));
    }
    return open;
}

// The name is given from the volume on, so only the last part of the directory is compared; no other bears it.
bool isMappedBelow(const std::string& directory) {
    const std::string own = directory.substr(directory.rfind('/')) + "/";
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; ::VirtualQuery(at, &region, sizeof region) != 0;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        wchar_t name[MAX_PATH] = {};
        if (region.State != MEM_COMMIT || region.Type != MEM_MAPPED) continue;
        if (::GetMappedFileNameW(::GetCurrentProcess(), region.BaseAddress, name, MAX_PATH) == 0) continue;
        if (pathText(name).find(own) != std::string::npos) return true;
    }
    return false;
}

}  // namespace faults
