// An upgrade that is broken off, in a process of its own.
#pragma once

#include <string>

#include "KillPoints.h"
#include "Upgrade.h"

struct FaultRun {
    bool ended = false;  ///< false when it was broken off
    int changes = 0;     ///< of the file system, when it ended
};

/// @param at the number of the change at which it is broken off, from 1; 0 for never
/// @param attic a directory on the same disk
FaultRun upgradeToFault(const UpgradeOrder& order, int at, killpoints::Fault fault, const std::string& attic);
