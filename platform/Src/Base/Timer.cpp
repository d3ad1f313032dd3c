#include "Public/Base/Timer.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"

namespace Public::Base {

/// Shared with the thread, which may outlive a timer that its own callback destroys.
struct Timer::State {
    std::mutex mutex;  // guards stopped
    std::condition_variable wake;
    bool stopped = false;
    std::thread thread;

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

Timer::~Timer() { stop(); }

void Timer::start(const Function<void(unsigned long)>& callback, unsigned int delay, unsigned int period,
                  unsigned long value) {
    stop();
    const auto state = std::make_shared<State>();
    const auto clock = Clock::current();
    const uint64_t due = clock->milliseconds() + delay;
    state->thread = std::thread([state, callback, due, period, value, clock, name = mName] {
        nameThisThread(name);
        state->run(callback, due, period, value, clock);
    });
    mState = state;
}

void Timer::stop() {
    const auto state = std::move(mState);
    if (!state) return;
    {
        std::lock_guard lock(state->mutex);
        state->stopped = true;
    }
    state->wake.notify_all();
    if (state->thread.get_id() == std::this_thread::get_id()) {
        state->thread.detach();
    } else {
        state->thread.join();
    }
}

}  // namespace Public::Base
