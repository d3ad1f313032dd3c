// The pull that is cancelled, started anew, or let go.
#include "MQDownloadFixture.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::ObjCounter;
using support::PullFixture;

namespace {

class QueuePullCancel : public PullFixture {
protected:
    std::string removal() const { return "4 MQDownload cancel remove file " + mPath + "\n"; }
};

class QueuePullLife : public PullFixture {
protected:
    /// Records of runs that live.
    static long records() { return ObjCounter::count("Include/TWProtocol/TWProtoDeviceCmd.pb", 366); }
};

}  // namespace

// Cancel

TEST_F(QueuePullCancel, DeletesTheFileWithoutACallback) {
    start();
    answer(6, 0, "abc");
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_FALSE(content());
    EXPECT_FALSE(support::isOpenHere(mPath));
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(logged(), Texts{removal()});
}

TEST_F(QueuePullCancel, DropsTheAnswerThatIsOnItsWay) {
    start();
    answer(6, 0, "abc");
    mDownload->cancel();
    answer(6, 3, "def");
    EXPECT_FALSE(content());
    EXPECT_EQ(mPeer->count(), 2U);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(progress(), 0.0F);
}

TEST_F(QueuePullCancel, DropsTheErrorThatIsOnItsWay) {
    start();
    mDownload->cancel();
    mPeer->last().fail({-416, ""});
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullCancel, BeforeTheFirstBytesDeletesNothing) {
    support::writeText(mPath, "an older package");
    start();
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_EQ(content(), "an older package");
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullCancel, OfANewOneDoesNothing) {
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_EQ(mDownload->cancel().errorMessage(), "");
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullCancel, TwiceDeletesOnce) {
    start();
    answer(6, 0, "abc");
    mDownload->cancel();
    support::writeText(mPath, "another's");
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_EQ(content(), "another's");
    EXPECT_EQ(logged(), Texts{removal()});
}

TEST_F(QueuePullCancel, EndsTheQuestionsToAPeerWithoutBytes) {
    start();
    answer(0, 0, "");
    mDownload->cancel();
    answer(0, 0, "");
    EXPECT_EQ(mPeer->count(), 2U);
}

TEST_F(QueuePullCancel, AfterTheEndDeletesThePackageAndStaysFinished) {
    start();
    serve("abc", 3);
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_FALSE(content());
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(logged(), Texts{removal()});
}

TEST_F(QueuePullCancel, KeepsTheProgress) {
    start();
    answer(6, 0, "abc");
    answer(6, 3, "d");
    mDownload->cancel();
    EXPECT_EQ(progress(), 0.5F);
}

TEST_F(QueuePullCancel, NextStartFetchesAllOfIt) {
    start();
    answer(6, 0, "abc");
    mDownload->cancel();
    start();
    EXPECT_EQ(mPeer->last().record.position, 0U);
    EXPECT_EQ(mPeer->last().record.fileSize, 0U);
    serve("abcdef", 3);
    EXPECT_EQ(content(), "abcdef");
    EXPECT_EQ(calls(), 1);
}

TEST_F(QueuePullCancel, AnswerOfTheCancelledRunDoesNotReachTheNext) {
    start();
    const auto old = mPeer->last();
    mDownload->cancel();
    start();
    old.answer(chunk(6, 0, "old"));
    EXPECT_FALSE(content());
    EXPECT_EQ(mPeer->count(), 2U);
    serve("new", 3);
    EXPECT_EQ(content(), "new");
}

TEST_F(QueuePullCancel, ErrorOfTheCancelledRunDoesNotReachTheNext) {
    start();
    const auto old = mPeer->last();
    mDownload->cancel();
    start();
    old.fail({-202, ""});
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(calls(), 0);
}

TEST_F(QueuePullCancel, InsideTheCallbackDeletesThePackage) {
    mDownload->start([&] { mDownload->cancel(); });
    serve("abc", 3);
    EXPECT_FALSE(content());
}

TEST_F(QueuePullCancel, ReleasesTheCallback) {
    const auto held = std::make_shared<int>(0);
    mDownload->start([held] { ++*held; });
    EXPECT_GT(held.use_count(), 1);
    mDownload->cancel();
    EXPECT_EQ(held.use_count(), 1);
}

// Started while a run is under way

TEST_F(QueuePullCancel, StartDuringARunBeginsAnewAndCallsBackForBoth) {
    int first = 0;
    mDownload->start([&] { ++first; });
    answer(6, 0, "abc");
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(mPeer->last().record.position, 0U);
    serve("abcdef", 3);
    EXPECT_EQ(content(), "abcdef");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(calls(), 1);
}

TEST_F(QueuePullCancel, StartDuringARunDropsTheEarlierRunsAnswers) {
    start();
    const auto old = mPeer->last();
    start();
    old.answer(chunk(3, 0, "old"));
    EXPECT_EQ(mPeer->count(), 2U);
    EXPECT_FALSE(content());
    serve("new", 3);
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(calls(), 2);
}

TEST_F(QueuePullCancel, StartDuringARunFailsForBoth) {
    int first = 0;
    mDownload->start([&] { ++first; });
    start();
    mPeer->last().fail({-416, ""});
    EXPECT_EQ(first, 1);
    EXPECT_EQ(calls(), 1);
    EXPECT_EQ(error(), -416);
}

TEST_F(QueuePullCancel, StartInsideTheCallbackBeginsAnew) {
    mDownload->start([&] {
        if (*mCalls == 0) start();
        ++*mCalls;
    });
    mPeer->last().fail({-202, ""});
    EXPECT_EQ(error(), 0);
    serve("abc", 3);
    EXPECT_EQ(content(), "abc");
    EXPECT_EQ(calls(), 2);
}

// What is left when the owner lets go

TEST_F(QueuePullLife, FileIsClosedAndStaysWhenTheObjectGoes) {
    start();
    answer(6, 0, "abc");
    mDownload.reset();
    EXPECT_EQ(content(), "abc");
    EXPECT_FALSE(support::isOpenHere(mPath));
}

TEST_F(QueuePullLife, AnswerAfterTheObjectHasGoneDoesNothing) {
    start();
    answer(6, 0, "abc");
    mDownload.reset();
    answer(6, 3, "def");
    EXPECT_EQ(content(), "abc");
    EXPECT_EQ(mPeer->count(), 2U);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullLife, ErrorAfterTheObjectHasGoneCallsNobody) {
    start();
    mDownload.reset();
    mPeer->last().fail({-202, ""});
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullLife, NoRunKeepsTheTransferAlive) {
    const std::weak_ptr<MQDownload> transfer = mDownload;
    start();
    answer(6, 0, "abc");
    mDownload.reset();
    EXPECT_TRUE(transfer.expired());
}

TEST_F(QueuePullLife, VersionAndTransferDoNotKeepEachOther) {
    const std::shared_ptr<IGetConnection> provider = mProvider;
    const std::weak_ptr<IDownload> transfer = mVersion->getDownload(provider);
    ASSERT_TRUE(std::dynamic_pointer_cast<MQDownload>(transfer.lock()));
    transfer.lock()->start(counting());
    const std::weak_ptr<OrvVersion> version = mVersion;
    mVersion.reset();
    EXPECT_TRUE(version.expired());
    EXPECT_TRUE(transfer.expired());
}

TEST_F(QueuePullLife, RequestKeepsNoProviderAlive) {
    start();
    const std::weak_ptr<support::ScriptedProvider> provider = mProvider;
    mProvider.reset();
    mDownload.reset();
    EXPECT_TRUE(provider.expired());
}

TEST_F(QueuePullLife, FinishedRunLeavesNothingBehind) {
    const auto held = std::make_shared<int>(0);
    mDownload->start([held] { ++*held; });
    serve("abcdef", 2);
    mPeer->forget();
    EXPECT_EQ(records(), 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QueuePullLife, FailedRunLeavesNothingBehind) {
    const auto held = std::make_shared<int>(0);
    mDownload->start([held] { ++*held; });
    mPeer->last().fail({-416, ""});
    mPeer->forget();
    EXPECT_EQ(records(), 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QueuePullLife, RunThatCannotSendLeavesNothingBehind) {
    const auto held = std::make_shared<int>(0);
    mPeer->refuse();
    mDownload->start([held] { ++*held; });
    EXPECT_EQ(records(), 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QueuePullLife, CancelledRunLeavesNothingBehindOnceItsAnswerHasCome) {
    start();
    mDownload->cancel();
    answer(6, 0, "abc");
    mPeer->forget();
    EXPECT_EQ(records(), 0);
}

TEST_F(QueuePullLife, AbandonedRunLeavesNothingBehindOnceTheQueueLetsGo) {
    const auto held = std::make_shared<int>(0);
    mDownload->start([held] { ++*held; });
    answer(6, 0, "abc");
    mDownload.reset();
    mPeer->forget();
    EXPECT_EQ(records(), 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QueuePullLife, CallbackMayLetGoOfTheLastReference) {
    const std::weak_ptr<MQDownload> transfer = mDownload;
    mDownload->start([&] { mDownload.reset(); });
    serve("abc", 3);
    EXPECT_TRUE(transfer.expired());
    EXPECT_EQ(content(), "abc");
    EXPECT_FALSE(support::isOpenHere(mPath));
}
