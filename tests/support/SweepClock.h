// A clock that tells when what runs on it is due next.
#pragma once

#include "ManualClock.h"
#include "Received.h"

namespace support {

/// In force while it lives, for one timer.
class SweepClock {
public:
    SweepClock() { Public::Base::Clock::replace(mTime); }
    ~SweepClock() { Public::Base::Clock::replace(nullptr); }
    SweepClock(const SweepClock&) = delete;
    SweepClock& operator=(const SweepClock&) = delete;

    void advance(uint64_t milliseconds) { mTime->advance(milliseconds); }
    uint64_t now() const { return mTime->milliseconds(); }
    /// When the first call was due.
    uint64_t first() const { return mTime->first; }
    /// Waits until what was due has been done. @return false when it was not within the patience of a test
    bool rests() const {
        return eventually([this] { return mTime->next > mTime->milliseconds(); });
    }

private:
    struct Time : ManualTime {
        bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                       uint64_t deadline) override {
            if (first == 0) first = deadline;
            next = deadline;
            return ManualTime::waitUntil(lock, condition, deadline);
        }

        std::atomic<uint64_t> first{0};
        std::atomic<uint64_t> next{0};
    };

    std::shared_ptr<Time> mTime = std::make_shared<Time>();
};

}  // namespace support
