#include "VersionService/PendingExits.h"

#include "Public/Base/DetachedThread.h"
#include "Public/Base/Thread.h"
#include "Public/Base/Time.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::Thread;
using Public::Base::Time;

namespace {

constexpr unsigned kDelay = 1000;  // milliseconds

}  // namespace

void PendingExits::add(const std::shared_ptr<AgentInstaller>& installer) {
    {
        std::lock_guard lock(mMutex);
        mWaiting.emplace_back(Time::getCurrentMilliSecond() + kDelay, installer);
        if (std::exchange(mRunning, true)) return;
    }
    // The installer waits for the host to end: without a thread it is better ended from here than never.
    if (!Public::Base::startDetached("InstallExit", [self = shared_from_this()] { self->run(); })) run();
}

void PendingExits::run() {
    std::unique_lock lock(mMutex);
    while (!mWaiting.empty()) {
        const auto [due, installer] = mWaiting.front();
        mWaiting.pop_front();
        lock.unlock();
        const uint64_t now = Time::getCurrentMilliSecond();
        if (now < due) Thread::sleep(static_cast<unsigned>(due - now));
        installer->exit();
        lock.lock();
    }
    mRunning = false;
}

}  // namespace Tarnwick::OrvUpdate
