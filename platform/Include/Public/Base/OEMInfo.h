// The branded edition of the system.
#pragma once

#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

struct OEMDefine {
    /// Directory under the machine's program-data folder in which the edition keeps its files.
    std::string programDataDirectory;
};

class ORV_PLATFORM_API OEMInfo {
public:
    /// "Tarnwick Orv" until the host sets another.
    static OEMDefine getOemInfo();
    /// An empty directory name restores the default. May be called while other threads run.
    static void setOemInfo(const OEMDefine& define);
};

}  // namespace Public::Base
