// A second process at work on the same files.
#pragma once

#include <memory>
#include <string>

namespace support {

/// This program once more: it does one thing to a path and keeps it up until it is ended.
class OtherProcess {
public:
    enum class Deed : char {
        Nothing = 'n',
        LockDirectory = 'l',
        OpenToRead = 'o',
        OpenToWrite = 'w',
        MapFile = 'm',
        Withhold = 'a',  ///< as WithheldFile does
    };

    /// Returns when it has done it, or has failed to. Throws std::runtime_error when it cannot be started.
    /// @param program a copy of this one to be started instead; empty: this one
    OtherProcess(Deed deed, const std::string& path, const std::string& program = {});
    /// Ends it.
    ~OtherProcess();
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    bool did() const { return mDid; }
    /// Ends it as a crash would, and waits until it is gone.
    void kill();

private:
    struct Running;
    std::unique_ptr<Running> mRunning;
    bool mDid = false;
};

/// The path of this program.
std::string ownProgram();

/// What the main of a program that was started so does, which is all that it does. @return the exit code
int actAsOtherProcess(const std::string& deed, const std::string& path);

/// The argument that tells a program that it is one; the deed and the path follow.
constexpr char kAsOtherProcess[] = "--as-other-process";

}  // namespace support
