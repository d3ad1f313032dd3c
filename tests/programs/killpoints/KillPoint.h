// One call that changes files, for the program's own versions of them.
#pragma once

#include <mutex>

#include "KillPoints.h"
#include "Unsynced.h"

namespace killpoints {

/// Counts one call, and holds up all others until it has been noted.
class Point {
public:
    Point();
    /// Nothing is counted or noted while nobody is armed.
    bool armed() const { return mArmed; }
    /// Where the process has to end in it.
    bool isLast() const { return mIsLast; }
    /// Ends the process when it is time.
    Point& pass();

private:
    bool mArmed;
    bool mIsLast = false;
    std::unique_lock<std::recursive_mutex> mLock;
};

bool isArmed();
bool halvesWrites();
/// Only while a Point lives.
Unsynced& unsynced();

/// Ends this process at once, as the system's own means of killing do.
[[noreturn]] void killThisProcess();

}  // namespace killpoints
