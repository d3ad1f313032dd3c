#include "Public/Base/Process.h"

#include <algorithm>

#include "Base/Windows/OwnedHandle.h"
#include "Public/Base/Thread.h"

namespace Public::Base {

namespace {

/// A process of another's that may not even be waited for. It is there as long as the system refuses it for its rights.
bool waitByLooking(unsigned int processId, unsigned int timeoutMs) {
    constexpr unsigned kLookEveryMs = 20;
    const ULONGLONG deadline = ::GetTickCount64() + timeoutMs;
    for (;;) {
        const OwnedHandle process(::OpenProcess(SYNCHRONIZE, FALSE, processId));
        if (process.isOpen() || ::GetLastError() != ERROR_ACCESS_DENIED) return true;
        if (::GetTickCount64() >= deadline) return false;
        Thread::sleep(kLookEveryMs);
    }
}

}  // namespace

unsigned int Process::getProcessId() { return ::GetCurrentProcessId(); }

bool Process::waitForExit(unsigned int processId, unsigned int timeoutMs) {
    const OwnedHandle process(::OpenProcess(SYNCHRONIZE, FALSE, processId));
    if (!process.isOpen()) return ::GetLastError() != ERROR_ACCESS_DENIED || waitByLooking(processId, timeoutMs);
    // The largest number would mean for ever.
    return ::WaitForSingleObject(process.get(), std::min<DWORD>(timeoutMs, INFINITE - 1)) == WAIT_OBJECT_0;
}

}  // namespace Public::Base
