// A program of the machine that works beside a test, such as a server.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace support {

/// Starts the program, which finds nothing to read. Both its streams can be read line by line.
class StartedTool {
public:
    /// @param words its name and its arguments, as runTool takes them. Throws std::runtime_error.
    explicit StartedTool(const std::vector<std::string>& words);
    /// Waits for the program's end.
    ~StartedTool();
    StartedTool(const StartedTool&) = delete;
    StartedTool& operator=(const StartedTool&) = delete;

    /// The next line, without its end; nothing when no more will come.
    std::optional<std::string> readLine();

private:
    struct Running;
    std::unique_ptr<Running> mRunning;
};

}  // namespace support
