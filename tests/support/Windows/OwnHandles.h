// What this process has open.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <vector>

namespace support {

std::vector<HANDLE> ownHandles();
bool isSocket(HANDLE handle);

}  // namespace support
