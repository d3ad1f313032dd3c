// The pull that fails: codes, log, callbacks, and what stays on disk.
#include "MQDownloadFixture.h"
#include "TWProtocol/TWProtoUpgrade.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::ErrorInfo;
using support::PullFixture;

namespace {

class QueuePullFailure : public PullFixture {
protected:
    void expectFailure(int code, const Texts& log) {
        EXPECT_EQ(error(), code);
        EXPECT_FALSE(mDownload->finish());
        EXPECT_EQ(calls(), 1);
        EXPECT_EQ(logged(), log);
    }
    /// A run whose first chunk lies on the disk.
    void begin() {
        start();
        answer(6, 0, "abc");
        ASSERT_EQ(content(), "abc");
    }
};

}  // namespace

// Before anything is sent

TEST_F(QueuePullFailure, StartWithoutTheVersionReturnsMinus1) {
    mVersion.reset();
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullFailure, StartWithoutAProviderReturnsMinus1) {
    mProvider = nullptr;
    mDownload = makeDownload();
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePullFailure, RefusedStartLeavesTheErrorOfTheRunBefore) {
    start();
    mPeer->last().fail({-416, ""});
    mVersion.reset();
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(error(), -416);
}

// When nothing can be sent, no callback fires

TEST_F(QueuePullFailure, RefusedPushIsMinus1AndNoCallbackEverFires) {
    mPeer->refuse();
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(calls(), 0);
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(logged(), Texts{"2 msgid == 0"});
}

TEST_F(QueuePullFailure, RefusedPushDoesNotTurnToTheMaster) {
    const auto master = std::make_shared<support::ScriptedConnection>();
    mProvider->master = master;
    mPeer->refuse();
    start();
    EXPECT_EQ(master->count(), 0U);
}

TEST_F(QueuePullFailure, RefusedForwardingIsMinus200AndNoCallbackEverFires) {
    mProvider->direct = nullptr;
    mProvider->master = mPeer;
    mPeer->refuse();
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(error(), -200);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(logged(), Texts{"2 connection empty!"});
}

TEST_F(QueuePullFailure, NoConnectionAtAllIsMinus200AndNoCallbackEverFires) {
    mProvider->direct = nullptr;
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(error(), -200);
    EXPECT_EQ(calls(), 0);
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(logged(), Texts{"2 connection empty!"});
}

TEST_F(QueuePullFailure, RefusedPushMidwayLeavesTheShortFileOpenWithoutACallback) {
    start();
    mPeer->refuse();
    answer(6, 0, "abc");
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(content(), "abc");
    EXPECT_TRUE(support::isOpenHere(mPath));
    EXPECT_EQ(logged(), Texts{"2 msgid == 0"});
}

TEST_F(QueuePullFailure, LostConnectionMidwayLeavesTheShortFileWithoutACallback) {
    start();
    mProvider->direct = nullptr;
    answer(6, 0, "abc");
    EXPECT_EQ(error(), -200);
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(content(), "abc");
}

TEST_F(QueuePullFailure, RefusedPushWhileThePeerHasNoBytesFiresNoCallback) {
    start();
    mPeer->refuse();
    answer(0, 0, "");
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(calls(), 0);
}

// Answers that end the run

TEST_F(QueuePullFailure, PeersErrorEndsTheRunWithItsCode) {
    start();
    mPeer->last().fail({-416, ""});
    expectFailure(-416, {"2 errcode:-416", "2 save version fail! errcode:-416"});
    EXPECT_FALSE(content());
    EXPECT_EQ(mPeer->count(), 1U);
}

TEST_F(QueuePullFailure, PeersErrorKeepsItsText) {
    start();
    mPeer->last().fail({-77, "the peer's words"});
    EXPECT_EQ(mDownload->getError().errorMessage(), "the peer's words");
}

TEST_F(QueuePullFailure, TimeOutEndsTheRunWithoutRetry) {
    begin();
    mPeer->last().fail({-202, ""});
    expectFailure(-202, {"2 errcode:-202", "2 save version fail! errcode:-202"});
    EXPECT_EQ(mPeer->count(), 2U);
}

TEST_F(QueuePullFailure, ErrorLeavesTheShortFileOpenUntilCancel) {
    begin();
    mPeer->last().fail({-416, ""});
    EXPECT_EQ(content(), "abc");
    EXPECT_TRUE(support::isOpenHere(mPath));
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_FALSE(content());
    EXPECT_FALSE(support::isOpenHere(mPath));
    EXPECT_EQ(error(), -416);
}

TEST_F(QueuePullFailure, ErrorKeepsTheProgress) {
    start();
    answer(6, 0, "abc");
    answer(6, 3, "d");
    mPeer->last().fail({-416, ""});
    EXPECT_EQ(progress(), 0.5F);
}

TEST_F(QueuePullFailure, ErrorOfAnAnswerComesBeforeItsBody) {
    start();
    const auto body = chunk(3, 0, "abc");
    mPeer->last().callback(support::responseWith({-9, ""}, &body));
    EXPECT_EQ(error(), -9);
    EXPECT_FALSE(content());
}

TEST_F(QueuePullFailure, AnswerWithoutABodyIsMinus1) {
    begin();
    mPeer->last().callback(support::responseWith({0, ""}, nullptr));
    expectFailure(-1, {"2 parsebody fail!", "2 save version fail! errcode:-1"});
    EXPECT_EQ(content(), "abc");
    EXPECT_TRUE(support::isOpenHere(mPath));
}

TEST_F(QueuePullFailure, AnswerWithAnotherRecordIsMinus1) {
    start();
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    other.body = "x";
    mPeer->last().callback(support::responseWith({0, ""}, &other));
    expectFailure(-1, {"2 parsebody fail!", "2 save version fail! errcode:-1"});
    EXPECT_FALSE(content());
}

TEST_F(QueuePullFailure, VersionThatGoesBeforeTheFirstBytesIsMinus1) {
    start();
    mVersion.reset();
    answer(6, 0, "abc");
    expectFailure(-1, {"2 version == nullptr", "2 save version fail! errcode:-1"});
    EXPECT_FALSE(content());
}

TEST_F(QueuePullFailure, VersionIsNotNeededOnceTheFileIsOpen) {
    begin();
    mVersion.reset();
    serve("abcdef", 3);
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(QueuePullFailure, FileThatCannotBeOpenedIsMinus1) {
    std::filesystem::create_directories(mPath);  // a directory stands in its place
    start();
    answer(6, 0, "abc");
    expectFailure(-1, {"2 open file fail! " + mPath, "2 save version fail! errcode:-1"});
    EXPECT_EQ(mPeer->count(), 1U);
}

TEST_F(QueuePullFailure, DirectoryThatCannotBeMadeShowsWhenTheFileIsOpened) {
    support::writeText(mDir.path() + "/store", "a file where the store should be");
    start();
    answer(6, 0, "abc");
    expectFailure(-1, {"2 open file fail! " + mPath, "2 save version fail! errcode:-1"});
    EXPECT_EQ(support::readText(mDir.path() + "/store"), "a file where the store should be");
}

TEST_F(QueuePullFailure, AfterAnOpenThatFailedOnlyCancelClearsTheWay) {
    std::filesystem::create_directories(mPath);
    start();
    answer(6, 0, "abc");
    std::filesystem::remove(mPath);
    start();
    answer(6, 0, "abc");
    EXPECT_EQ(logged().at(2), "2 write file fail!");
    mDownload->cancel();
    start();
    serve("abcdef", 3);
    EXPECT_EQ(content(), "abcdef");
    EXPECT_TRUE(mDownload->finish());
}

// A further run

TEST_F(QueuePullFailure, NextStartClearsTheError) {
    start();
    mPeer->last().fail({-416, ""});
    start();
    EXPECT_EQ(error(), 0);
    serve("abc", 3);
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(calls(), 2);
}

TEST_F(QueuePullFailure, NextStartBeginsAtProgressZeroUnfinished) {
    start();
    serve("abcdef", 3);
    ASSERT_TRUE(mDownload->finish());
    start();
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(mPeer->last().record.position, 0U);
}

TEST_F(QueuePullFailure, NextStartWritesOverTheOpenFileWithoutCuttingIt) {
    begin();
    mPeer->last().fail({-202, ""});
    start();
    answer(2, 0, "XY");
    EXPECT_EQ(content(), "XYc");
    answer(2, 2, "");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), "XYc");  // the store's test finds a length that the package does not tell
}

TEST_F(QueuePullFailure, CancelOfARunThatWritesOverTheOpenFileDeletesNothing) {
    begin();
    mPeer->last().fail({-202, ""});
    start();
    answer(6, 0, "XY");
    EXPECT_EQ(mDownload->cancel().errorCode(), 0);
    EXPECT_EQ(content(), "XYc");
    EXPECT_FALSE(support::isOpenHere(mPath));
}

TEST_F(QueuePullFailure, CallbacksOfEarlierRunsDoNotFireAgain) {
    int first = 0;
    mDownload->start([&] { ++first; });
    mPeer->last().fail({-202, ""});
    start();
    serve("abc", 3);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(calls(), 1);
}

TEST_F(QueuePullFailure, RunThatCouldNotSendLeavesItsCallbackBehind) {
    int first = 0;
    mPeer->refuse();
    mDownload->start([&] { ++first; });
    mPeer->refuse(false);
    start();
    serve("abc", 3);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(calls(), 1);
}
