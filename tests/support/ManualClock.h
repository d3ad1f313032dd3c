// A clock that stands until a test advances it.
#pragma once

#include <map>

#include "Public/Base/Clock.h"

namespace support {

class ManualClock : public Public::Base::Clock {
public:
    uint64_t milliseconds() override;
    bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition, uint64_t deadline) override;

    void advance(uint64_t milliseconds);
    /// Threads that wait on this clock at the moment.
    size_t waiters();

private:
    std::mutex mMutex;
    uint64_t mNow = 1000000;
    std::map<std::condition_variable*, int> mWaiters;
};

/// Puts a manual clock in force for its own life.
class ManualClockInForce {
public:
    ManualClockInForce() { Public::Base::Clock::replace(mClock); }
    ~ManualClockInForce() { Public::Base::Clock::replace(nullptr); }
    ManualClockInForce(const ManualClockInForce&) = delete;
    ManualClockInForce& operator=(const ManualClockInForce&) = delete;

    ManualClock* operator->() { return mClock.get(); }

private:
    std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
};

}  // namespace support
