// Undoing an upgrade that was broken off, by a power cut or by force.
#pragma once

#include <string>

#include "Public/Base/ErrorInfo.h"

/// What was found at the start.
struct Recovery {
    bool undone = false;            ///< there was an unfinished upgrade, and its directory is as before it
    Public::Base::ErrorInfo error;  ///< its directory is not; journal and saved files are kept for another try
};

/// Undoes the upgrade that the journal in the backup directory tells of, in whichever directory it was. Without a
/// journal nothing is done. May itself be broken off and called again.
/// @param backupDir, lockedDir both locked by the caller; lockedDir may be absent
Recovery recover(const std::string& backupDir, const std::string& lockedDir);
