// Decompresses items on other threads, ahead of the one who takes them.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "ItemReader.h"
#include "Limits.h"

namespace Archive {

/// Hands out the items 0, 1, 2... in order, while readers, one a thread, work on later ones. Holds the item that was
/// handed out last and those ahead of it up to a limit in bytes; an item that does not fit waits until it is wanted and
/// the one before it is let go.
class ReadAhead {
public:
    /// @param cancelled ends all work early; outlives the object
    ReadAhead(size_t count, std::vector<std::unique_ptr<ItemReader>> readers, const std::atomic<bool>& cancelled,
              size_t limit = kReadAheadLimit);
    /// Ends the work and waits for the threads.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Waits for the next item. To be called at most count times.
    /// @param content valid until the next call
    ErrorCode next(ByteView& content);

private:
    struct Slot {
        Buffer memory;
        ByteView content;
        ErrorCode error = ErrorCode::ErrorCode_None;
    };
    class Turn;

    void work(ItemReader& reader);
    void readInto(ItemReader& reader, size_t index, Slot& slot);
    bool mayBegin() const;
    Buffer takeSpare();
    void dropSpares(size_t bytes);
    void release(Slot& slot);
    bool waitForMemory(size_t index, size_t bytes);

    const size_t mCount;
    const size_t mLimit;
    const std::atomic<bool>& mCancelled;
    std::atomic<bool> mStop{false};
    std::vector<std::unique_ptr<ItemReader>> mReaders;

    std::mutex mMutex;
    std::condition_variable mChanged;
    size_t mBegun = 0;             // items that a reader has taken up
    size_t mWanted = 0;            // the item to be handed out next
    bool mCallerWaits = false;     // for that item, holding none
    size_t mHeld = 0;              // bytes in slots, done or being filled, and in spare buffers
    std::map<size_t, Slot> mDone;  // read, not yet wanted
    std::vector<Buffer> mSpare;
    Slot mCurrent;  // handed out last
    std::vector<std::thread> mThreads;
};

}  // namespace Archive
