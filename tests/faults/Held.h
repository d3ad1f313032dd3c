// What this process holds of the system.
#pragma once

#include <set>
#include <string>

namespace faults {

/// What is open here, by what it leads to.
std::multiset<std::string> openHere();
/// True while some of a file below the directory is mapped here.
bool isMappedBelow(const std::string& directory);

}  // namespace faults
