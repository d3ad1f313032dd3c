// What a symbolic link or a junction leads to.
#pragma once

#include <string>

#include "Base/Windows/WindowsHeaders.h"

namespace Public::Base {

/// True for what replaces the name by another: symbolic links and junctions, but not the files of a cloud store.
/// @param entry open itself, not what it leads to
bool leadsElsewhere(HANDLE entry);

/// The text of it. @return false, recording the failure
bool linkTarget(HANDLE link, std::wstring& target);

}  // namespace Public::Base
