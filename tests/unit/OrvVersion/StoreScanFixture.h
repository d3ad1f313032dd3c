// A store to be scanned.
#pragma once

#include "FileText.h"
#include "PackageStore.h"

namespace Tarnwick::OrvUpdate {

using support::PackageSpec;
using support::SigningKit;

inline const std::string sPlace = "Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe";

class StoreScan : public testing::Test {
protected:
    /// The one entry that the scan finds; null when it finds none or several.
    std::shared_ptr<IVersion> only() const {
        const VersionSet found = mStore.scan();
        return found.size() == 1 ? *found.begin() : nullptr;
    }

    support::PackageStore mStore;
};

/// With a publisher that is trusted.
class SignedStoreScan : public StoreScan {
protected:
    support::TrustRoots mTrust{SigningKit().rootPem()};
};

/// What makes a sound package one that is not taken.
struct Damage {
    std::string name;
    std::function<void(const std::string&)> apply;
};

class StoreScanDamage : public StoreScan, public testing::WithParamInterface<Damage> {};

}  // namespace Tarnwick::OrvUpdate
