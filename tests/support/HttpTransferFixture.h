// What tests of the transfer from the cloud have in common: a server, a version that it offers, and who waits.
#pragma once

#include "BadHttpServer.h"
#include "FileText.h"
#include "HttpDownloadAccess.h"
#include "HttpFileServer.h"
#include "LogRecorder.h"
#include "PackageStore.h"

namespace support {

/// Counts the calls of its callback, which may outlive it.
class Waiter {
public:
    Public::Base::Function<void()> callback() const {
        return [state = mState] {
            std::lock_guard lock(state->mutex);
            ++state->calls;
            state->thread = std::this_thread::get_id();
            state->called.notify_all();
        };
    }
    int calls() const {
        std::lock_guard lock(mState->mutex);
        return mState->calls;
    }
    std::thread::id thread() const {
        std::lock_guard lock(mState->mutex);
        return mState->thread;
    }
    /// @return false when fewer calls came within the patience of a test
    bool wait(int calls = 1) const {
        std::unique_lock lock(mState->mutex);
        return mState->called.wait_for(lock, LoopbackServer::kPatience, [&] { return mState->calls >= calls; });
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable called;
        int calls = 0;
        std::thread::id thread;
    };
    std::shared_ptr<State> mState = std::make_shared<State>();
};

/// @return false when it did not become true within the patience of a test
template <class Predicate>
bool eventually(Predicate predicate) {
    const auto deadline = std::chrono::steady_clock::now() + LoopbackServer::kPatience;
    while (!predicate()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

class HttpTransferFixture : public testing::Test {
protected:
    using HttpDownload = Tarnwick::OrvUpdate::HttpDownload;
    using HttpDownloadAccess = Tarnwick::OrvUpdate::HttpDownloadAccess;
    using OrvVersion = Tarnwick::OrvUpdate::OrvVersion;
    using ErrorInfo = Tarnwick::OrvUpdate::ErrorInfo;

    /// A version of the cloud, whose package is to lie at `path`.
    std::shared_ptr<OrvVersion> makeVersion(const std::string& url, const std::string& path) const {
        auto version = std::make_shared<OrvVersion>(mWorker, mStore.path(), "");
        Public::Base::JsonValue document;
        document["softversion"] = "1.11.0.8";
        document["description"] = "";
        document["url"] = url;
        EXPECT_FALSE(version->parseVersionFromHttp(document));
        version->setLocalFileName(path);
        return version;
    }
    void prepare(const std::string& url) {
        mVersion = makeVersion(url, mPath);
        mTransfer = std::make_shared<HttpDownload>(mWorker, mVersion);
    }
    void prepareBody(const std::string& body, int status = 200) {
        mServer.serve("/p.exe", body, status);
        prepare(mServer.url("/p.exe"));
    }
    void prepareScript(const BadScript& script) {
        mBadServer.script("/p.exe", script);
        prepare(mBadServer.url("/p.exe"));
    }
    int start() { return mTransfer->start(mWaiter.callback()).errorCode(); }
    /// @param calls that the waiter has had by the end
    void run(int calls = 1) {
        ASSERT_EQ(start(), 0);
        ASSERT_TRUE(mWaiter.wait(calls));
    }
    /// Starts a transfer that has received half of its body and gets no more until the hold is released.
    void startHalf(const std::string& body) {
        mServer.hold("/p.exe");
        prepareBody(body);
        ASSERT_EQ(start(), 0);
        ASSERT_TRUE(eventually([&] { return access().received() == body.size() / 2; }));
    }
    /// Starts a transfer whose server says nothing, so that the test may play the client.
    void startSilent() {
        prepareScript(BadScript::hangBeforeHeaders());
        ASSERT_EQ(start(), 0);
    }
    /// Ends the running exchange as the client would.
    void finishWith(int status) { access().finish(access().client(), status); }
    /// Returns when every callback that was due on the worker has been called.
    void drain() {
        mServer.serve("/drain", "x");
        const Waiter over;
        auto client = std::make_shared<Public::Network::HTTPClient>(mWorker, "drain");
        auto request = std::make_shared<Public::Network::HTTPClientRequest>(
            "GET", Public::Base::URL(mServer.url("/drain"), false), 0);
        ASSERT_TRUE(client->request(
            request, [done = over.callback()](const auto&, const auto&, const auto&) { done(); }, ""));
        ASSERT_TRUE(over.wait());
    }

    HttpDownloadAccess access() const { return HttpDownloadAccess(*mTransfer); }
    float progress() const {
        float progress = -1.0F;
        EXPECT_EQ(mTransfer->getProgress(progress).errorCode(), 0);
        return progress;
    }
    int error() const { return mTransfer->getError().errorCode(); }
    std::optional<std::string> content() const { return readText(mPath); }
    static std::string text(size_t length) {
        std::string text(length, '\0');
        for (size_t i = 0; i < length; ++i) text[i] = static_cast<char>('a' + i % 23);
        return text;
    }

    PackageStore mStore;
    std::string mPath = mStore.path("cloud/p.exe");
    LogRecorder mLog;
    HttpFileServer mServer;
    BadHttpServer mBadServer;
    std::shared_ptr<Public::Network::IOWorker> mWorker = Public::Network::IOWorker::create(1);
    std::shared_ptr<OrvVersion> mVersion;
    std::shared_ptr<HttpDownload> mTransfer;
    Waiter mWaiter;
};

}  // namespace support
