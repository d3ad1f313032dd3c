// An entry of the catalogue that tells when its package is tested.
#pragma once

#include "OrvVersion.h"

namespace Tarnwick::OrvUpdate {

/// Lets a test act while the package is tested.
class WatchedVersion : public OrvVersion {
public:
    using OrvVersion::OrvVersion;
    SystemBits getSystemBits() const override {
        if (duringTest) duringTest();
        return OrvVersion::getSystemBits();
    }
    std::function<void()> duringTest;  // after the start has begun, before the test has a result
};

}  // namespace Tarnwick::OrvUpdate
