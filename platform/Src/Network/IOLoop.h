// One thread of an IOWorker, and the transfers that it drives.
#pragma once

#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Public::Network {

/// A transfer as the loop sees it; all operations run on the loop's thread.
class IOTransfer {
public:
    using Instant = std::chrono::steady_clock::time_point;

    virtual ~IOTransfer() = default;
    virtual CURL* easy() = 0;
    /// When it has been silent for too long; the farthest instant for never.
    virtual Instant expires() const = 0;
    /// It has ended; called once. @param timedOut after too long a silence
    virtual void finished(CURLcode result, bool timedOut) = 0;
};

/// Waits for all of its transfers at once. Its thread holds it, so that it may be let go of on that thread itself.
class IOLoop : public std::enable_shared_from_this<IOLoop> {
public:
    static std::shared_ptr<IOLoop> run();
    IOLoop();
    ~IOLoop();
    /// Ends every transfer and the thread, and waits for it, except on the thread itself.
    void stop();

    /// @return false when the loop has been stopped
    bool add(const std::shared_ptr<IOTransfer>& transfer);
    /// Forgets a transfer; it is told nothing.
    void remove(const std::shared_ptr<IOTransfer>& transfer);

private:
    bool post(std::function<void()> command);
    void drive();
    void runCommands();
    void wait();
    void takeFinished();
    void takeExpired();
    void finish(CURL* easy, CURLcode result, bool timedOut);
    void finishAll();

    CURLM* const mMulti;
    std::map<CURL*, std::shared_ptr<IOTransfer>> mTransfers;  // touched by the thread only
    std::mutex mMutex;                                        // guards all below
    std::vector<std::function<void()>> mCommands;
    bool mStopped = false;
    std::thread mThread;
};

}  // namespace Public::Network
