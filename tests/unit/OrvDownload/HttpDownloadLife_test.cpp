// A transfer's waiters, its stop, its cancel and its end.
#include <array>
#include "HttpTransfer.h"

using namespace Tarnwick::OrvUpdate;
using support::eventually;
using support::HttpTransfer;
using support::Waiter;

namespace {

/// Notes the names of those that were called, in order.
class CallOrder {
public:
    Function<void()> note(const std::string& name) {
        return [this, name] {
            std::lock_guard lock(mMutex);
            mNames += name;
        };
    }
    std::string names() const {
        std::lock_guard lock(mMutex);
        return mNames;
    }

private:
    mutable std::mutex mMutex;
    std::string mNames;
};

}  // namespace

// Waiters and their keys.

TEST_F(HttpTransfer, SecondStartJoinsTheRunningTransfer) {
    const Waiter other;
    startHalf(text(4000));
    EXPECT_EQ(mTransfer->start(other.callback(), &mFirst).errorCode(), 0);
    EXPECT_EQ(other.calls(), 0);
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_TRUE(other.wait());
    drain();
    EXPECT_EQ(mServer.requestCount("/p.exe"), 1U);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(other.calls(), 1);
}

TEST_F(HttpTransfer, CallsBackInAscendingOrderOfKeys) {
    CallOrder order;
    mServer.hold("/p.exe");
    prepareBody(text(100));
    std::array<char, 4> keys{};
    for (const size_t key : {2, 0, 3, 1}) {
        EXPECT_EQ(mTransfer->start(order.note(std::to_string(key)), &keys[key]).errorCode(), 0);
    }
    mTransfer->start(order.note("null "));
    mServer.release("/p.exe");
    EXPECT_TRUE(eventually([&] { return order.names().size() == 9; }));
    EXPECT_EQ(order.names(), "null 0123");
}

TEST_F(HttpTransfer, SameKeyReplacesTheCallback) {
    CallOrder order;
    mServer.hold("/p.exe");
    prepareBody(text(100));
    mTransfer->start(order.note("first"), &mFirst);
    mTransfer->start(order.note("second"), &mFirst);
    mServer.release("/p.exe");
    EXPECT_TRUE(eventually([&] { return !order.names().empty(); }));
    drain();
    EXPECT_EQ(order.names(), "second");
}

TEST_F(HttpTransfer, StartWithoutAKeyStandsUnderTheNullKey) {
    CallOrder order;
    mServer.hold("/p.exe");
    prepareBody(text(100));
    mTransfer->start(order.note("keyed"), nullptr);
    mTransfer->start(order.note("plain"));
    mServer.release("/p.exe");
    EXPECT_TRUE(eventually([&] { return !order.names().empty(); }));
    drain();
    EXPECT_EQ(order.names(), "plain");
}

TEST_F(HttpTransfer, PassesOverAnEmptyCallback) {
    mServer.hold("/p.exe");
    prepareBody(text(100));
    EXPECT_EQ(mTransfer->start({}, nullptr).errorCode(), 0);
    EXPECT_EQ(mTransfer->start(mWaiter.callback(), &mFirst).errorCode(), 0);
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_TRUE(mTransfer->finish());
}

TEST_F(HttpTransfer, CallbacksOfAnEarlierRunAreCalledAgain) {
    const Waiter later;
    prepareBody("no package");
    run();
    EXPECT_EQ(mTransfer->start(later.callback(), &mFirst).errorCode(), 0);
    EXPECT_TRUE(later.wait());
    EXPECT_TRUE(mWaiter.wait(2));
    EXPECT_EQ(mServer.requestCount("/p.exe"), 2U);
}

// Stop.

TEST_F(HttpTransfer, StopBeforeAnyStartDoesNothing) {
    prepareBody("body");
    EXPECT_EQ(mTransfer->stop().errorCode(), 0);
    run();
    EXPECT_TRUE(mTransfer->finish());
}

TEST_F(HttpTransfer, StopEndsTheExchangeAndKeepsThePart) {
    const std::string body = text(4000);
    startHalf(body);
    ASSERT_TRUE(eventually([&] { return content()->size() == 2000; }));
    EXPECT_EQ(mTransfer->stop().errorCode(), 0);
    mServer.release("/p.exe");
    EXPECT_TRUE(mServer.waitForNoConnection());
    EXPECT_EQ(content(), body.substr(0, 2000));
    ASSERT_TRUE(access().file());
    EXPECT_TRUE(access().file()->isOpen());
    EXPECT_FALSE(access().client());
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(HttpTransfer, StopFreezesSoThatALaterStartDoesNothing) {
    startHalf(text(4000));
    mTransfer->stop();
    mServer.release("/p.exe");
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(mTransfer->start(mWaiter.callback(), &mFirst).errorCode(), 0);
    drain();
    EXPECT_EQ(mServer.requestCount("/p.exe"), 1U);
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(HttpTransfer, CancelAndStartGoOnAfterStop) {
    const std::string body = text(4000);
    startHalf(body);
    mTransfer->stop();
    mServer.release("/p.exe");
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_FALSE(content());
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), body);
}

TEST_F(HttpTransfer, StopAfterTheEndChangesNothing) {
    prepareBody("body");
    run();
    EXPECT_EQ(mTransfer->stop().errorCode(), 0);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "body");
}

// Cancel.

TEST_F(HttpTransfer, CancelDeletesTheFileAndCallsNobody) {
    startHalf(text(4000));
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    mServer.release("/p.exe");
    EXPECT_FALSE(content());
    EXPECT_FALSE(access().file());
    EXPECT_FALSE(access().client());
    EXPECT_EQ(access().fileName(), "");
    const auto entries = mLog.entries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].level, 4);
    EXPECT_EQ(entries[0].text, "HttpDownload cancel remove file " + mPath + "\n");
    EXPECT_EQ(entries[0].file, "OrvUpdate/Src/OrvDownload");
    EXPECT_NE(entries[0].function.find("HttpDownload::cancel"), std::string::npos);
    drain();
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(HttpTransfer, CancelLeavesTheFiguresAsTheyWere) {
    startHalf(text(4000));
    ASSERT_TRUE(eventually([&] { return progress() == 0.5F; }));
    mTransfer->cancel();
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(access().received(), 2000U);
    EXPECT_EQ(access().total(), 4000U);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mTransfer->finish());
}

TEST_F(HttpTransfer, CancelBeforeAnyStartRemovesNothing) {
    mStore.putText("cloud/p.exe", "somebody's");
    prepareBody("body");
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_EQ(content(), "somebody's");
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(HttpTransfer, CancelTwiceRemovesOnce) {
    startHalf(text(4000));
    mTransfer->cancel();
    mStore.putText("cloud/p.exe", "somebody's");
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_EQ(content(), "somebody's");
    EXPECT_EQ(mLog.entries().size(), 1U);
}

TEST_F(HttpTransfer, CancelAfterTheEndDeletesTheArrivedPackageButStaysFinished) {
    prepareBody("body");
    run();
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_FALSE(content());
    EXPECT_TRUE(mLog.has(4, "HttpDownload cancel remove file " + mPath + "\n"));
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(HttpTransfer, StartAfterCancelFetchesTheWholeAgain) {
    const std::string body = text(4000);
    startHalf(body);
    mTransfer->cancel();
    mServer.release("/p.exe");
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), body);
    EXPECT_EQ(mServer.requestCount("/p.exe"), 2U);
    EXPECT_EQ(mWaiter.calls(), 1);
}

// Destruction.

TEST_F(HttpTransfer, DestructionEndsTheExchangeAndKeepsThePart) {
    const std::string body = text(4000);
    startHalf(body);
    ASSERT_TRUE(eventually([&] { return content()->size() == 2000; }));
    mTransfer.reset();
    mServer.release("/p.exe");
    EXPECT_TRUE(mServer.waitForNoConnection());
    EXPECT_EQ(content(), body.substr(0, 2000));
    drain();
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(HttpTransfer, DestructionClosesTheFile) {
    startHalf(text(4000));
    std::weak_ptr<Public::Base::File> file = access().file();
    mTransfer.reset();
    EXPECT_TRUE(eventually([&] { return file.expired(); }));
}

TEST_F(HttpTransfer, KeepsNeitherItsVersionNorItselfAlive) {
    prepareBody("body");
    run();
    const std::weak_ptr<OrvVersion> version = mVersion;
    const std::weak_ptr<HttpDownload> transfer = mTransfer;
    mVersion.reset();
    EXPECT_TRUE(version.expired());
    mTransfer.reset();
    EXPECT_TRUE(eventually([&] { return transfer.expired(); }));
}
