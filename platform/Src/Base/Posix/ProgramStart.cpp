// Starting programs that outlive this one.
#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "Base/NativeSystem.h"
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

/// In the grandchild: becomes the program, or tells why not. Only calls that are safe after fork.
[[noreturn]] void become(char* const* direct, char* const* byShell, int report) {
    ::setsid();
    // It shares nothing that is open here, as a program that the other system's shell starts.
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int standard = 0; standard <= 2 && nothing >= 0; ++standard) ::dup2(nothing, standard);
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::execvp(direct[0], direct);
    if (errno == ENOEXEC) ::execv("/bin/sh", byShell);
    const int error = errno;
    [[maybe_unused]] const ssize_t told = ::write(report, &error, sizeof error);
    ::_exit(127);
}

/// Runs a program on its own and waits only until it has begun. @param arguments the program first
bool launch(std::vector<std::string> arguments) {
    std::vector<std::string> shellArguments = arguments;
    shellArguments.insert(shellArguments.begin(), "/bin/sh");
    const auto direct = pointersTo(arguments);
    const auto byShell = pointersTo(shellArguments);
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) return failWithErrno();
    // Forked twice, so that nobody has to wait for the program's end.
    const pid_t child = ::fork();
    if (child == 0) {
        const pid_t grandchild = ::fork();
        if (grandchild == 0) become(direct.data(), byShell.data(), report[1]);
        if (grandchild < 0) {
            const int error = errno;
            [[maybe_unused]] const ssize_t told = ::write(report[1], &error, sizeof error);
        }
        ::_exit(0);
    }
    const int forkError = errno;
    ::close(report[1]);
    if (child < 0) {
        ::close(report[0]);
        return failWith(forkError);
    }
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    ssize_t got = 0;
    do {
        got = ::read(report[0], &error, sizeof error);
    } while (got < 0 && errno == EINTR);
    ::close(report[0]);
    return got <= 0 || failWith(error);
}

/// pkexec gives no file to a shell, as a start without it does.
bool kernelExecutes(const std::string& program) {
    char head[4] = {};
    const int fd = openNative(program, O_RDONLY);
    if (fd < 0) return true;  // one that may be run but not read
    const ssize_t got = ::read(fd, head, sizeof head);
    ::close(fd);
    const std::string_view text(head, got > 0 ? static_cast<size_t>(got) : 0);
    return text.starts_with("#!") || text == "\177ELF";
}

bool commandOf(const ProgramStart& start, std::vector<std::string>& command) {
    std::string program;
    if (!toNativePath(start.program, program) || start.parameters.find('\0') != std::string::npos) {
        return failWith(EINVAL);
    }
    command = splitArguments(start.parameters);
    command.insert(command.begin(), program);
    return true;
}

}  // namespace

bool nativeStartElevated(const ProgramStart& start) {
    std::vector<std::string> command;
    if (!commandOf(start, command)) return false;
    if (::geteuid() != 0) {
        // pkexec would start well and fail only then, without anybody to tell.
        if (::access(command.front().c_str(), X_OK) != 0) return failWithErrno();
        if (!kernelExecutes(command.front())) command.insert(command.begin(), "/bin/sh");
        command.insert(command.begin(), "pkexec");
    }
    return launch(std::move(command));
}

bool nativeStartPlain(const ProgramStart& start) {
    std::vector<std::string> command;
    return commandOf(start, command) && launch(std::move(command));
}

}  // namespace Public::Base
