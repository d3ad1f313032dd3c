// Programs of this system as a test starts them.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace support {

/// One start of a program.
struct ProgramCall {
    std::vector<std::string> words;  ///< in UTF-8; the program's path first
    std::string temporary = {};      ///< the directory for its temporary files; empty: this program's
};

struct ProgramEnd {
    int status = -1;     ///< -1 when it could not be started or was ended by force
    std::string output;  ///< what it wrote, with "\n" at the ends of lines
    std::string errors;  ///< what it wrote to the other stream, likewise
};

/// Runs a program to its end, without input.
ProgramEnd runProgram(const ProgramCall& call);

/// A program that may be ended before its time. What it writes goes nowhere. Killed when this is destroyed.
class RunningProgram {
public:
    explicit RunningProgram(const ProgramCall& call);
    ~RunningProgram();
    RunningProgram(RunningProgram&&) noexcept;
    RunningProgram& operator=(RunningProgram&&) = delete;

    unsigned id() const;
    /// @return true when it has ended within that time
    bool endsWithin(std::chrono::steady_clock::duration time);
    /// Ends it at once, wherever it is. @return true when it had not ended by itself
    bool kill();
    /// Tells it to end, as the system does when it shuts down or a user asks for it.
    void askToEnd();
    /// Waits for its end. @return its exit status, -1 when it was killed or never ran
    int wait();

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// Puts a copy of a program into the directory, which is made when missing, with the libraries that it would not find
/// otherwise. @return the copy's path
std::string copyProgram(const std::string& program, const std::string& directory);

}  // namespace support
