// Keeping unpacked files inside of the install directory.
#pragma once

#include <string>

namespace Tarnwick::OrvUpdate {

/// True when the file, put behind the directory under its relative name, lies below it once all links are followed; the
/// file itself is not followed. Neither needs to be there.
bool liesInside(const std::string& directory, const std::string& name);

/// Removes a symbolic link that lies where a file is to be written, so that nothing is written through it.
/// @return false when one may still be there
bool removeLink(const std::string& path);

}  // namespace Tarnwick::OrvUpdate
