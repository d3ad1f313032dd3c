// Programs of the machine that runs the tests: the package compiler, an archiver, a signing tool and the like.
#pragma once

#include <string>
#include <vector>

namespace support {

/// One call of such a program.
struct ToolCall {
    std::vector<std::string> words;  ///< its name, which is looked for where a shell looks, and its arguments
    std::string directory = {};      ///< where it works; empty: where this program does
    std::string input = {};          ///< the file that it reads; empty: nothing is to be read
};

struct ToolResult {
    int code = -1;       ///< its exit code; -1 when it could not be started or did not end by itself
    std::string output;  ///< what it wrote
    std::string errors;  ///< what it wrote to the other stream, or why it was not started
};

/// Runs the program to its end. Throws std::runtime_error when the system gives nothing to run it with.
ToolResult runTool(const ToolCall& call);

/// How those programs name a file; what is given to one as an argument must be told so. A test program for Windows that
/// runs under wine has tools of the machine below it, which know no drives.
std::string toolPath(const std::string& path);

/// The command by which a POSIX shell does the call, with the two streams in "out" and "err" of a directory.
std::string shellCommand(const ToolCall& call, const std::string& results);

}  // namespace support
