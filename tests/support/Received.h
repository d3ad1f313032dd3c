// What callbacks of other threads bring, for a test to wait on.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace support {

/// How long a test waits for what must happen.
inline constexpr std::chrono::seconds kReceivePatience{20};

/// Gathers values in the order in which they come. Copies share what they gathered, so that a callback which is late
/// does no harm.
template <class T>
class Received {
public:
    void add(T value) const {
        std::lock_guard lock(mState->mutex);
        mState->values.push_back(std::move(value));
        mState->changed.notify_all();
    }
    /// @return false when fewer have come within the patience of a test
    bool waitFor(size_t count = 1) const {
        std::unique_lock lock(mState->mutex);
        return mState->changed.wait_for(lock, kReceivePatience, [&] { return mState->values.size() >= count; });
    }
    /// The first one; nothing when none has come within the patience of a test.
    std::optional<T> first() const {
        if (!waitFor()) return std::nullopt;
        return values().front();
    }
    std::vector<T> values() const {
        std::lock_guard lock(mState->mutex);
        return mState->values;
    }
    size_t count() const { return values().size(); }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<T> values;
    };
    std::shared_ptr<State> mState = std::make_shared<State>();
};

/// Holds threads up until it is opened. A gate that is destroyed opens.
class Gate {
public:
    Gate() = default;
    ~Gate() { open(); }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    void open() {
        std::lock_guard lock(mMutex);
        mOpen = true;
        mChanged.notify_all();
    }
    /// Waits at the gate. @return false when it was not opened within the patience of a test
    bool pass() {
        std::unique_lock lock(mMutex);
        ++mWaiting;
        mChanged.notify_all();
        return mChanged.wait_for(lock, kReceivePatience, [this] { return mOpen; });
    }
    /// @return false when nobody came to the gate within the patience of a test
    bool waitForSomeone() {
        std::unique_lock lock(mMutex);
        return mChanged.wait_for(lock, kReceivePatience, [this] { return mWaiting > 0; });
    }

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mOpen = false;
    int mWaiting = 0;
};

/// Waits until the condition holds. @return false when it did not within the patience of a test
template <class Condition>
bool eventually(const Condition& condition) {
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock lock(mutex);
    const auto end = std::chrono::steady_clock::now() + kReceivePatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        never.wait_for(lock, std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace support
