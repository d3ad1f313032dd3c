// The running process.
#pragma once

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

class ORV_PLATFORM_API Process {
public:
    static unsigned int getProcessId();
};

}  // namespace Public::Base
