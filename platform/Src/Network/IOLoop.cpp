#include "Network/IOLoop.h"

#include "Base/ThreadName.h"

namespace Public::Network {

using Clock = std::chrono::steady_clock;

namespace {
constexpr auto kLongestWait = std::chrono::seconds(60);
}

std::shared_ptr<IOLoop> IOLoop::run() {
    auto loop = std::make_shared<IOLoop>();
    std::lock_guard lock(loop->mMutex);
    loop->mThread = std::thread([loop] {
        Base::nameThisThread("OrvIO");
        loop->drive();
    });
    return loop;
}

IOLoop::IOLoop() : mMulti(curl_multi_init()) {}

IOLoop::~IOLoop() { curl_multi_cleanup(mMulti); }

void IOLoop::stop() {
    std::thread thread;
    {
        std::lock_guard lock(mMutex);
        mStopped = true;
        thread.swap(mThread);
    }
    curl_multi_wakeup(mMulti);
    if (!thread.joinable()) return;
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
    } else {
        thread.join();
    }
}

bool IOLoop::post(std::function<void()> command) {
    {
        std::lock_guard lock(mMutex);
        if (mStopped) return false;
        mCommands.push_back(std::move(command));
    }
    curl_multi_wakeup(mMulti);
    return true;
}

bool IOLoop::add(const std::shared_ptr<IOTransfer>& transfer) {
    return post([this, transfer] {
        mTransfers[transfer->easy()] = transfer;
        if (curl_multi_add_handle(mMulti, transfer->easy()) != CURLM_OK) finish(transfer->easy(), CURLE_FAILED_INIT, false);
    });
}

void IOLoop::remove(const std::shared_ptr<IOTransfer>& transfer) {
    post([this, transfer] {
        if (mTransfers.erase(transfer->easy()) != 0) curl_multi_remove_handle(mMulti, transfer->easy());
    });
}

void IOLoop::drive() {
    while (true) {
        runCommands();
        {
            std::lock_guard lock(mMutex);
            if (mStopped) break;
        }
        int running = 0;
        curl_multi_perform(mMulti, &running);
        takeFinished();
        takeExpired();
        wait();
    }
    runCommands();
    finishAll();
}

void IOLoop::runCommands() {
    std::vector<std::function<void()>> commands;
    {
        std::lock_guard lock(mMutex);
        commands.swap(mCommands);
    }
    for (const auto& command : commands) command();
}

void IOLoop::wait() {
    auto until = Clock::now() + kLongestWait;
    for (const auto& [easy, transfer] : mTransfers) until = std::min(until, transfer->expires());
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count() + 1;
    curl_multi_poll(mMulti, nullptr, 0, left < 0 ? 0 : static_cast<int>(left), nullptr);
}

void IOLoop::takeFinished() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(mMulti, &left)) {
        if (message->msg == CURLMSG_DONE) finish(message->easy_handle, message->data.result, false);
    }
}

void IOLoop::takeExpired() {
    const auto now = Clock::now();
    std::vector<CURL*> expired;
    for (const auto& [easy, transfer] : mTransfers) {
        if (transfer->expires() <= now) expired.push_back(easy);
    }
    for (CURL* easy : expired) finish(easy, CURLE_OPERATION_TIMEDOUT, true);
}

void IOLoop::finish(CURL* easy, CURLcode result, bool timedOut) {
    const auto found = mTransfers.find(easy);
    if (found == mTransfers.end()) return;
    const auto transfer = found->second;
    mTransfers.erase(found);
    curl_multi_remove_handle(mMulti, easy);
    transfer->finished(result, timedOut);
}

void IOLoop::finishAll() {
    while (!mTransfers.empty()) finish(mTransfers.begin()->first, CURLE_ABORTED_BY_CALLBACK, false);
}

}  // namespace Public::Network
