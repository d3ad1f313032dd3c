// Names that a package's script gives to variables and folders.
#pragma once

#include <cstdint>
#include <string>

namespace Archive {

/// "$TEMP" and the like; "$_40_" for one of the script's own.
std::string variableName(uint32_t number);
/// "$SMPROGRAMS" and the like, by the system's number; "$_SHELL_99_" for one without a name.
std::string shellFolderName(uint32_t number);

}  // namespace Archive
