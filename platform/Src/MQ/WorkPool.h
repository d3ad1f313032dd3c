// The threads of the embedded bus.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace Tarnwick::MQ {

/// Begins tasks in the order of their posting, on four threads and as many more as it takes: when tasks wait and for
/// five milliseconds none of them has begun, the threads that there are must be blocked, and one more is started. What
/// was added ends after five idle seconds. The destructor runs the tasks that still wait.
///
/// Without threads of its own it begins a task only when it is told to, one after another, on the thread that tells it.
class WorkPool {
public:
    enum class Threads { Own, None };

    explicit WorkPool(Threads threads = Threads::Own);
    ~WorkPool();
    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    /// False when the pool has ended.
    bool post(std::function<void()> task);
    /// Waits until no task waits or runs; without threads, runs them. Not from a task.
    void waitUntilIdle();
    /// Without threads: runs the task that waits longest. @return false when none waits
    bool step();
    /// Tasks posted since the start.
    size_t posted() const;
    size_t threads() const;

private:
    struct State;
    const bool mStepped;
    std::shared_ptr<State> mState;
    std::vector<std::thread> mSupervisor;
};

}  // namespace Tarnwick::MQ
