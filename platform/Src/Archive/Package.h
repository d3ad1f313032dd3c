// An open package.
#pragma once

#include "Archive/IExtractOutFile.h"
#include "ItemList.h"
#include "PackageBody.h"
#include "PackageLayout.h"
#include "Public/Base/System.h"
#include "VersionResource.h"

namespace Archive {

/// All that opening finds out; nothing of it changes afterwards but the cancel mark.
struct Package {
    /// @return false when the file is not a readable package
    bool open(const std::string& path);

    ByteView bytes() const { return {file.data(), file.size()}; }

    Public::Base::MappedFile file;
    PackageLayout layout;
    PackageBody body;
    std::vector<PackageItem> items;
    VersionResource version;
    std::atomic<bool> cancelled{false};  ///< closed while it was being extracted
};

/// Drives the sink through all items. @return false when it ended early
bool extractPackage(const Package& package, IExtractOutFile& sink);

}  // namespace Archive
