// The life of a push: started once, let go at any time, nothing left behind.
#include "PostDownload.h"
#include "PostDownloadFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr size_t kBytes = 0x280000;

class PostDownloadLife : public PostDownloadFixture {
protected:
    /// Answers every chunk, then the query.
    void runToTheEnd() {
        for (size_t index = 0; mRequest->queries.count() == 0; ++index) mLink->answer(index);
        mRequest->answer(true);
    }
    size_t openSources() const { return support::timesOpenHere(mPackage); }
};

}  // namespace

TEST_F(PostDownloadLife, IsCreatedWithoutErrorAndNotFinished) {
    mPush = makePush();
    std::string fileName;
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mPush->finish());
    EXPECT_EQ(mPush->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, mPackage);
}

TEST_F(PostDownloadLife, OffersNeitherStopNorCancelNorAStartWithAKey) {
    mPush = makePush();
    IDownload& contract = *mPush;
    EXPECT_EQ(contract.stop().errorCode(), -2);
    EXPECT_EQ(contract.cancel().errorCode(), -2);
    EXPECT_EQ(contract.start(mWaiter.callback(), this).errorCode(), -2);
    Public::Base::settleDetached();
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(PostDownloadLife, StopAndCancelDoNotEndARunningPush) {
    begin(kBytes);
    mLink->chunk(0);
    EXPECT_EQ(mPush->stop().errorCode(), -2);
    EXPECT_EQ(mPush->cancel().errorCode(), -2);
    runToTheEnd();
    EXPECT_TRUE(mPush->finish());
}

TEST_F(PostDownloadLife, ThrowsWhenNoSharedPointerOwnsIt) {
    PostDownload push(mRequest, mPackage, mProvider, VersionSource_Online, "peer");
    EXPECT_THROW(push.start({}), std::bad_weak_ptr);
}

TEST_F(PostDownloadLife, StartedASecondTimeChangesNothing) {
    begin(kBytes);
    mLink->chunk(0);
    const support::Waiter second;
    EXPECT_EQ(mPush->start(second.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), 1U);
    runToTheEnd();
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(second.calls(), 0);
}

TEST_F(PostDownloadLife, StartedASecondTimeAfterAFailureOnlyClearsTheError) {
    beginAndSettle();
    ASSERT_EQ(error(), -416);
    mStore.put("p.exe");
    EXPECT_EQ(mPush->start(mWaiter.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mPush->finish());
    EXPECT_EQ(mLink->sent.count(), 0U);
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(PostDownloadLife, StartedASecondTimeAfterItsEndSendsNothing) {
    begin(kBytes);
    runToTheEnd();
    const size_t chunks = mLink->sent.count();
    EXPECT_EQ(mPush->start(mWaiter.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), chunks);
    EXPECT_TRUE(mPush->finish());
}

TEST_F(PostDownloadLife, PushesOnceAlsoWithoutACallback) {
    mStore.put("p.exe");
    mPush = makePush();
    EXPECT_EQ(mPush->start({}).errorCode(), 0);
    mLink->chunk(0);
    EXPECT_EQ(mPush->start(mWaiter.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), 1U);
    runToTheEnd();
    EXPECT_TRUE(mPush->finish());
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(PostDownloadLife, FailsWithoutACallback) {
    mPush = makePush();
    EXPECT_EQ(mPush->start({}).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(error(), -416);
}

TEST_F(PostDownloadLife, SourceIsOpenOnlyWhileChunksGo) {
    begin(kBytes);
    mLink->chunk(0);
    EXPECT_EQ(openSources(), 1U);
    for (size_t index = 0; index < 3; ++index) mLink->answer(index);
    EXPECT_EQ(openSources(), 0U);
    mRequest->answer(true);
    EXPECT_EQ(openSources(), 0U);
}

TEST_F(PostDownloadLife, SourceClosesWhenThePeerHasEnough) {
    begin(kBytes);
    mLink->answer(0, -415);
    EXPECT_EQ(openSources(), 0U);
}

TEST_F(PostDownloadLife, SourceClosesAtOnceWhenTheOwnerLetsGo) {
    begin(kBytes);
    const auto chunk = mLink->chunk(0);
    Public::Base::settleDetached();
    mPush.reset();
    EXPECT_EQ(openSources(), 0U);
    chunk.callback(support::answerOf(0));
    EXPECT_EQ(mLink->sent.count(), 1U);
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(PostDownloadLife, FailedAnswerAfterTheOwnerLetGoDoesNothing) {
    begin(kBytes);
    const auto chunk = mLink->chunk(0);
    Public::Base::settleDetached();
    mPush.reset();
    chunk.callback(support::answerOf(-202));
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(PostDownloadLife, QueryThatEndsAfterTheOwnerLetGoDoesNothing) {
    begin(kBytes);
    mLink->answer(0, -415);
    Public::Base::settleDetached();
    mPush.reset();
    mRequest->answer(true);
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(PostDownloadLife, NothingKeepsItAliveOnceItHasEnded) {
    begin(kBytes);
    runToTheEnd();
    Public::Base::settleDetached();
    const std::weak_ptr<PostDownload> push = mPush;
    mPush.reset();
    EXPECT_TRUE(push.expired());
}

TEST_F(PostDownloadLife, NothingKeepsItAliveWhileAChunkIsUnderWay) {
    begin(kBytes);
    mLink->chunk(0);
    Public::Base::settleDetached();
    const std::weak_ptr<PostDownload> push = mPush;
    mPush.reset();
    EXPECT_TRUE(push.expired());
}

TEST_F(PostDownloadLife, MayBeReleasedByItsOwnCallback) {
    mStore.put("p.exe");
    mPush = makePush();
    mPush->start([this] {
        mPush.reset();
        mWaiter.callback()();
    });
    mLink->answer(0);
    mRequest->answer(true);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(mPush, nullptr);
}

TEST_F(PostDownloadLife, MayBeReleasedByTheCallbackOfAFailure) {
    mPush = makePush();
    const std::weak_ptr<PostDownload> push = mPush;
    IDownload& contract = *mPush;
    contract.start([this] { mPush.reset(); });
    Public::Base::settleDetached();
    EXPECT_TRUE(push.expired());
}

TEST_F(PostDownloadLife, FileThatGrowsCountsAsLongAsItWas) {
    begin(kBytes);
    mLink->chunk(0);
    support::appendBytes(mPackage, std::string(2 * kChunk, 'x'));
    for (size_t index = 0; index < 3; ++index) mLink->answer(index);
    EXPECT_EQ(mLink->sent.count(), 3U);
    EXPECT_EQ(mLink->chunk(2).info.data.size(), kBytes - 2 * kChunk);
    EXPECT_EQ(mRequest->queries.count(), 1U);
}

TEST_F(PostDownloadLife, FileThatGetsShorterEndsThePushAsAFailedOne) {
    begin(kBytes);
    mLink->chunk(0);
    support::cutBytes(mPackage, kChunk);
    mLink->answer(0);
    expectFailed(-416, "post version fail! errcode:-416");
    EXPECT_EQ(mLink->sent.count(), 1U);
}

TEST_F(PostDownloadLife, FileThatIsCutToAChunkEndsThePushAsAFailedOne) {
    begin(kBytes);
    mLink->chunk(0);
    support::cutBytes(mPackage, kBytes - kChunk);
    mLink->answer(0);
    expectFailed(-416, "post version fail! errcode:-416");
}

TEST_F(PostDownloadLife, SourceIsNeitherChangedNorRemoved) {
    begin(kBytes);
    const std::string before = content();
    runToTheEnd();
    mPush.reset();
    EXPECT_EQ(content(), before);
}

TEST_F(PostDownloadLife, LastReportOfTheQueryMayComeTwice) {
    begin(kBytes);
    mLink->answer(0, -415);
    mRequest->answer(true);
    mRequest->answer(true);
    EXPECT_EQ(mWaiter.calls(), 2);
    EXPECT_TRUE(mPush->finish());
}
