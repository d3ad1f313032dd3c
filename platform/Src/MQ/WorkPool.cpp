#include "MQ/WorkPool.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>

#include "Base/ThreadName.h"
#include "MQ/QueueThread.h"
#include "Public/Base/Printer.h"

namespace Tarnwick::MQ {

namespace {

constexpr size_t kThreads = 4;
constexpr size_t kMostThreads = 1024;
// Real time, whatever clock is in force: a blocked thread is blocked in the real world.
constexpr std::chrono::milliseconds kStalled{5};
constexpr std::chrono::seconds kIdleEnd{5};

void runTask(const std::function<void()>& task) {
    try {
        task();
    } catch (const std::exception& error) {
        Public::Base::printer(Public::Base::LOG_Level_Error, "platform/Src/MQ", __func__, __LINE__,
                              "a task of the queue threw: %s", {Public::Base::Value(std::string(error.what()))});
    }
}

}  // namespace

struct WorkPool::State : std::enable_shared_from_this<State> {
    mutable std::mutex mutex;
    std::condition_variable work;     // a task waits, or the end
    std::condition_variable idle;     // no task waits or runs
    std::condition_variable watched;  // the supervisor's
    std::condition_variable ended;    // a thread has ended
    std::deque<std::function<void()>> tasks;
    size_t posted = 0;
    size_t begun = 0;
    size_t running = 0;
    size_t waiting = 0;
    size_t threads = 0;
    bool ending = false;

    void startThread();
    void runThread();
    void supervise();
};

// With the lock held. When the system gives no thread, those that there are go on.
void WorkPool::State::startThread() {
    try {
        std::thread([self = shared_from_this()] { self->runThread(); }).detach();
        ++threads;
    } catch (const std::system_error&) {
    }
}

void WorkPool::State::runThread() {
    onQueueThread() = true;
    Public::Base::nameThisThread("OrvQueue");
    std::unique_lock lock(mutex);
    for (;;) {
        if (tasks.empty()) {
            if (ending) break;
            ++waiting;
            const bool called = work.wait_for(lock, kIdleEnd, [this] { return ending || !tasks.empty(); });
            --waiting;
            if (!called && threads > kThreads) break;
            continue;
        }
        auto task = std::move(tasks.front());
        tasks.pop_front();
        ++begun;
        ++running;
        lock.unlock();
        runTask(task);
        task = nullptr;
        lock.lock();
        if (--running == 0 && tasks.empty()) idle.notify_all();
    }
    --threads;
    ended.notify_all();
}

void WorkPool::State::supervise() {
    onQueueThread() = true;
    std::unique_lock lock(mutex);
    while (!ending || !tasks.empty()) {
        watched.wait(lock, [this] { return ending || !tasks.empty(); });
        if (tasks.empty()) continue;
        const size_t before = begun;
        watched.wait_for(lock, kStalled);
        if (!tasks.empty() && begun == before && waiting == 0 && threads < kMostThreads) startThread();
    }
}

WorkPool::WorkPool(Threads threads) : mStepped(threads == Threads::None), mState(std::make_shared<State>()) {
    if (mStepped) return;
    std::lock_guard lock(mState->mutex);
    for (size_t i = 0; i < kThreads; ++i) mState->startThread();
    mSupervisor.emplace_back([state = mState] { state->supervise(); });
}

WorkPool::~WorkPool() {
    {
        std::unique_lock lock(mState->mutex);
        mState->ending = true;
        if (mStepped) {
            lock.unlock();
            waitUntilIdle();
            return;
        }
        mState->work.notify_all();
        mState->watched.notify_all();
        if (!onQueueThread()) mState->ended.wait(lock, [this] { return mState->threads == 0; });
    }
    endThreads(mSupervisor);
}

bool WorkPool::post(std::function<void()> task) {
    std::lock_guard lock(mState->mutex);
    if (mState->ending) return false;
    mState->tasks.push_back(std::move(task));
    ++mState->posted;
    mState->work.notify_one();
    if (mState->tasks.size() > mState->waiting) mState->watched.notify_one();
    return true;
}

bool WorkPool::step() {
    std::function<void()> task;
    {
        std::lock_guard lock(mState->mutex);
        if (mState->tasks.empty()) return false;
        task = std::move(mState->tasks.front());
        mState->tasks.pop_front();
    }
    runTask(task);
    return true;
}

void WorkPool::waitUntilIdle() {
    if (mStepped) {
        while (step()) {
        }
        return;
    }
    std::unique_lock lock(mState->mutex);
    mState->idle.wait(lock, [this] { return mState->running == 0 && mState->tasks.empty(); });
}

size_t WorkPool::posted() const {
    std::lock_guard lock(mState->mutex);
    return mState->posted;
}

size_t WorkPool::threads() const {
    std::lock_guard lock(mState->mutex);
    return mState->threads;
}

}  // namespace Tarnwick::MQ
