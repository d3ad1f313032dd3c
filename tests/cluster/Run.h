// One run of a cluster under faults.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Cluster.h"

namespace cluster {

struct RunReport {
    uint64_t seed = 0;
    Pace pace = Pace::Steps;
    std::vector<std::string> violations;
    std::vector<std::string> log;
    std::vector<std::string> counted;  ///< what happened, once for each time

    /// Violations, log, and how to have it again.
    std::string text() const;
};

/// Every fourth seed is played on the bus's threads.
Pace paceOf(uint64_t seed);
RunReport run(uint64_t seed);
/// @param meddle done to the cluster between the troubles and the calm, to see that it is found
RunReport run(uint64_t seed, Pace pace, const std::function<void(Cluster&)>& meddle = {});

/// A number from the environment.
uint64_t fromEnvironment(const char* name, uint64_t otherwise);

}  // namespace cluster
