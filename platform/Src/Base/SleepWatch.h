// Who sleeps on the clock among the threads that nobody joins.
#pragma once

#include <cstdint>

namespace Public::Base {

/// Thread::sleep keeps one while it waits; on a thread that somebody joins it does nothing.
class SleepWatch {
public:
    /// @param deadline milliseconds of the clock
    explicit SleepWatch(uint64_t deadline);
    ~SleepWatch();
    SleepWatch(const SleepWatch&) = delete;
    SleepWatch& operator=(const SleepWatch&) = delete;

private:
    const uint64_t mDeadline;
};

}  // namespace Public::Base
