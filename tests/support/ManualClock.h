// A clock that a test advances.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <set>

#include "Public/Base/Clock.h"

namespace support {

/// The time of this one. Whoever waits on it is woken by advance; one that was about to wait at that moment looks again
/// after a real millisecond.
class ManualTime : public Public::Base::Clock {
public:
    uint64_t milliseconds() override { return mNow; }
    bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition, uint64_t deadline) override {
        const auto place = enter(condition);
        if (mNow < deadline) condition.wait_for(lock, std::chrono::milliseconds(1));
        leave(place);
        return mNow >= deadline;
    }
    void advance(uint64_t milliseconds) {
        mNow += milliseconds;
        std::lock_guard lock(mMutex);
        for (auto* condition : mWaiting) condition->notify_all();
    }

private:
    using Waiting = std::multiset<std::condition_variable*>;

    Waiting::iterator enter(std::condition_variable& condition) {
        std::lock_guard lock(mMutex);
        return mWaiting.insert(&condition);
    }
    void leave(Waiting::iterator place) {
        std::lock_guard lock(mMutex);
        mWaiting.erase(place);
    }

    std::atomic<uint64_t> mNow{1000000};
    std::mutex mMutex;  // guards mWaiting; an innermost lock
    Waiting mWaiting;
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
