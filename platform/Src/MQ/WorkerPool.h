// The threads on which a bus runs handlers and callbacks.
#pragma once

#include <functional>
#include <memory>

namespace Tarnwick::MQ {

/// Grows while all of its threads are busy, so that a task which blocks holds up no other. Tasks may still be posted by tasks
/// while it ends; what has not begun by then is dropped.
class WorkerPool {
public:
    WorkerPool();
    /// Waits for running tasks, except for one that itself destroys the pool.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// @return false when the pool has ended
    bool post(std::function<void()> task);

private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace Tarnwick::MQ
