// A thread whose body is an operation of a derived class.
#pragma once

#include <mutex>
#include <string>
#include <thread>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// A derived class must see to it that the thread has ended before its own members go: call destroyThread in its
/// destructor.
class ORV_PLATFORM_API Thread {
public:
    /// @param name of the thread, for debuggers
    explicit Thread(const std::string& name);
    virtual ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Starts the body; one that still runs is waited for first. @return false when the system gives no thread
    /// (ErrorInfo::getLastError)
    bool createThread();
    /// Waits until the body has returned; several threads may. Called from the body itself, it lets the thread end on
    /// its own.
    bool destroyThread();
    /// Waits on the Clock. @param milliseconds 0 returns at once
    static void sleep(unsigned int milliseconds);

protected:
    virtual void threadProc() = 0;

private:
    /// @return true when the calling thread is the one that runs the body
    bool letGoOfOwnThread();
    /// With mJoining held.
    void join();

    const std::string mName;
    std::mutex mJoining;    // held while a thread waits for the body; taken before mMutex
    std::mutex mMutex;      // guards the two below
    std::thread mThread;    // empty while a thread waits for the body
    std::thread::id mBody;  // the thread that runs the body and has not been let go
};

}  // namespace Public::Base
