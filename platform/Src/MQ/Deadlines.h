// Runs tasks when their time has come.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Tarnwick::MQ {

/// One thread on the Clock in force when it is made. Tasks run one after another and must be short. The destructor drops what
/// has not begun and waits for a running task, unless it is that task which destroys it.
class Deadlines {
public:
    using Handle = uint64_t;

    explicit Deadlines(const std::string& threadName);
    ~Deadlines();
    Deadlines(const Deadlines&) = delete;
    Deadlines& operator=(const Deadlines&) = delete;

    /// @param delayMs milliseconds from now
    Handle after(uint64_t delayMs, std::function<void()> task);
    /// Without effect on a task that has begun.
    void cancel(Handle handle);
    /// Milliseconds of the clock that the deadlines are on.
    uint64_t now() const;

private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace Tarnwick::MQ
