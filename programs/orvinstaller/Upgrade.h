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
    std::string backupDir;   ///< where to save files; emptied first
    bool flag = false;
};

/// How it ended.
struct UpgradeOutcome {
    enum class Result { Installed, Restored, Damaged };
    Result result = Result::Damaged;
    Public::Base::ErrorInfo error;  ///< why it was not installed, or not restored
    size_t filesReplaced = 0;
    size_t filesAdded = 0;
};

/// Waits for the host to end, unpacks the role's files with a backup of each, and restores everything on any failure.
UpgradeOutcome upgrade(const UpgradeOrder& order);

/// Writes the outcome as a JSON document: "result" ("installed", "restored" or "damaged"), "error", "reason",
/// "replaced", "added".
bool writeReport(const std::string& path, const UpgradeOutcome& outcome);
