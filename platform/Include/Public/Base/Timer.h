// A repeated call on a thread of its own.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Runs on the Clock in force when it is started. The destructor stops it and waits for a running call to end, unless it
/// is that call which destroys the timer.
class ORV_PLATFORM_API Timer {
public:
    /// @param name of the thread, for debuggers
    explicit Timer(const std::string& name);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// @param callback gets `value` at each call, on the timer's thread
    /// @param delay    milliseconds before the first call
    /// @param period   milliseconds between calls, counted from their starts; 0 calls once
    /// A timer that already runs is stopped first.
    void start(const Function<void(unsigned long)>& callback, unsigned int delay, unsigned int period,
               unsigned long value);
    void stop();

private:
    struct State;
    std::string mName;
    std::shared_ptr<State> mState;
};

}  // namespace Public::Base
