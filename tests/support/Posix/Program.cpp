#include "Program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>

#include "FileText.h"
#include "TempDir.h"

namespace support {
namespace {

/// In the child. @param streams where the three standard ones lead
[[noreturn]] void become(const ProgramCall& call, const int (&streams)[3]) {
    for (int standard = 0; standard < 3; ++standard) ::dup2(streams[standard], standard);
    if (!call.temporary.empty()) ::setenv("TMPDIR", call.temporary.c_str(), 1);
    std::vector<std::string> words = call.words;
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    ::execv(pointers.front(), pointers.data());
    ::_exit(127);
}

pid_t start(const ProgramCall& call, const std::string& output, const std::string& errors) {
    const auto openTo = [](const std::string& path) {
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    };
    const int streams[3] = {::open("/dev/null", O_RDONLY | O_CLOEXEC), openTo(output), openTo(errors)};
    const pid_t child = ::fork();
    if (child == 0) become(call, streams);
    for (const int stream : streams) ::close(stream);
    return child;
}

int statusOf(int waited) { return WIFEXITED(waited) ? WEXITSTATUS(waited) : -1; }

}  // namespace

ProgramEnd runProgram(const ProgramCall& call) {
    const TempDir results;
    const pid_t child = start(call, results.path() + "/out", results.path() + "/err");
    int status = -1;
    ::waitpid(child, &status, 0);
    return {statusOf(status), readText(results.path() + "/out").value_or(""),
            readText(results.path() + "/err").value_or("")};
}

struct RunningProgram::State {
    pid_t process;
    bool ended = false;
    int status = -1;
};

RunningProgram::RunningProgram(const ProgramCall& call)
    : mState(std::make_unique<State>(State{start(call, "/dev/null", "/dev/null")})) {}

RunningProgram::RunningProgram(RunningProgram&&) noexcept = default;

RunningProgram::~RunningProgram() {
    if (mState) kill();
}

unsigned RunningProgram::id() const { return static_cast<unsigned>(mState->process); }

bool RunningProgram::endsWithin(std::chrono::steady_clock::duration time) {
    if (mState->ended) return true;
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, mState->process, 0));
    pollfd end{process, POLLIN, 0};
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(
                          std::max(time, std::chrono::steady_clock::duration::zero()))
                          .count();
    const timespec most{left / 1000000000, left % 1000000000};
    ::ppoll(&end, 1, &most, nullptr);
    ::close(process);
    mState->ended = ::waitpid(mState->process, &mState->status, WNOHANG) != 0;
    return mState->ended;
}

bool RunningProgram::kill() {
    if (mState->ended) return false;
    ::kill(mState->process, SIGKILL);
    ::waitpid(mState->process, &mState->status, 0);
    mState->ended = true;
    return WIFSIGNALED(mState->status);
}

void RunningProgram::askToEnd() {
    if (!mState->ended) ::kill(mState->process, SIGTERM);
}

int RunningProgram::wait() {
    if (!mState->ended) ::waitpid(mState->process, &mState->status, 0);
    mState->ended = true;
    return statusOf(mState->status);
}

std::string copyProgram(const std::string& program, const std::string& directory) {
    const std::filesystem::path from = program;
    std::filesystem::create_directories(directory);
    std::filesystem::copy_file(from, directory / from.filename());
    return directory + "/" + from.filename().string();
}

}  // namespace support
