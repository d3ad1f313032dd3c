// What the first start of the process has found in the store.
#pragma once

#include <mutex>

#include "IVersion.h"

namespace Tarnwick::OrvUpdate {

/// Belongs to the process, not to one VersionRequest: the store is scanned once, and every object gets the same
/// entries.
struct StoreCache {
    std::mutex mutex;  // held during the scan, so that a second object waits for its entries
    bool firstStart = true;
    VersionSet versions;
};

}  // namespace Tarnwick::OrvUpdate
