// The command line of this program, and programs run to their end.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Posix/NativePath.h"
#include "Public/Base/Process.h"

extern char** environ;

namespace Public::Base {

std::vector<std::string> Process::arguments(int argc, const char* const* argv) { return {argv, argv + argc}; }

int Process::run(const std::vector<std::string>& arguments) {
    std::string program;
    if (!toNativePath(arguments.empty() ? std::string() : arguments.front(), program)) return -1;
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    pid_t child = -1;
    if (const int refused = ::posix_spawn(&child, program.c_str(), nullptr, nullptr, pointers.data(), environ)) {
        failWith(refused);
        return -1;
    }
    int status = -1;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace Public::Base
