// What must hold in every run, whatever has befallen it.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace cluster {

using Violations = std::vector<std::string>;

/// Every file of the stores lies where a package of a store lies, and a package that the store takes for a sound one
/// is, byte for byte, the one that its version was made as. @param stores directory with a store for each node
Violations findWrongPackages(const std::string& stores);

/// Files below a directory with their contents' length and hash.
using Fingerprint = std::map<std::string, std::string>;
/// @param except what lies below these, relative, is left out
Fingerprint fingerprintOf(const std::string& directory, const std::vector<std::string>& except = {});
/// What was added, removed or changed.
Violations findChanges(const Fingerprint& before, const Fingerprint& after);

/// What a process holds of the system.
struct Holdings {
    size_t descriptors = 0;
    size_t threads = 0;
    long records = 0;  ///< of the protocol, alive
};
Holdings holdings();
/// Threads that are just ending are waited for. @return what is held beyond `before`
Violations findLeaks(const Holdings& before, std::chrono::milliseconds patience = std::chrono::seconds(10));

}  // namespace cluster
