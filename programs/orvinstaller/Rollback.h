// Saving what an upgrade replaces, and putting it back.
#pragma once

#include <string>

#include "Journal.h"

/// Makes the directory with those above it, to outlast a power cut.
Public::Base::ErrorInfo makeLastingDirectory(const std::string& path);

/// Copies every file that the journal names as replaced into the backup directory, where nothing else must lie. The
/// copies outlast a power cut when it returns with code 0. The install directory is not changed.
Public::Base::ErrorInfo saveReplaced(const Journal& journal, const std::string& backupDir);

/// Brings what now lies under the journal's names to the disk itself.
Public::Base::ErrorInfo keepChanges(const Journal& journal);

/// Puts back what was there and removes what was not, however far the upgrade came. May be broken off anywhere and
/// begun again. Files get their permissions and times back; they are written in place, so that the owner stays, and
/// nothing is left beside them. A new directory that holds somebody else's files by now stays.
/// @return the first failure; what can be done is done all the same
Public::Base::ErrorInfo undo(const Journal& journal, const std::string& backupDir);
