// The public archiver's view of a package.
#pragma once

#include <string>

#include "HostTools.h"

namespace support {

/// Unpacks all of it into the directory, which is made. @return the archiver's words when it fails, else nothing
inline std::string unpackByArchiver(const std::string& package, const std::string& directory) {
    const auto result = runTool({.words = {"7zz", "x", "-y", "-o" + toolPath(directory), toolPath(package)}});
    return result.code == 0 ? "" : "7zz: " + result.output + result.errors;
}

}  // namespace support
