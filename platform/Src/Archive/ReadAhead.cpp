#include "ReadAhead.h"

#include <system_error>

namespace Archive {
namespace {
constexpr size_t kItemsAhead = 256;  // small items weigh nothing but must not pile up without end
}  // namespace

/// One item's permission to take memory.
class ReadAhead::Turn : public Allowance {
public:
    Turn(ReadAhead& ahead, size_t index) : mAhead(ahead), mIndex(index) {}
    bool more(size_t bytes) override { return mAhead.waitForMemory(mIndex, bytes); }
    bool stopped() const override { return mAhead.mStop || mAhead.mCancelled; }

private:
    ReadAhead& mAhead;
    size_t mIndex;
};

ReadAhead::ReadAhead(size_t count, std::vector<std::unique_ptr<ItemReader>> readers, const std::atomic<bool>& cancelled,
                     size_t limit)
    : mCount(count), mLimit(limit), mCancelled(cancelled), mReaders(std::move(readers)) {
    mThreads.reserve(mReaders.size());
    try {
        for (auto& reader : mReaders) mThreads.emplace_back([this, &reader] { work(*reader); });
    } catch (const std::system_error&) {
        // Fewer threads will do; without any the items are read when they are wanted.
    }
}

ReadAhead::~ReadAhead() {
    {
        std::lock_guard lock(mMutex);
        mStop = true;
    }
    mChanged.notify_all();
    for (std::thread& thread : mThreads) thread.join();
}

ErrorCode ReadAhead::next(ByteView& content) {
    std::unique_lock lock(mMutex);
    release(mCurrent);
    mCallerWaits = true;
    if (mThreads.empty()) {
        const size_t index = mWanted;
        lock.unlock();
        readInto(*mReaders.front(), index, mCurrent);
        lock.lock();
    } else {
        mChanged.notify_all();
        mChanged.wait(lock, [&] { return mDone.contains(mWanted); });
        auto found = mDone.find(mWanted);
        mCurrent = std::move(found->second);
        mDone.erase(found);
    }
    mCallerWaits = false;
    ++mWanted;
    lock.unlock();
    mChanged.notify_all();
    content = mCurrent.content;
    return mCurrent.error;
}

void ReadAhead::work(ItemReader& reader) {
    std::unique_lock lock(mMutex);
    while (true) {
        mChanged.wait(lock, [&] { return mStop || mBegun == mCount || mayBegin(); });
        if (mStop || mBegun == mCount) return;
        const size_t index = mBegun++;
        Slot slot;
        slot.memory = takeSpare();
        lock.unlock();
        readInto(reader, index, slot);
        lock.lock();
        mDone.emplace(index, std::move(slot));
        mChanged.notify_all();
    }
}

void ReadAhead::readInto(ItemReader& reader, size_t index, Slot& slot) {
    Turn turn(*this, index);
    try {
        slot.error = reader.read(index, slot.memory, turn, slot.content);
    } catch (const std::bad_alloc&) {
        slot.error = ErrorCode::ErrorCode_Limit;
    }
    if (slot.error != ErrorCode::ErrorCode_None) slot.content = {};
}

bool ReadAhead::mayBegin() const { return mBegun == mWanted || (mBegun < mWanted + kItemsAhead && mHeld < mLimit); }

Buffer ReadAhead::takeSpare() {
    if (mSpare.empty()) return {};
    Buffer buffer = std::move(mSpare.back());
    mSpare.pop_back();
    return buffer;
}

void ReadAhead::dropSpares(size_t bytes) {
    while (mHeld + bytes > mLimit && !mSpare.empty()) {
        mHeld -= std::min(mHeld, mSpare.back().capacity());
        mSpare.pop_back();
    }
}

void ReadAhead::release(Slot& slot) {
    constexpr size_t kLargestSpare = 8u << 20;  // what a small item would hold in vain
    const size_t capacity = slot.memory.capacity();
    if (capacity != 0 && capacity <= kLargestSpare && mSpare.size() <= mReaders.size()) {
        mSpare.push_back(std::move(slot.memory));
    } else {
        // An allocation that failed was granted all the same; what is held is counted by what there is.
        mHeld -= std::min(mHeld, capacity);
    }
    dropSpares(0);
    slot = Slot();
}

bool ReadAhead::waitForMemory(size_t index, size_t bytes) {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [&] {
        dropSpares(bytes);
        return mStop || mCancelled || mHeld + bytes <= mLimit || (index == mWanted && mCallerWaits);
    });
    mHeld += bytes;
    return !mStop && !mCancelled;
}

}  // namespace Archive
