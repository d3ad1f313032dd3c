// Ends a test program that hangs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace faults {

/// Ends the process, which fails its test, unless it is destroyed in time.
class Watchdog {
public:
    /// @param what tells at that moment what hangs
    explicit Watchdog(std::function<std::string()> what)
        : mThread([this, what = std::move(what)] {
              constexpr std::chrono::seconds kPatience{30};
              std::unique_lock lock(mMutex);
              if (mEnded.wait_for(lock, kPatience, [this] { return mEnd; })) return;
              std::fprintf(stderr, "hangs: %s\n", what().c_str());
              std::abort();
          }) {}
    ~Watchdog() {
        {
            std::lock_guard lock(mMutex);
            mEnd = true;
        }
        mEnded.notify_all();
        mThread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    std::mutex mMutex;
    std::condition_variable mEnded;
    bool mEnd = false;
    std::thread mThread;
};

}  // namespace faults
