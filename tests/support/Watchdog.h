// What looks after something that may hang.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace support {

/// Calls `late`, on a thread of its own, each time that this patience has passed before it is destroyed.
class Watchdog {
public:
    Watchdog(std::chrono::seconds patience, std::function<void()> late)
        : mThread([this, patience, late = std::move(late)] {
              std::unique_lock lock(mMutex);
              while (!mChanged.wait_for(lock, patience, [this] { return mEnded; })) {
                  lock.unlock();
                  late();
                  lock.lock();
              }
          }) {}
    ~Watchdog() {
        {
            std::lock_guard lock(mMutex);
            mEnded = true;
        }
        mChanged.notify_all();
        mThread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mEnded = false;
    std::thread mThread;  // last: it uses the others
};

/// Ends the process, which fails its test. @param what hangs
[[noreturn]] inline void endAsHung(const std::string& what) {
    std::fprintf(stderr, "hangs: %s\n", what.c_str());
    std::abort();
}

}  // namespace support
