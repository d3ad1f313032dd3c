// Removes a file so that its name is free at once.
#pragma once

#include <string>

namespace Public::Base {

/// Whoever has the file open or mapped keeps it as long as he shares its deletion; another file may have the name
/// meanwhile. @return false with GetLastError
bool removeName(const std::wstring& native);

}  // namespace Public::Base
