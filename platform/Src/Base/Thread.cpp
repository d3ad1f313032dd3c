#include "Public/Base/Thread.h"

#include <condition_variable>
#include <mutex>
#include <system_error>

#include "Base/SleepWatch.h"
#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

Thread::Thread(const std::string& name) : mName(name) {}

Thread::~Thread() { destroyThread(); }

bool Thread::createThread() {
    std::unique_lock joining(mJoining, std::defer_lock);
    if (!letGoOfOwnThread()) {
        joining.lock();
        join();
    }
    std::lock_guard lock(mMutex);
    if (mThread.joinable()) return true;  // a body that starts itself anew was overtaken
    try {
        mThread = std::thread([this] {
            nameThisThread(mName);
            threadProc();
        });
    } catch (const std::system_error& error) {
        ErrorInfo::setLastSystemError(error.code().value());
        return false;
    }
    mBody = mThread.get_id();
    // The body may end this object as soon as it gets mMutex, which is therefore the last to be given back.
    if (joining) joining.unlock();
    return true;
}

bool Thread::destroyThread() {
    if (letGoOfOwnThread()) return true;
    std::lock_guard joining(mJoining);
    join();
    return true;
}

void Thread::join() {
    std::thread ending;
    {
        std::lock_guard lock(mMutex);
        ending.swap(mThread);
    }
    if (!ending.joinable()) return;
    const auto ended = ending.get_id();
    ending.join();
    std::lock_guard lock(mMutex);
    if (mBody == ended) mBody = {};
}

bool Thread::letGoOfOwnThread() {
    std::lock_guard lock(mMutex);
    if (mBody != std::this_thread::get_id()) return false;
    // Where another thread waits for the body already, it is for that one to clear up.
    if (mThread.joinable()) {
        mThread.detach();
        mBody = {};
    }
    return true;
}

void Thread::sleep(unsigned int milliseconds) {
    const auto clock = Clock::current();
    const uint64_t deadline = clock->milliseconds() + milliseconds;
    const SleepWatch watch(deadline);
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock lock(mutex);
    while (!clock->waitUntil(lock, never, deadline)) {
    }
}

}  // namespace Public::Base
