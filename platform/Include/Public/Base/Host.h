// The machine and the program that runs on it.
#pragma once

#include "Public/Base/PlatformExport.h"
#include "Public/Base/SystemType.h"

namespace Public::Base {

class ORV_PLATFORM_API Host {
public:
    /// Word size of the running program, not of the machine.
    static SystemBits getSoftwareSystemBits();
};

}  // namespace Public::Base
