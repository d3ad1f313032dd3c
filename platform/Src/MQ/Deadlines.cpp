#include "MQ/Deadlines.h"

#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"

namespace Tarnwick::MQ {

struct Deadlines::State {
    const std::shared_ptr<Public::Base::Clock> clock = Public::Base::Clock::current();
    std::mutex mutex;  // guards all below
    std::condition_variable changed;
    std::map<std::pair<uint64_t, Handle>, std::function<void()>> tasks;  // in the order in which they are due
    std::map<Handle, uint64_t> dueOf;
    Handle last = 0;
    bool stopped = false;
    std::thread thread;

    void run() {
        std::unique_lock lock(mutex);
        while (!stopped) {
            const uint64_t due = tasks.empty() ? UINT64_MAX : tasks.begin()->first.first;
            if (clock->milliseconds() < due) {
                clock->waitUntil(lock, changed, due);
                continue;
            }
            const auto task = std::move(tasks.begin()->second);
            dueOf.erase(tasks.begin()->first.second);
            tasks.erase(tasks.begin());
            lock.unlock();
            task();
            lock.lock();
        }
    }
};

Deadlines::Deadlines(const std::string& threadName) : mState(std::make_shared<State>()) {
    mState->thread = std::thread([state = mState, threadName] {
        Public::Base::nameThisThread(threadName);
        state->run();
    });
}

Deadlines::~Deadlines() {
    decltype(State::tasks) dropped;  // go after the lock is given back
    {
        std::lock_guard lock(mState->mutex);
        mState->stopped = true;
        dropped.swap(mState->tasks);
    }
    mState->changed.notify_all();
    if (mState->thread.get_id() == std::this_thread::get_id()) {
        mState->thread.detach();
    } else {
        mState->thread.join();
    }
}

Deadlines::Handle Deadlines::after(uint64_t delayMs, std::function<void()> task) {
    const uint64_t due = mState->clock->milliseconds() + delayMs;
    std::lock_guard lock(mState->mutex);
    const Handle handle = ++mState->last;
    mState->tasks.emplace(std::pair(due, handle), std::move(task));
    mState->dueOf[handle] = due;
    mState->changed.notify_all();
    return handle;
}

void Deadlines::cancel(Handle handle) {
    std::function<void()> dropped;
    std::lock_guard lock(mState->mutex);
    const auto due = mState->dueOf.find(handle);
    if (due == mState->dueOf.end()) return;
    const auto task = mState->tasks.find({due->second, handle});
    dropped = std::move(task->second);
    mState->tasks.erase(task);
    mState->dueOf.erase(due);
}

uint64_t Deadlines::now() const { return mState->clock->milliseconds(); }

}  // namespace Tarnwick::MQ
