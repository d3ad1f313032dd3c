#include "HostTools.h"

namespace support {
namespace {

std::string quoted(const std::string& word) {
    std::string out = "'";
    for (const char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

/// After what lets every tool take names and texts as UTF-8.
std::string shellWords(const std::vector<std::string>& words) {
    std::string text = "LC_ALL=C.UTF-8";
    for (const auto& word : words) text += " " + quoted(word);
    return text;
}

}  // namespace

std::string shellCommand(const ToolCall& call, const std::string& results) {
    std::string command;
    if (!call.directory.empty()) command = "cd " + quoted(toolPath(call.directory)) + " && ";
    command += shellWords(call.words) + " <" + (call.input.empty() ? "/dev/null" : quoted(toolPath(call.input)));
    return command + " >" + quoted(toolPath(results + "/out")) + " 2>" + quoted(toolPath(results + "/err"));
}

}  // namespace support
