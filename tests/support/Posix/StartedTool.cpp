#include "StartedTool.h"

#include <cstdio>
#include <stdexcept>

#include "HostTools.h"

namespace support {

struct StartedTool::Running {
    FILE* output;
};

StartedTool::StartedTool(const std::vector<std::string>& words)
    : mRunning(new Running{::popen(("exec env " + shellWords(words) + " </dev/null 2>&1").c_str(), "r")}) {
    if (mRunning->output == nullptr) throw std::runtime_error("cannot start " + words.front());
}

StartedTool::~StartedTool() { ::pclose(mRunning->output); }

std::optional<std::string> StartedTool::readLine() {
    std::string line;
    int c = 0;
    while ((c = std::fgetc(mRunning->output)) != EOF && c != '\n') line += static_cast<char>(c);
    if (c == EOF && line.empty()) return std::nullopt;
    return line;
}

}  // namespace support
