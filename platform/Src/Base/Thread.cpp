#include "Public/Base/Thread.h"

#include <condition_variable>
#include <system_error>

#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

Thread::Thread(const std::string& name) : mName(name) {}

Thread::~Thread() { destroyThread(); }

bool Thread::createThread() {
    std::unique_lock lock(mMutex);
    while (mThread.joinable()) {  // another caller may be quicker to start one
        lock.unlock();
        destroyThread();
        lock.lock();
    }
    try {
        mThread = std::thread([this] {
            nameThisThread(mName);
            threadProc();
        });
        return true;
    } catch (const std::system_error& error) {
        ErrorInfo::setLastSystemError(error.code().value());
        return false;
    }
}

bool Thread::destroyThread() {
    std::thread ending;
    {
        std::lock_guard lock(mMutex);
        ending.swap(mThread);
    }
    if (!ending.joinable()) return true;
    if (ending.get_id() == std::this_thread::get_id()) {
        ending.detach();
    } else {
        ending.join();
    }
    return true;
}

void Thread::sleep(unsigned int milliseconds) {
    const auto clock = Clock::current();
    const uint64_t deadline = clock->milliseconds() + milliseconds;
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock lock(mutex);
    while (!clock->waitUntil(lock, never, deadline)) {
    }
}

}  // namespace Public::Base
