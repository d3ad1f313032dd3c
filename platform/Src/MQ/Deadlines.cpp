#include "MQ/Deadlines.h"

#include <condition_variable>
#include <map>
#include <mutex>

#include "Base/ThreadName.h"
#include "MQ/QueueThread.h"
#include "Public/Base/Clock.h"

namespace Tarnwick::MQ {

struct Deadlines::State {
    std::shared_ptr<Public::Base::Clock> clock = Public::Base::Clock::current();
    std::mutex mutex;
    std::condition_variable wake;  // a new first task, or the end
    std::condition_variable idle;  // nothing is due any more
    std::map<Key, std::function<void()>> tasks;
    uint64_t entries = 0;
    bool running = false;
    bool ended = false;

    bool due() const { return running || (!tasks.empty() && tasks.begin()->first.first <= clock->milliseconds()); }
    void run();
};

void Deadlines::State::run() {
    onQueueThread() = true;
    Public::Base::nameThisThread("OrvQueueTimer");
    std::unique_lock lock(mutex);
    while (!ended) {
        if (tasks.empty()) {
            wake.wait(lock);
            continue;
        }
        if (!due()) {
            clock->waitUntil(lock, wake, tasks.begin()->first.first);
            continue;
        }
        auto task = std::move(tasks.begin()->second);
        tasks.erase(tasks.begin());
        running = true;
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
        running = false;
        if (!due()) idle.notify_all();
    }
}

std::shared_ptr<Deadlines> Deadlines::shared() {
    static std::mutex mutex;
    static std::weak_ptr<Deadlines> last;
    std::lock_guard lock(mutex);
    auto found = last.lock();
    if (!found || found->mState->clock != Public::Base::Clock::current()) {
        found = std::make_shared<Deadlines>();
        last = found;
    }
    return found;
}

Deadlines::Deadlines() : mState(std::make_shared<State>()) {
    mThreads.emplace_back([state = mState] { state->run(); });
}

Deadlines::~Deadlines() {
    std::map<Key, std::function<void()>> dropped;
    {
        std::lock_guard lock(mState->mutex);
        mState->ended = true;
        dropped.swap(mState->tasks);
        mState->wake.notify_all();
    }
    endThreads(mThreads);
}

uint64_t Deadlines::now() const { return mState->clock->milliseconds(); }

Deadlines::Key Deadlines::at(uint64_t deadline, std::function<void()> task) {
    std::lock_guard lock(mState->mutex);
    const Key key{deadline, ++mState->entries};
    mState->tasks.emplace(key, std::move(task));
    if (mState->tasks.begin()->first == key) mState->wake.notify_all();
    return key;
}

void Deadlines::cancel(const Key& key) {
    std::function<void()> dropped;  // goes after the lock is given back
    std::lock_guard lock(mState->mutex);
    const auto found = mState->tasks.find(key);
    if (found == mState->tasks.end()) return;
    dropped = std::move(found->second);
    mState->tasks.erase(found);
    if (!mState->due()) mState->idle.notify_all();
}

void Deadlines::waitUntilNothingIsDue() {
    std::unique_lock lock(mState->mutex);
    while (mState->due()) mState->idle.wait(lock);
}

bool Deadlines::somethingIsDue() {
    std::lock_guard lock(mState->mutex);
    return mState->due();
}

}  // namespace Tarnwick::MQ
