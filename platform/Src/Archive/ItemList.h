// What a package holds, as its script would write it.
#pragma once

#include <string>
#include <vector>

#include "HeaderBlock.h"

namespace Archive {

/// One piece of data and every name that the package gives it.
struct PackageItem {
    enum Kind {
        File,
        Uninstaller,       ///< patches for the stub, and behind them the uninstaller's own data
        WholeUninstaller,  ///< the uninstaller's finished file
    };
    uint32_t offset = 0;  ///< where the package's data offsets count from is told by PackageBody
    Kind kind = File;
    std::vector<std::string> names;  ///< relative to the install directory, with backslashes
};

/// Walks the script's entries. The items come in the order of their data, names of one item in the script's order.
/// @return false when an entry names a string that is not there, or the package asks for too much
bool listItems(const HeaderBlock& header, std::vector<PackageItem>& items);

}  // namespace Archive
