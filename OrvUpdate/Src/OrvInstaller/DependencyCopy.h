// Copies a program with the libraries that it needs.
#pragma once

#include <list>
#include <string>

namespace Tarnwick::OrvUpdate {

/// Copies one Windows executable, with every library of the source directory tree that its import tables name directly
/// or indirectly, to the top of the target directory, which must exist. Modules that are not in the tree fall out.
/// @return true when the tree was walked and the copy was tried; files that could not be copied are not reported. False
/// for
///         an empty argument, or a file that is absent, cannot be mapped or does not begin as a program does
bool copyDependens(const std::string& file, const std::string& sourceDir, const std::string& targetDir);

/// One module to be copied.
struct Module {
    std::string path;  // with backslashes
    std::string name;  // of the copy, in the spelling of the import that led here
};

/// The modules that the file needs, each before those that need it, the file itself last. Paths use backslashes.
/// @return false when the file cannot be read as a program
bool findDependencies(const std::string& file, const std::string& sourceDir, std::list<Module>& modules);

/// Copies in this order. An existing file is overwritten; one that cannot be copied is passed over.
/// @param withSymbols also copies the .pdb file beside a module
void copyModules(const std::list<Module>& modules, const std::string& targetDir, bool withSymbols);

}  // namespace Tarnwick::OrvUpdate
