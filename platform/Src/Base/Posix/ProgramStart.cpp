// Starting programs that outlive this one.
#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Base/NativeSystem.h"
#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"

namespace Public::Base {

namespace {

/// Splits a command line: double quotes group, blanks separate, nothing escapes.
std::vector<std::string> splitArguments(const std::string& line) {
    std::vector<std::string> arguments;
    std::string current;
    bool inQuotes = false;
    bool any = false;
    for (const char c : line) {
        if (c == '"') {
            inQuotes = !inQuotes;
            any = true;
        } else if (c == ' ' && !inQuotes) {
            if (any) arguments.push_back(current);
            current.clear();
            any = false;
        } else {
            current += c;
            any = true;
        }
    }
    if (any) arguments.push_back(current);
    return arguments;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Sees to it that the program gets nothing that is open here beyond its three standard streams.
void closeOnExec() {
    constexpr unsigned kFirst = 3;
    if (::close_range(kFirst, ~0U, CLOSE_RANGE_CLOEXEC) == 0) return;
    // A kernel before 5.11, or a sandbox that does not know the call.
    const long limit = ::sysconf(_SC_OPEN_MAX);
    for (int fd = kFirst; fd < limit; ++fd) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
}

void defaultSignals() {
    for (int signal = 1; signal < NSIG; ++signal) ::signal(signal, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

struct Command {
    std::vector<std::string> arguments;  // the program first
    bool searchPath = false;             // for the program
};

/// In the grandchild: becomes the program, or tells why not. Only calls that are safe after fork.
[[noreturn]] void become(char* const* direct, bool searchPath, char* const* byShell, int report) {
    ::setsid();
    // It shares nothing that is open here, as a program that the other system's shell starts.
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int standard = 0; standard <= 2 && nothing >= 0; ++standard) ::dup2(nothing, standard);
    closeOnExec();
    defaultSignals();
    if (searchPath) {
        ::execvp(direct[0], direct);
    } else {
        ::execv(direct[0], direct);
    }
    if (errno == ENOEXEC) ::execv("/bin/sh", byShell);
    const int error = errno;
    [[maybe_unused]] const ssize_t told = ::write(report, &error, sizeof error);
    ::_exit(127);
}

/// While it lives no signal reaches a handler, so that none runs in a child where the locks it needs may be held for
/// ever.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &mBefore);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t mBefore;
};

/// Above the standard streams, which the program gets anew, also where this process has closed its own.
bool makeReport(Descriptor& reading, Descriptor& writing) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return failWithErrno();
    const Descriptor first(ends[0]);
    const Descriptor second(ends[1]);
    constexpr int kAbove = 3;
    reading = Descriptor(::fcntl(first.get(), F_DUPFD_CLOEXEC, kAbove));
    writing = Descriptor(::fcntl(second.get(), F_DUPFD_CLOEXEC, kAbove));
    return (reading.isOpen() && writing.isOpen()) || failWithErrno();
}

/// Runs a program on its own and waits only until it has begun.
bool launch(Command command) {
    std::vector<std::string> shellArguments = command.arguments;
    shellArguments.insert(shellArguments.begin(), "/bin/sh");
    const auto direct = pointersTo(command.arguments);
    const auto byShell = pointersTo(shellArguments);
    Descriptor reading(-1);
    Descriptor writing(-1);
    if (!makeReport(reading, writing)) return false;
    pid_t child = -1;
    int forkError = 0;
    {
        const SignalsBlocked blocked;
        // Forked twice, so that nobody has to wait for the program's end.
        child = ::fork();
        forkError = errno;
        if (child == 0) {
            const pid_t grandchild = ::fork();
            if (grandchild == 0) become(direct.data(), command.searchPath, byShell.data(), writing.get());
            if (grandchild < 0) {
                const int error = errno;
                [[maybe_unused]] const ssize_t told = ::write(writing.get(), &error, sizeof error);
            }
            ::_exit(0);
        }
    }
    writing.close();
    if (child < 0) return failWith(forkError);
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    ssize_t got = 0;
    do {
        got = ::read(reading.get(), &error, sizeof error);
    } while (got < 0 && errno == EINTR);
    return got <= 0 || failWith(error);
}

/// True when the file begins like one that the kernel runs by itself: a binary of its own, or a script that names its
/// interpreter.
bool kernelRuns(const std::string& program) {
    char start[4] = {};
    const Descriptor file(openRetrying(program, O_RDONLY | O_NONBLOCK));
    if (!file.isOpen() || ::read(file.get(), start, sizeof start) < 2) return true;
    return std::memcmp(start, "#!", 2) == 0 || std::memcmp(start,
                                                           "\x7F"
                                                           "ELF",
                                                           4) == 0;
}

/// The program asks for the rights and takes it as a failure of its own when the kernel refuses a file, so this decides
/// for it. It starts from another directory.
bool raiseRights(Command& command) {
    std::string& program = command.arguments.front();
    if (::access(program.c_str(), X_OK) != 0) return failWithErrno();
    std::error_code error;
    program = std::filesystem::absolute(program, error).string();
    if (error) return failWith(error.value());
    if (!kernelRuns(program)) command.arguments.insert(command.arguments.begin(), "/bin/sh");
    command.arguments.insert(command.arguments.begin(), "pkexec");
    command.searchPath = true;
    return true;
}

bool commandOf(const ProgramStart& start, Command& command) {
    std::string program;
    if (!toNativePath(start.program, program)) return false;
    if (start.parameters.find('\0') != std::string::npos) return failWith(EINVAL);
    command.arguments = splitArguments(start.parameters);
    command.arguments.insert(command.arguments.begin(), program);
    return true;
}

}  // namespace

bool nativeStartElevated(const ProgramStart& start) {
    Command command;
    if (!commandOf(start, command)) return false;
    if (::geteuid() != 0 && !raiseRights(command)) return false;
    return launch(std::move(command));
}

bool nativeStartPlain(const ProgramStart& start) {
    Command command;
    return commandOf(start, command) && launch(std::move(command));
}

}  // namespace Public::Base
