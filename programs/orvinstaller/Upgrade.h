// What the launched installer does with its command line.
#pragma once

#include <string>

#include "Public/Base/ErrorInfo.h"

/// The seven arguments, in their order.
struct UpgradeOrder {
    std::string package;
    std::string installDir;
    int role = 0;
    unsigned int hostProcess = 0;
    std::string reportFile;  ///< from the host: where to leave the report; empty for none
    std::string backupDir;   ///< where to save files; emptied first, once nothing in it is needed
    bool flag = false;
    unsigned int hostEndsWithinMs = 60000;
    unsigned int filesFreeWithinMs = 10000;  ///< how long to wait for files that others have open
};

/// How it ended.
struct UpgradeOutcome {
    enum class Result { Installed, Restored, Damaged };
    Result result = Result::Damaged;
    Public::Base::ErrorInfo error;  ///< why it was not installed, or not restored
    size_t filesReplaced = 0;
    size_t filesAdded = 0;
    bool recovered = false;  ///< an earlier upgrade that was broken off has been undone first
};

/// Waits for the host to end and for its files to be free, undoes an upgrade that was broken off, saves what the role's
/// files replace, unpacks them, and restores everything on any failure. Broken off anywhere and called again with the
/// same directories, it finds the install directory as it was, or wholly upgraded. Of two at once on one directory the
/// second is refused.
UpgradeOutcome upgrade(const UpgradeOrder& order);

/// Writes the outcome as a JSON document: "result" ("installed", "restored" or "damaged"), "error", "reason",
/// "replaced", "added", "recovered".
bool writeReport(const std::string& path, const UpgradeOutcome& outcome);
