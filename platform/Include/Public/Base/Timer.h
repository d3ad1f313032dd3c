// A repeated call on a thread of its own.
#pragma once

#include <memory>
#include <string>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"
#include "Public/Base/SafeSharedPtr.h"

namespace Public::Base {

/// Runs on the Clock in force when it is started. The destructor stops it and waits for a running call to end, unless
/// it is that call which destroys the timer. start and stop may be called from the callback too, otherwise by one
/// thread at a time.
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
    /// A timer that already runs is stopped first. Where the system gives no thread nothing is ever called, and
    /// ErrorInfo::getLastError tells it.
    void start(const Function<void(unsigned long)>& callback, unsigned int delay, unsigned int period,
               unsigned long value);
    /// No call begins after it; it waits for a running one to end, unless it is called by that one.
    void stop();

private:
    struct State;
    std::string mName;
    SafeSharedPtr<State> mState;
};

}  // namespace Public::Base
