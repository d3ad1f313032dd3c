// A thread that drives many transfers.
#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Network/CompletionPool.h"
#include "Network/Exchange.h"
#include "Network/Transfer.h"

namespace Public::Network {

/// Its one thread sits in `run`. An exchange stays with one loop from its start to its end, so its pieces of body come
/// in order and never two at a time. The loop watches the sockets itself, so that it knows of every byte that moves,
/// also of half a header line.
class TransferLoop {
public:
    /// Throws std::system_error when the system gives no socket to wake it by.
    explicit TransferLoop(const std::shared_ptr<CompletionPool>& completions);
    ~TransferLoop();
    TransferLoop(const TransferLoop&) = delete;
    TransferLoop& operator=(const TransferLoop&) = delete;

    /// Until `stop`. What is under way then ends with a failure.
    void run();

    // The others may be called from any thread, and never wait for a callback.
    /// @return false after stop
    bool submit(const std::shared_ptr<Exchange>& exchange);
    void stop();
    /// Lets the loop look for exchanges that have been ended.
    void wake();
    /// Exchanges under way.
    size_t load() const { return mLoad; }

private:
    using Clock = std::chrono::steady_clock;
    struct Watch {
        short events = 0;  // CURL_WAIT_*
        CURL* easy = nullptr;
    };

    static int onSocket(CURL* easy, curl_socket_t socket, int what, void* loop, void* unused) noexcept;
    static int onTimer(CURLM* multi, long milliseconds, void* loop) noexcept;

    bool takeSubmitted();
    void begin(const std::shared_ptr<Exchange>& exchange);
    void waitAndMove();
    int patience() const;
    void collectFinished();
    void dropEnded();
    void expire(Clock::time_point now);
    void finish(Transfer& transfer, CURLcode result);
    void remove(Transfer& transfer);
    void failAll();

    CURLM* mMulti;
    CURLM* mSleeper;  // holds no transfer; waits on sockets, and is woken
    std::optional<CompletionPool::Producer> mCompletions;
    std::map<CURL*, std::unique_ptr<Transfer>> mTransfers;
    std::map<curl_socket_t, Watch> mWatches;
    std::vector<curl_waitfd> mReady;
    std::optional<Clock::time_point> mTimer;
    std::atomic<size_t> mLoad{0};

    std::mutex mMutex;  // guards what follows
    std::vector<std::shared_ptr<Exchange>> mSubmitted;
    bool mStopping = false;
};

}  // namespace Public::Network
