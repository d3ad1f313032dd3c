#include "Public/Base/Timer.h"

#include <condition_variable>
#include <system_error>
#include <thread>

#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

/// Shared with the thread, which may outlive a timer that its own callback destroys.
struct Timer::State {
    std::mutex mutex;  // guards stopped; held until the thread may begin
    std::condition_variable wake;
    bool stopped = false;
    std::thread thread;

    void run(const Function<void(unsigned long)>& callback, uint64_t due, unsigned int period, unsigned long value,
             const std::shared_ptr<Clock>& clock) {
        std::unique_lock lock(mutex);
        while (!stopped) {
            if (!clock->waitUntil(lock, wake, due)) continue;
            if (stopped) return;
            due = clock->milliseconds() + period;
            lock.unlock();
            callback(value);
            lock.lock();
            if (period == 0) return;
        }
    }

    void end() {
        {
            std::lock_guard lock(mutex);
            stopped = true;
        }
        wake.notify_all();
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else if (thread.joinable()) {
            thread.join();
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
    std::shared_ptr<State> overtaken;
    {
        // The first call may destroy this timer, so nothing of it is touched once the thread may begin.
        std::lock_guard beginning(state->mutex);
        std::lock_guard lock(mMutex);
        try {
            state->thread = std::thread([state, callback, due, period, value, clock, name = mName] {
                nameThisThread(name);
                state->run(callback, due, period, value, clock);
            });
        } catch (const std::system_error& error) {
            ErrorInfo::setLastSystemError(error.code().value());
            return;
        }
        overtaken = std::exchange(mState, state);
    }
    if (overtaken) overtaken->end();
}

void Timer::stop() {
    std::shared_ptr<State> state;
    {
        std::lock_guard lock(mMutex);
        state.swap(mState);
    }
    if (state) state->end();
}

}  // namespace Public::Base
