#include "Public/Base/Timer.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

/// Shared with the thread, which may outlive a timer that its own callback destroys.
struct Timer::State {
    std::mutex mutex;  // guards stopped and, while it is being set, thread
    std::condition_variable wake;
    bool stopped = false;
    std::thread thread;

    bool onThread() const { return thread.get_id() == std::this_thread::get_id(); }

    /// No call begins any more.
    void halt() {
        {
            std::lock_guard lock(mutex);
            stopped = true;
        }
        wake.notify_all();
    }

    /// The same, and waits for the thread, or lets it go when it is this one.
    void end() {
        halt();
        if (onThread()) {
            thread.detach();
        } else {
            thread.join();
        }
    }

    void run(const Function<void(unsigned long)>& callback, uint64_t due, unsigned int period, unsigned long value,
             const std::shared_ptr<Clock>& clock) {
        std::unique_lock lock(mutex);
        while (!stopped) {
            if (!clock->waitUntil(lock, wake, due)) continue;
            if (stopped) return;
            lock.unlock();
            callback(value);
            lock.lock();
            if (period == 0) return;
            due += period;
        }
    }
};

Timer::Timer(const std::string& name) : mName(name) {}

Timer::~Timer() {
    if (const auto state = mState.exchange(nullptr)) state->end();
}

void Timer::start(const Function<void(unsigned long)>& callback, unsigned int delay, unsigned int period,
                  unsigned long value) {
    if (const auto earlier = mState.exchange(nullptr)) earlier->end();
    const auto state = std::make_shared<State>();
    const auto clock = Clock::current();
    const uint64_t due = clock->milliseconds() + delay;
    std::lock_guard lock(state->mutex);  // the thread waits for it, so that its first call finds the timer complete
    try {
        state->thread = std::thread([state, callback, due, period, value, clock, name = mName] {
            nameThisThread(name);
            state->run(callback, due, period, value, clock);
        });
    } catch (const std::system_error& error) {
        ErrorInfo::setLastSystemError(error.code().value());
        return;
    }
    mState = state;
}

void Timer::stop() {
    const auto state = mState.get();
    if (!state) return;
    // The callback leaves its thread to whoever stops or destroys the timer later, who then waits for it.
    if (state->onThread()) return state->halt();
    if (const auto held = mState.exchange(nullptr)) held->end();
}

}  // namespace Public::Base
