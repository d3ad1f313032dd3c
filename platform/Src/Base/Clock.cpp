#include "Public/Base/Clock.h"

#include <chrono>

namespace Public::Base {

namespace {

class MachineClock : public Clock {
public:
    uint64_t milliseconds() override {
        using namespace std::chrono;
        return static_cast<uint64_t>(
            duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count());
    }
    bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition, uint64_t deadline) override {
        // A day at a time, so that no deadline overflows the system's own count.
        constexpr uint64_t kLongestMs = 24ULL * 3600 * 1000;
        const uint64_t now = milliseconds();
        if (now >= deadline) return true;
        condition.wait_for(lock, std::chrono::milliseconds(std::min(deadline - now, kLongestMs)));
        return milliseconds() >= deadline;
    }
};

std::mutex sMutex;  // guards the clock in force

/// Never destroyed: a thread may still look at the clock while the process ends.
std::shared_ptr<Clock>& inForce() {
    static auto& clock = *new std::shared_ptr<Clock>(std::make_shared<MachineClock>());
    return clock;
}

}  // namespace

std::shared_ptr<Clock> Clock::current() {
    std::lock_guard lock(sMutex);
    return inForce();
}

void Clock::replace(std::shared_ptr<Clock> clock) {
    if (!clock) clock = std::make_shared<MachineClock>();
    std::lock_guard lock(sMutex);
    inForce().swap(clock);
}

}  // namespace Public::Base
