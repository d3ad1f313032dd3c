// Copies a program with the libraries that it needs.
#pragma once

#include <string>

namespace Tarnwick::OrvUpdate {

/// Copies one Windows executable, with every library of the source directory tree that its import tables name directly or
/// indirectly, to the top of the target directory, which must exist. Modules that are not in the tree fall out.
/// @return true when the tree was walked and the copy was tried; files that could not be copied are not reported. False for
///         an empty argument, or a file that is absent, cannot be mapped or does not begin as a program does
bool copyDependens(const std::string& file, const std::string& sourceDir, const std::string& targetDir);

}  // namespace Tarnwick::OrvUpdate
