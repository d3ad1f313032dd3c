// The threads behind an IOWorker.
#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "Network/CompletionPool.h"
#include "Network/TransferLoop.h"
#include "Public/Network/IOWorker.h"

namespace Public::Network {

/// Outlives its IOWorker while a client still refers to it, but takes no exchange from then on.
class IOWorker::Impl {
public:
    /// Throws std::system_error when the system gives no thread or no socket.
    explicit Impl(size_t threads);
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl();

    /// Gives the exchange to the loop with the fewest. @return false after shutDown
    bool submit(const std::shared_ptr<Exchange>& exchange);
    /// Lets the loops look for exchanges that have been ended.
    void wake();
    /// Running exchanges end with a failure. Returns when the threads have ended, unless it is called on one of them:
    /// then they end on their own.
    void shutDown();

private:
    std::shared_ptr<CompletionPool> mCompletions;
    std::vector<std::shared_ptr<TransferLoop>> mLoops;
    std::vector<std::thread> mThreads;
    std::atomic<size_t> mTurn{0};
};

}  // namespace Public::Network
