// Callbacks of an exchange that is not, or no longer, the transfer's.
#include "HttpFailureFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::HttpTransferFailure;
using support::Waiter;

TEST_F(HttpTransferFailure, PieceWithoutARunningTransferIsNotCounted) {
    prepareBody("body");
    access().receive("ab", "4");
    EXPECT_EQ(access().received(), 0U);
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(progress(), 0.0F);
}

TEST_F(HttpTransferFailure, EndOfAnExchangeThatWasStoppedIsPassedOver) {
    startSilent();
    const auto client = access().client();
    mTransfer->stop();
    access().finish(client, 500);
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(content());
    EXPECT_TRUE(access().file());
    EXPECT_TRUE(logged().empty());
}

TEST_F(HttpTransferFailure, EndOfAnEarlierExchangeDoesNotTouchTheNextOne) {
    startSilent();
    const auto earlier = access().client();
    mTransfer->cancel();
    EXPECT_EQ(start(), 0);
    access().receive("ab", "4");
    access().finish(earlier, 500);
    access().finish(nullptr, 500);
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(content(), "ab");
    EXPECT_EQ(error(), 0);
    access().receive("cd", "4");
    finishWith(200);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "abcd");
}

TEST_F(HttpTransferFailure, EndThatCancelOvertakesCallsNobody) {
    startSilent();
    // The log stands between the end of the exchange and the end of the run.
    std::atomic<int> cancelled{-99};
    Public::Base::setLogSink([&](const Public::Base::LogEntry& entry) {
        if (entry.text.starts_with("download http version fail!")) cancelled = mTransfer->cancel().errorCode();
    });
    finishWith(500);
    Public::Base::setLogSink({});
    EXPECT_EQ(cancelled, 0);
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(content());
}

TEST_F(HttpTransferFailure, StartDuringTheEndJoinsItAndIsCalled) {
    startSilent();
    const Waiter late;
    std::atomic<int> started{-99};
    Public::Base::setLogSink([&](const Public::Base::LogEntry& entry) {
        if (entry.text.starts_with("download http version fail!")) {
            started = mTransfer->start(late.callback(), this).errorCode();
        }
    });
    finishWith(500);
    Public::Base::setLogSink({});
    EXPECT_EQ(started, 0);
    EXPECT_EQ(late.calls(), 1);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_FALSE(content());
    EXPECT_LE(mBadServer.requestCount("/p.exe"), 1U);
}
