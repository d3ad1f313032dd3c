// Making the directory that a file will lie in.
#pragma once

#include <string>

namespace Tarnwick::OrvUpdate {

/// Makes the directories in front of the last separator of the path, of either kind. @return true when there is nothing
/// to make or it has been made
bool makeParentDirectory(const std::string& path);

}  // namespace Tarnwick::OrvUpdate
