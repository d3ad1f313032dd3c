#include "Public/Base/DetachedThread.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "Base/SleepWatch.h"
#include "Base/ThreadName.h"
#include "Public/Base/Clock.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

namespace {

/// Each thread holds it, so that one which outlives the process's statics meets no ruin.
struct Detached {
    std::mutex mutex;
    std::condition_variable changed;
    size_t awake = 0;
    std::multiset<uint64_t> asleep;  // until when

    bool quiet() const { return awake == 0 && (asleep.empty() || *asleep.begin() > Clock::current()->milliseconds()); }
};

std::shared_ptr<Detached> detached() {
    static const auto state = std::make_shared<Detached>();
    return state;
}

thread_local Detached* ownState = nullptr;  // null on threads that somebody joins

void changeAwake(Detached& state, bool begins) {
    std::lock_guard lock(state.mutex);
    begins ? ++state.awake : --state.awake;
    state.changed.notify_all();
}

}  // namespace

bool startDetached(const std::string& name, std::function<void()> body) {
    const auto state = detached();
    changeAwake(*state, true);
    try {
        std::thread([state, name, body = std::move(body)]() mutable {
            nameThisThread(name);
            ownState = state.get();
            body();
            body = nullptr;
            changeAwake(*state, false);
        }).detach();
    } catch (const std::system_error& error) {
        changeAwake(*state, false);
        ErrorInfo::setLastSystemError(error.code().value());
        return false;
    }
    return true;
}

void settleDetached() {
    const auto state = detached();
    std::unique_lock lock(state->mutex);
    // A sleeper's time comes without a notice.
    while (!state->quiet()) state->changed.wait_for(lock, std::chrono::milliseconds(1));
}

SleepWatch::SleepWatch(uint64_t deadline) : mDeadline(deadline) {
    if (!ownState) return;
    std::lock_guard lock(ownState->mutex);
    --ownState->awake;
    ownState->asleep.insert(mDeadline);
    ownState->changed.notify_all();
}

SleepWatch::~SleepWatch() {
    if (!ownState) return;
    std::lock_guard lock(ownState->mutex);
    ++ownState->awake;
    ownState->asleep.erase(ownState->asleep.find(mDeadline));
}

}  // namespace Public::Base
