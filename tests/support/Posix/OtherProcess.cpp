#include "OtherProcess.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>

namespace support {

struct OtherProcess::Running {
    pid_t id = -1;
    int input = -1;
};

OtherProcess::OtherProcess(Deed deed, const std::string& path, const std::string& copy) : mRunning(new Running) {
    int input[2], output[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const std::string program = copy.empty() ? ownProgram() : copy;
    const char text[] = {static_cast<char>(deed), '\0'};
    const char* arguments[] = {program.c_str(), kAsOtherProcess, text, path.c_str(), nullptr};
    mRunning->id = ::fork();
    if (mRunning->id == 0) {
        ::dup2(input[0], 0);
        ::dup2(output[1], 1);
        ::execv(program.c_str(), const_cast<char**>(arguments));
        ::_exit(127);
    }
    ::close(input[0]);
    ::close(output[1]);
    mRunning->input = input[1];
    char told = 0;
    const bool answered = ::read(output[0], &told, 1) == 1;
    ::close(output[0]);
    if (!answered) throw std::runtime_error("the other process does not answer");
    mDid = told == '1';
}

OtherProcess::~OtherProcess() { kill(); }

void OtherProcess::kill() {
    if (!mRunning) return;
    ::kill(mRunning->id, SIGKILL);
    ::waitpid(mRunning->id, nullptr, 0);
    ::close(mRunning->input);
    mRunning.reset();
}

std::string ownProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

}  // namespace support
