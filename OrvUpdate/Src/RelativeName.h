// Judging names that come from outside before they are put behind a directory.
#pragma once

#include <string>

namespace Tarnwick::OrvUpdate {

/// True when a part of the name climbs to the directory above, in any spelling that a system takes for it.
bool leadsUp(const std::string& name);

/// True when the name, put behind a directory, names a file below it on every system: not empty, no drive or stream, no
/// separator in front, no part that climbs, no device.
bool isPlainRelativeName(const std::string& name);

}  // namespace Tarnwick::OrvUpdate
