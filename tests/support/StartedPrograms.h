// Waits for programs that the engine starts, and hears from them how they were started.
#pragma once

#include <string>
#include <vector>

#include "Sockets.h"

namespace support {

/// One started recorder. It runs until this object lets it go.
class StartedProgram {
public:
    explicit StartedProgram(sockets::Socket connection);
    ~StartedProgram() { letGo(); }
    StartedProgram(StartedProgram&& other) noexcept;
    StartedProgram& operator=(StartedProgram&&) = delete;

    /// Lets it end by itself.
    void letGo();

    unsigned int id = 0;
    std::string directory;               ///< the one that it runs in
    std::string window;                  ///< "shown" or "hidden"; empty where programs have no window
    std::string line;                    ///< its parameters to the letter; empty where they come taken apart
    std::vector<std::string> arguments;  ///< behind that of StartedPrograms

private:
    sockets::Socket mConnection;
};

class StartedPrograms {
public:
    StartedPrograms();
    ~StartedPrograms() { sockets::close(mListener); }
    StartedPrograms(const StartedPrograms&) = delete;
    StartedPrograms& operator=(const StartedPrograms&) = delete;

    /// The recorder: a program that reports here when its first argument is argument().
    static std::string program();
    std::string argument() const { return "\"" + std::to_string(mPort) + "\""; }
    /// Waits for the next one.
    StartedProgram next() { return StartedProgram(sockets::acceptPeer(mListener)); }

private:
    uint16_t mPort = 0;
    sockets::Socket mListener;
};

}  // namespace support
