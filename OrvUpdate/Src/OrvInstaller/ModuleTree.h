// Which modules a directory tree holds.
#pragma once

#include <map>
#include <string>

namespace Tarnwick::OrvUpdate {

/// Where a module lies.
struct ModulePlace {
    std::string directory;
    std::string fileName;  // in the spelling of the disk
};

/// The files of the directory and of all below it by lower-case name, whatever their extension. A name that occurs more
/// than once stands for the file in the directory itself, else for the one in the first sub-directory, in the order of
/// the names, depth first. Hidden files and directories are left out, and so is the first entry of each listing, which
/// is
/// "." in an ordinary directory. Loops of linked directories are walked once.
std::map<std::string, ModulePlace> scanModules(const std::string& directory);

}  // namespace Tarnwick::OrvUpdate
