// Runs short tasks when the clock reaches their time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace Tarnwick::MQ {

/// One thread on the Clock for all nodes of a process: request time-outs, announcements, delayed frames. Tasks must be
/// short and hand longer work to a pool. All operations may be called from any thread.
class Deadlines {
public:
    using Key = std::pair<uint64_t, uint64_t>;  ///< deadline in milliseconds of the clock, then order of entry

    /// The one on the clock in force; lives as long as someone holds it.
    static std::shared_ptr<Deadlines> shared();
    Deadlines();
    ~Deadlines();
    Deadlines(const Deadlines&) = delete;
    Deadlines& operator=(const Deadlines&) = delete;

    uint64_t now() const;
    /// Tasks of one deadline run in the order of entry.
    Key at(uint64_t deadline, std::function<void()> task);
    /// Takes back a task that has not begun.
    void cancel(const Key& key);
    /// Waits until every task whose time has come has run. Not from a task.
    void waitUntilNothingIsDue();
    /// True when a task's time has come, or one runs.
    bool somethingIsDue();

private:
    struct State;
    std::shared_ptr<State> mState;
    std::vector<std::thread> mThreads;
};

}  // namespace Tarnwick::MQ
