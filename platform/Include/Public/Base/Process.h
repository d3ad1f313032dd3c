// The running process, and programs that it runs.
#pragma once

#include <string>
#include <vector>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

class ORV_PLATFORM_API Process {
public:
    static unsigned int getProcessId();
    /// Waits until the process of that id has ended; at once for one that does not exist. @return false when it still
    /// runs after timeoutMs milliseconds
    static bool waitForExit(unsigned int processId, unsigned int timeoutMs);

    /// The words of this process's command line in UTF-8, the program first. @param argc, argv of main, which on
    /// Windows cannot hold every name and are not looked at
    static std::vector<std::string> arguments(int argc, const char* const* argv);
    /// Runs a program to its end, on this process's standard streams. @param arguments UTF-8, the program's path first
    /// @return its exit status; -1 when it cannot be started (ErrorInfo::getLastError) or a signal has ended it
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace Public::Base
