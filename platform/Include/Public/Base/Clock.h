// The monotonic clock behind every delay and time-out.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Time::getCurrentMilliSecond, Timer, Thread::sleep and all queue time-outs run on it. Tests replace it by one that
/// they advance. All operations may be called from any thread.
class ORV_PLATFORM_API Clock {
public:
    virtual ~Clock() = default;

    /// Milliseconds since an arbitrary origin; never goes back.
    virtual uint64_t milliseconds() = 0;
    /// Waits on the condition until it is notified or the deadline (milliseconds of this clock) is reached. May wake
    /// without cause, so callers wait in a loop. @return true when the deadline is reached
    virtual bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                           uint64_t deadline) = 0;

    /// The clock in force; never null.
    static std::shared_ptr<Clock> current();
    /// Puts another clock in force; null restores the machine's own. Threads that wait already finish their wait on the
    /// clock that they began with.
    static void replace(std::shared_ptr<Clock> clock);
};

}  // namespace Public::Base
