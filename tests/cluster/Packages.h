// The packages that move in the runs.
#pragma once

#include <string>
#include <vector>

namespace cluster {

struct Package {
    std::string version;
    std::string bytes;
};

/// Made once a process, by the package compiler, in ascending order of version: from some kilobytes to three mebibytes,
/// one of them an exact number of chunks.
const std::vector<Package>& packages();
/// Null when there is none of that version.
const Package* packageOf(const std::string& version);
/// Its place in a store, from the store's root.
std::string placeOf(const std::string& version, const std::string& source = "Online");
void putPackage(const Package& package, const std::string& store, const std::string& source = "Online");

}  // namespace cluster
