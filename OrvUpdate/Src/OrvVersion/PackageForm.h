// The test of a package file's outer form.
#pragma once

#include <string>

#include "Archive/NSISDecompile.h"

namespace Tarnwick::OrvUpdate {

/// Opens the file as a package and judges its outer form: it carries a good signature, or none and then the archive
/// accounts for every byte of the file, which no appended or truncated file does.
/// @param package the reader; it may be open on the file in either case   @return true when the package is sound
bool openSoundPackage(const std::string& path, NSISDecompile& package);

}  // namespace Tarnwick::OrvUpdate
