// A shared pointer that threads may read and replace at the same time.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

/// A reader takes a copy under the lock, a writer swaps the pointer under the lock; what was held before is released
/// after the lock is given back.
template <class T>
class SafeSharedPtr {
public:
    SafeSharedPtr() = default;
    explicit SafeSharedPtr(std::shared_ptr<T> pointer) : mPointer(std::move(pointer)) {}
    SafeSharedPtr(const SafeSharedPtr& other) : mPointer(other.get()) {}
    SafeSharedPtr& operator=(const SafeSharedPtr& other) {
        exchange(other.get());
        return *this;
    }
    SafeSharedPtr& operator=(std::shared_ptr<T> pointer) {
        exchange(std::move(pointer));
        return *this;
    }

    /// A copy, which keeps the object alive for the reader.
    std::shared_ptr<T> get() const {
        std::lock_guard lock(mMutex);
        return mPointer;
    }
    /// Puts in a new pointer and hands out the old one.
    std::shared_ptr<T> exchange(std::shared_ptr<T> pointer) {
        std::lock_guard lock(mMutex);
        mPointer.swap(pointer);
        return pointer;
    }
    explicit operator bool() const { return get() != nullptr; }

private:
    mutable std::mutex mMutex;
    std::shared_ptr<T> mPointer;
};
