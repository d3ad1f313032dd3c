#include "Network/CompletionPool.h"

namespace Public::Network {

CompletionPool::Producer::Producer(std::shared_ptr<CompletionPool> pool) : mPool(std::move(pool)) {
    std::lock_guard lock(mPool->mMutex);
    ++mPool->mProducers;
}

CompletionPool::Producer::~Producer() {
    std::lock_guard lock(mPool->mMutex);
    --mPool->mProducers;
    mPool->mChanged.notify_all();
}

void CompletionPool::Producer::post(std::function<void()> call) {
    std::lock_guard lock(mPool->mMutex);
    mPool->mCalls.push_back(std::move(call));
    mPool->mChanged.notify_one();
}

void CompletionPool::run() {
    for (;;) {
        std::function<void()> call;
        {
            std::unique_lock lock(mMutex);
            mChanged.wait(lock, [this] { return !mCalls.empty() || mProducers == 0; });
            if (mCalls.empty()) return;
            call = std::move(mCalls.front());
            mCalls.pop_front();
        }
        call();
    }
}

}  // namespace Public::Network
