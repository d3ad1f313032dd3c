// Which names a path may hold.
#pragma once

#include <string_view>

#include "Base/Windows/WindowsHeaders.h"

namespace Public::Base {

/// What the system would take for something else than the file of that name is refused: a device ("NUL", "com1.txt"), a
/// stream of a file ("name:stream"), a name that it would shorten ("name.", "name "), and the whole space of devices
/// ("\\.\"). A path in the form "\\?\" is taken at its word, but must name a file, too.
/// @param path with "\\" for every separator   @return the system's number of the refusal, 0 for a path that may be
/// used
DWORD refusalOfNames(std::wstring_view path);

/// Where the names of a path from the root begin: behind the drive, or behind the server and its share.
size_t rootLength(std::wstring_view full);

/// What the form without a limit of length begins with.
constexpr std::wstring_view kUnlimited = L"\\\\?\\";

}  // namespace Public::Base
