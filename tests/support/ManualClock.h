// A clock that a test advances.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>

#include "Public/Base/Clock.h"

namespace support {

/// The time of this one. Whoever waits on it looks at it once in a real millisecond.
class ManualTime : public Public::Base::Clock {
public:
    uint64_t milliseconds() override { return mNow; }
    bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition, uint64_t deadline) override {
        if (mNow >= deadline) return true;
        condition.wait_for(lock, std::chrono::milliseconds(1));
        return mNow >= deadline;
    }
    void advance(uint64_t milliseconds) { mNow += milliseconds; }

private:
    std::atomic<uint64_t> mNow{1000000};
};

/// Puts such a clock in force while it lives.
class ManualClock {
public:
    ManualClock() { Public::Base::Clock::replace(mTime); }
    ~ManualClock() { Public::Base::Clock::replace(nullptr); }
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    void advance(uint64_t milliseconds) { mTime->advance(milliseconds); }
    uint64_t now() const { return mTime->milliseconds(); }

private:
    std::shared_ptr<ManualTime> mTime = std::make_shared<ManualTime>();
};

}  // namespace support
