// What the drive of a peer's transfer tells the peer, and what it offers to its owner.
#include "RemoteDownload.h"

#include "ForeignVersion.h"
#include "PeerDriveFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::peerAnswer;

namespace {

constexpr char kStart[] = "topic_upgrade_startdownload";
constexpr char kPoll[] = "topic_upgrade_getdownloadpos";

class RemoteDownloadStart : public support::PeerDriveFixture {
protected:
    std::shared_ptr<RemoteDownload> make() { return std::make_shared<RemoteDownload>(mClient, mVersion, "peer"); }
    std::shared_ptr<RemoteDownload> mTransfer = make();
};

}  // namespace

TEST_F(RemoteDownloadStart, FreshOneHasNoErrorAndIsNotFinished) {
    EXPECT_EQ(mTransfer->getError().errorCode(), 0);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "");
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteDownloadStart, TellsThePeerTheVersion) {
    const ErrorInfo result = mTransfer->start({});
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    ASSERT_EQ(mLink->requests().size(), 1U);
    expectRequest(mLink->requests()[0], kStart);
}

TEST_F(RemoteDownloadStart, TakesAVersionOfAHostsOwnClass) {
    const auto foreign = std::make_shared<support::ForeignVersion>("3.2.1");
    const auto transfer = std::make_shared<RemoteDownload>(mClient, foreign, "peer");
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    ASSERT_EQ(mLink->requests().size(), 1U);
    EXPECT_NE(mLink->requests()[0].body.find("3.2.1"), std::string::npos);
}

TEST_F(RemoteDownloadStart, WithoutALinkFails) {
    mClient->link.reset();
    const ErrorInfo result = mTransfer->start({});
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(mTransfer->getError().errorCode(), -1);
    EXPECT_TRUE(mLog.has(2, "remote download fail! errcode:-1"));
    EXPECT_EQ(mLog.entries().size(), 1U);
}

TEST_F(RemoteDownloadStart, WithoutAClientFails) {
    const auto transfer = std::make_shared<RemoteDownload>(nullptr, mVersion, "peer");
    EXPECT_EQ(transfer->start({}).errorCode(), -1);
    EXPECT_EQ(transfer->getError().errorCode(), -1);
    float progress = 1;
    EXPECT_EQ(transfer->getProgress(progress).errorCode(), -1);
    EXPECT_EQ(progress, 0.0F);
}

TEST_F(RemoteDownloadStart, WithoutAVersionFails) {
    const auto transfer = std::make_shared<RemoteDownload>(mClient, nullptr, "peer");
    EXPECT_EQ(transfer->start({}).errorCode(), -1);
    float progress = 1;
    EXPECT_EQ(transfer->getProgress(progress).errorCode(), -1);
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteDownloadStart, ThatCannotBeSentGivesZeroAndTellsAnError) {
    mLink->refuse(true);
    EXPECT_EQ(mTransfer->start({}).errorCode(), 0);
    EXPECT_EQ(mTransfer->getError().errorCode(), -1);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "");
    EXPECT_TRUE(mLog.has(2, "msgid == 0"));
    EXPECT_EQ(mLog.entries().size(), 1U);
}

TEST_F(RemoteDownloadStart, TakesTheErrorOfTheAnswer) {
    mTransfer->start({});
    mLink->answer(peerAnswer(-425, nullptr, "far away"));
    EXPECT_EQ(mTransfer->getError().errorCode(), -425);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "far away");
    EXPECT_TRUE(mLog.has(2, "remote download fail! errcode:-425"));
    EXPECT_FALSE(mTransfer->finish());
}

TEST_F(RemoteDownloadStart, DoesNotReadTheAnswersBody) {
    mTransfer->start({});
    mLink->answer(R"({"pos":0.5,"finish":true})");
    EXPECT_FALSE(mTransfer->finish());
    float progress = 1;
    mTransfer->getProgress(progress);
    EXPECT_EQ(progress, 0.0F);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(RemoteDownloadStart, AnswerOfZeroLeavesAnErrorThatHasComeMeanwhile) {
    mTransfer->start({});
    const auto answer = mLink->requests().back().answer;
    float progress = 0;
    mTransfer->getProgress(progress);
    mLink->answer(peerAnswer(-416));
    answer(peerAnswer(0));
    EXPECT_EQ(mTransfer->getError().errorCode(), -416);
}

TEST_F(RemoteDownloadStart, AnswerThatOutrunsThePushIsTaken) {
    mLink->answerAtOnce([](const auto&) { return peerAnswer(-426); });
    EXPECT_EQ(mTransfer->start({}).errorCode(), 0);
    EXPECT_EQ(mTransfer->getError().errorCode(), -426);
}

TEST_F(RemoteDownloadStart, LaterErrorTakesThePlaceOfAnEarlier) {
    mTransfer->start({});
    const auto started = mLink->requests().back().answer;
    float progress = 0;
    mTransfer->getProgress(progress);
    mLink->answer(peerAnswer(-416));
    started(peerAnswer(-202));
    EXPECT_EQ(mTransfer->getError().errorCode(), -202);
}

TEST_F(RemoteDownloadStart, ASecondOneClearsTheErrorAndTellsThePeerAgain) {
    mTransfer->start({});
    mLink->answer(peerAnswer(-425));
    EXPECT_EQ(mTransfer->start({}).errorCode(), 0);
    EXPECT_EQ(mTransfer->getError().errorCode(), 0);
    EXPECT_EQ(mLink->count(kStart), 2U);
}

TEST_F(RemoteDownloadStart, ASecondOneLeavesTheLastPositionAndFinish) {
    float progress = 0;
    mTransfer->getProgress(progress);
    mLink->answer(R"({"pos":0.75,"finish":true})");
    mTransfer->start({});
    EXPECT_TRUE(mTransfer->finish());
    mTransfer->getProgress(progress);
    EXPECT_EQ(progress, 0.75F);
}

TEST_F(RemoteDownloadStart, NeverCallsBackOnSuccess) {
    int calls = 0;
    mTransfer->start([&calls] { ++calls; });
    mLink->answer(peerAnswer(0));
    float progress = 0;
    mTransfer->getProgress(progress);
    mLink->answer(R"({"pos":1.0,"finish":true})");
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(calls, 0);
}

TEST_F(RemoteDownloadStart, NeverCallsBackOnFailure) {
    int calls = 0;
    mTransfer->start([&calls] { ++calls; });
    mLink->answer(peerAnswer(-425));
    float progress = 0;
    mTransfer->getProgress(progress);
    mLink->answer("sorry");
    EXPECT_EQ(mTransfer->getError().errorCode(), -301);
    EXPECT_EQ(calls, 0);
}

TEST_F(RemoteDownloadStart, DoesNotKeepTheCallback) {
    const auto held = std::make_shared<int>(1);
    mTransfer->start([held] { EXPECT_EQ(*held, 1); });
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(RemoteDownloadStart, OffersNoStartWithAKey) {
    int key = 0;
    EXPECT_EQ(mTransfer->start({}, &key).errorCode(), -2);
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteDownloadStart, OffersNoStopNoCancelAndNoFileName) {
    mTransfer->start({});
    std::string name = "as it was";
    for (const ErrorInfo& result : {mTransfer->stop(), mTransfer->cancel(), mTransfer->getFileName(name)}) {
        EXPECT_EQ(result.errorCode(), -2);
        EXPECT_EQ(result.errorMessage(), "");
    }
    EXPECT_EQ(name, "as it was");
    EXPECT_EQ(mTransfer->getError().errorCode(), 0);
}

TEST_F(RemoteDownloadStart, CancelLeavesTheWatchGoing) {
    mTransfer->start({});
    mTransfer->cancel();
    mTransfer->stop();
    EXPECT_EQ(mLink->requests().size(), 1U);
    float progress = 0;
    mTransfer->getProgress(progress);
    mLink->answer(R"({"pos":0.5})");
    mTransfer->getProgress(progress);
    EXPECT_EQ(progress, 0.5F);
}

TEST_F(RemoteDownloadStart, ThrowsWhenNoSharedPointerOwnsIt) {
    RemoteDownload transfer(mClient, mVersion, "peer");
    float progress = 0;
    EXPECT_THROW(transfer.start({}), std::bad_weak_ptr);
    EXPECT_THROW(transfer.getProgress(progress), std::bad_weak_ptr);
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteDownloadStart, AnswersAfterTheLastOwnerLetGoDoNothing) {
    mTransfer->start({});
    float progress = 0;
    mTransfer->getProgress(progress);
    mTransfer.reset();
    for (const auto& request : mLink->requests()) request.answer(peerAnswer(-425));
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(RemoteDownloadStart, RequestsUnderWayDoNotKeepIt) {
    mTransfer->start({});
    float progress = 0;
    mTransfer->getProgress(progress);
    const std::weak_ptr<RemoteDownload> watch = mTransfer;
    mTransfer.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(mLink->count(kPoll), 1U);
}
