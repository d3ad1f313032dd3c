// Where the installer program is copied to.
#pragma once

#include <string>

#include "IVersion.h"

namespace Tarnwick::OrvUpdate {

/// One directory per role below the program data of the system's drive, with backslashes and without one at its end.
/// @param systemDirectory such as "C:\\Windows\\system32"; one of another form gives a path without a drive
/// @param edition name of the branded edition's directory
std::string installerPath(const std::string& systemDirectory, const std::string& edition, VersionType role);

}  // namespace Tarnwick::OrvUpdate
