#include "Network/TransferLoop.h"

#include <algorithm>
#include <system_error>

namespace Public::Network {

namespace {

constexpr int kLongestSleepMs = 60000;
constexpr long kIdleConnections = 8;

bool initializeCurl() {
    static const bool done = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return done;
}

int millisecondsUntil(std::chrono::steady_clock::time_point then) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(then - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, kLongestSleepMs));
}

}  // namespace

TransferLoop::TransferLoop(const std::shared_ptr<CompletionPool>& completions)
    : mMulti(initializeCurl() ? curl_multi_init() : nullptr), mSleeper(mMulti ? curl_multi_init() : nullptr) {
    // Fails when there is no socket to wake the sleeper by.
    if (!mSleeper || curl_multi_wakeup(mSleeper) != CURLM_OK) {
        curl_multi_cleanup(mSleeper);
        curl_multi_cleanup(mMulti);
        throw std::system_error(std::make_error_code(std::errc::too_many_files_open));
    }
    curl_multi_setopt(mMulti, CURLMOPT_SOCKETFUNCTION, &TransferLoop::onSocket);
    curl_multi_setopt(mMulti, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(mMulti, CURLMOPT_TIMERFUNCTION, &TransferLoop::onTimer);
    curl_multi_setopt(mMulti, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(mMulti, CURLMOPT_MAXCONNECTS, kIdleConnections);
    mCompletions.emplace(completions);
}

TransferLoop::~TransferLoop() {
    curl_multi_cleanup(mMulti);
    curl_multi_cleanup(mSleeper);
}

void TransferLoop::run() {
    while (takeSubmitted()) {
        dropEnded();
        waitAndMove();
    }
    failAll();
    mCompletions.reset();
}

bool TransferLoop::submit(const std::shared_ptr<Exchange>& exchange) {
    std::lock_guard lock(mMutex);
    if (mStopping) return false;
    ++mLoad;
    mSubmitted.push_back(exchange);
    curl_multi_wakeup(mSleeper);
    return true;
}

void TransferLoop::stop() {
    std::lock_guard lock(mMutex);
    mStopping = true;
    curl_multi_wakeup(mSleeper);
}

void TransferLoop::wake() { curl_multi_wakeup(mSleeper); }

bool TransferLoop::takeSubmitted() {
    std::vector<std::shared_ptr<Exchange>> submitted;
    {
        std::lock_guard lock(mMutex);
        if (mStopping) return false;
        submitted.swap(mSubmitted);
    }
    for (const auto& exchange : submitted) begin(exchange);
    return true;
}

void TransferLoop::begin(const std::shared_ptr<Exchange>& exchange) {
    auto transfer = std::make_unique<Transfer>(exchange);
    CURL* const easy = transfer->easy();
    if (!easy || curl_multi_add_handle(mMulti, easy) != CURLM_OK) {
        --mLoad;
        mCompletions->post([exchange] { exchange->complete(failedResponse(0)); });
        return;
    }
    mTransfers.emplace(easy, std::move(transfer));
}

int TransferLoop::onSocket(CURL* easy, curl_socket_t socket, int what, void* loop, void*) noexcept {
    auto& watches = static_cast<TransferLoop*>(loop)->mWatches;
    if (what == CURL_POLL_REMOVE) {
        watches.erase(socket);
        return 0;
    }
    Watch watch;
    if (what & CURL_POLL_IN) watch.events |= CURL_WAIT_POLLIN;
    if (what & CURL_POLL_OUT) watch.events |= CURL_WAIT_POLLOUT;
    watch.easy = easy;
    watches[socket] = watch;
    return 0;
}

int TransferLoop::onTimer(CURLM*, long milliseconds, void* loop) noexcept {
    auto& timer = static_cast<TransferLoop*>(loop)->mTimer;
    timer.reset();
    if (milliseconds >= 0) timer = Clock::now() + std::chrono::milliseconds(milliseconds);
    return 0;
}

int TransferLoop::patience() const {
    int shortest = mTimer ? millisecondsUntil(*mTimer) : kLongestSleepMs;
    for (const auto& [easy, transfer] : mTransfers) {
        if (const auto deadline = transfer->deadline()) shortest = std::min(shortest, millisecondsUntil(*deadline));
    }
    return shortest;
}

void TransferLoop::waitAndMove() {
    mReady.clear();
    for (const auto& [socket, watch] : mWatches) mReady.push_back({socket, watch.events, 0});
    curl_multi_poll(mSleeper, mReady.data(), static_cast<unsigned int>(mReady.size()), patience(), nullptr);

    // A callback may take long: what came meanwhile is not yet known to have come, so silence is judged as of now.
    const auto now = Clock::now();
    int running = 0;
    for (const auto& ready : mReady) {
        const auto watch = mWatches.find(ready.fd);
        if (ready.revents == 0 || watch == mWatches.end()) continue;
        const auto transfer = mTransfers.find(watch->second.easy);
        if (transfer != mTransfers.end()) transfer->second->noteMove();
        int what = 0;
        if (ready.revents & CURL_WAIT_POLLIN) what |= CURL_CSELECT_IN;
        if (ready.revents & CURL_WAIT_POLLOUT) what |= CURL_CSELECT_OUT;
        curl_multi_socket_action(mMulti, ready.fd, what, &running);
    }
    if (mTimer && *mTimer <= now) {
        mTimer.reset();
        curl_multi_socket_action(mMulti, CURL_SOCKET_TIMEOUT, 0, &running);
    }
    collectFinished();
    expire(now);
}

void TransferLoop::collectFinished() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(mMulti, &left)) {
        const auto found = mTransfers.find(message->easy_handle);
        if (message->msg == CURLMSG_DONE && found != mTransfers.end()) finish(*found->second, message->data.result);
    }
}

void TransferLoop::dropEnded() {
    for (auto next = mTransfers.begin(); next != mTransfers.end();) {
        Transfer& transfer = *next++->second;
        if (transfer.exchange()->ended()) remove(transfer);
    }
}

void TransferLoop::expire(Clock::time_point now) {
    for (auto next = mTransfers.begin(); next != mTransfers.end();) {
        Transfer& transfer = *next++->second;
        const auto deadline = transfer.deadline();
        if (deadline && *deadline <= now) finish(transfer, CURLE_OPERATION_TIMEDOUT);
    }
}

void TransferLoop::finish(Transfer& transfer, CURLcode result) {
    auto response = transfer.response(result);
    const auto exchange = transfer.exchange();
    remove(transfer);
    mCompletions->post([exchange, response] { exchange->complete(response); });
}

void TransferLoop::remove(Transfer& transfer) {
    CURL* const easy = transfer.easy();
    curl_multi_remove_handle(mMulti, easy);
    mTransfers.erase(easy);
    --mLoad;
}

void TransferLoop::failAll() {
    while (!mTransfers.empty()) finish(*mTransfers.begin()->second, CURLE_ABORTED_BY_CALLBACK);
    std::vector<std::shared_ptr<Exchange>> submitted;
    {
        std::lock_guard lock(mMutex);
        submitted.swap(mSubmitted);
    }
    for (const auto& exchange : submitted) {
        --mLoad;
        mCompletions->post([exchange] { exchange->complete(failedResponse(0)); });
    }
}

}  // namespace Public::Network
