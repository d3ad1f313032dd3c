#include "HostTools.h"

#include <sys/wait.h>

#include <cstdlib>

#include "FileText.h"
#include "TempDir.h"

namespace support {

ToolResult runTool(const ToolCall& call) {
    const TempDir results;
    const int status = std::system(shellCommand(call, results.path()).c_str());  // NOLINT(concurrency-mt-unsafe)
    return {status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            readText(results.path() + "/out").value_or(""), readText(results.path() + "/err").value_or("")};
}

std::string toolPath(const std::string& path) { return path; }

}  // namespace support
