#include "MQ/WorkerPool.h"

#include <deque>
#include <system_error>

#include "Base/ThreadName.h"

namespace Tarnwick::MQ {

namespace {
constexpr size_t kLeastThreads = 4;
constexpr size_t kMostThreads = 512;
}  // namespace

struct WorkerPool::State {
    std::mutex mutex;  // guards all below
    std::condition_variable changed;
    std::deque<std::function<void()>> tasks;
    std::vector<std::thread> threads;
    size_t idle = 0;
    bool stopped = false;

    void run() {
        std::unique_lock lock(mutex);
        while (true) {
            ++idle;
            changed.wait(lock, [this] { return stopped || !tasks.empty(); });
            --idle;
            if (stopped) return;
            auto task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr;  // what it holds goes before the lock is taken
            lock.lock();
        }
    }

    /// One thread more, where the tasks outnumber those that wait for one.
    void grow(const std::shared_ptr<State>& self) {
        if (threads.size() >= kMostThreads || (tasks.size() <= idle && threads.size() >= kLeastThreads)) return;
        try {
            threads.emplace_back([self] {
                Public::Base::nameThisThread("OrvQueue");
                self->run();
            });
        } catch (const std::system_error&) {
            // The threads that there are will come to it.
        }
    }
};

WorkerPool::WorkerPool() : mState(std::make_shared<State>()) {}

WorkerPool::~WorkerPool() {
    std::deque<std::function<void()>> dropped;  // go after the lock is given back
    std::vector<std::thread> threads;
    {
        std::lock_guard lock(mState->mutex);
        mState->stopped = true;
        dropped.swap(mState->tasks);
        threads.swap(mState->threads);
    }
    mState->changed.notify_all();
    for (auto& thread : threads) {
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

bool WorkerPool::post(std::function<void()> task) {
    {
        std::lock_guard lock(mState->mutex);
        if (mState->stopped) return false;
        mState->tasks.push_back(std::move(task));
        mState->grow(mState);
    }
    mState->changed.notify_one();
    return true;
}

}  // namespace Tarnwick::MQ
