// What an unpacking will change in the install directory.
#pragma once

#include <string>
#include <vector>

#include "Journal.h"

/// One spelling for each name of an item: relative, with "/".
std::string plainName(const std::string& name);

/// Looks at what lies in the place of each file that is going to be written. Changes nothing.
/// @param installDir is there   @param backupDir no item may lie in it
/// @param names of the package's items, relative to installDir
/// @return -602 for a name that leads out of installDir or into backupDir, and where something else than a file or a
/// link lies in an item's place
Public::Base::ErrorInfo planUpgrade(const std::string& installDir, const std::string& backupDir,
                                    const std::vector<std::string>& names, Journal& journal);
