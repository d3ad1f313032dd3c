// The running process.
#pragma once

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

class ORV_PLATFORM_API Process {
public:
    static unsigned int getProcessId();
    /// Waits until the process of that id has ended; at once for one that does not exist. @return false when it still
    /// runs after timeoutMs milliseconds
    static bool waitForExit(unsigned int processId, unsigned int timeoutMs);
};

}  // namespace Public::Base
