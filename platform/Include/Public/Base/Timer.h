// A repeated call on a thread of its own.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Runs on the Clock in force when it is started. The destructor stops it and waits for a running call to end, unless
/// it is that call which destroys the timer. start and stop may be called from any thread, also by the call itself.
class ORV_PLATFORM_API Timer {
public:
    /// @param name of the thread, for debuggers
    explicit Timer(const std::string& name);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// @param callback gets `value` at each call, on the timer's thread
    /// @param delay    milliseconds before the first call
    /// @param period   milliseconds between calls, counted from their starts, so that a late call is not followed by a
    ///                 hasty one; 0 calls once
    /// A timer that already runs is stopped first. When the system gives no thread nothing is called
    /// (ErrorInfo::getLastError).
    void start(const Function<void(unsigned long)>& callback, unsigned int delay, unsigned int period,
               unsigned long value);
    void stop();

private:
    struct State;
    const std::string mName;
    std::mutex mMutex;  // guards mState
    std::shared_ptr<State> mState;
};

}  // namespace Public::Base
