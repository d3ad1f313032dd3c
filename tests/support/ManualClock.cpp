#include "ManualClock.h"

#include <chrono>

namespace support {

uint64_t ManualClock::milliseconds() {
    std::lock_guard lock(mMutex);
    return mNow;
}

bool ManualClock::waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition, uint64_t deadline) {
    {
        std::lock_guard own(mMutex);
        if (mNow >= deadline) return true;
        ++mWaiters[&condition];
    }
    // An advance between the test above and this wait notifies nobody; then the limit ends the wait.
    condition.wait_for(lock, std::chrono::milliseconds(10));
    std::lock_guard own(mMutex);
    if (--mWaiters[&condition] == 0) mWaiters.erase(&condition);
    return mNow >= deadline;
}

void ManualClock::advance(uint64_t milliseconds) {
    std::lock_guard lock(mMutex);
    mNow += milliseconds;
    for (const auto& waiter : mWaiters) waiter.first->notify_all();
}

size_t ManualClock::waiters() {
    std::lock_guard lock(mMutex);
    size_t count = 0;
    for (const auto& waiter : mWaiters) count += static_cast<size_t>(waiter.second);
    return count;
}

}  // namespace support
