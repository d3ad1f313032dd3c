#include "Public/Base/Process.h"

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>

#include "Public/Base/Clock.h"
#include "Public/Base/Thread.h"

namespace Public::Base {

namespace {

bool runs(unsigned int processId) { return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno == EPERM; }

/// For a kernel that gives no handle on a process.
bool waitByLooking(unsigned int processId, unsigned int timeoutMs) {
    constexpr unsigned kLookEveryMs = 20;
    const uint64_t deadline = Clock::current()->milliseconds() + timeoutMs;
    while (runs(processId)) {
        if (Clock::current()->milliseconds() >= deadline) return false;
        Thread::sleep(kLookEveryMs);
    }
    return true;
}

}  // namespace

unsigned int Process::getProcessId() { return static_cast<unsigned int>(::getpid()); }

bool Process::waitForExit(unsigned int processId, unsigned int timeoutMs) {
    using namespace std::chrono;
    if (processId == 0 || processId > INT_MAX) return true;
    const auto handle = static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(processId), 0));
    if (handle < 0) return errno == ESRCH || waitByLooking(processId, timeoutMs);
    pollfd ended{handle, POLLIN, 0};
    const auto deadline = steady_clock::now() + milliseconds(timeoutMs);
    int found = 0;
    do {
        const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
        found = ::poll(&ended, 1, static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX)));
    } while ((found < 0 && errno == EINTR) || (found == 0 && steady_clock::now() < deadline));
    ::close(handle);
    return found > 0;
}

}  // namespace Public::Base
