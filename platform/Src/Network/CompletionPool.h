// The threads that tell owners how their requests ended.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace Public::Network {

/// A queue of calls, apart from the transfer loops, so that a completion that takes its time (a package test, a person
/// who is asked) holds up no transfer. Each of its threads sits in `run`, until the last producer is gone and every
/// call has been made.
class CompletionPool {
public:
    /// The right to post. One for each transfer loop.
    class Producer {
    public:
        explicit Producer(std::shared_ptr<CompletionPool> pool);
        ~Producer();
        Producer(const Producer&) = delete;
        Producer& operator=(const Producer&) = delete;
        void post(std::function<void()> call);

    private:
        std::shared_ptr<CompletionPool> mPool;
    };

    void run();

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<std::function<void()>> mCalls;
    size_t mProducers = 0;
};

}  // namespace Public::Network
