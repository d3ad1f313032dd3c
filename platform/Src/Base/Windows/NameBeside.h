// Names for files that stand in for others for a while.
#pragma once

#include <string>

namespace Public::Base {

/// A name in the same directory that nothing has, short whatever the file's own name is. @param suffix tells what it is
std::wstring nameBeside(const std::wstring& native, const wchar_t* suffix);

}  // namespace Public::Base
