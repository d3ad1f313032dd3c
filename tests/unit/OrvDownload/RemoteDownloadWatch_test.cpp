// How the drive of a peer's transfer watches it.
#include "PeerDriveFixture.h"
#include "RemoteDownload.h"

using namespace Tarnwick::OrvUpdate;
using support::peerAnswer;

namespace {

constexpr char kPoll[] = "topic_upgrade_getdownloadpos";

class RemoteDownloadWatch : public support::PeerDriveFixture {
protected:
    /// What getProgress gives, which succeeds.
    float progress() {
        float value = -1;
        EXPECT_EQ(mTransfer->getProgress(value).errorCode(), 0);
        return value;
    }
    void pollAnswered(const std::string& document) {
        progress();
        mLink->answer(document);
    }
    size_t polls() const { return mLink->count(kPoll); }

    std::shared_ptr<RemoteDownload> mTransfer = std::make_shared<RemoteDownload>(mClient, mVersion, "peer");
};

class RemoteDownloadEnds : public RemoteDownloadWatch, public testing::WithParamInterface<int> {};
class RemoteDownloadBroken : public RemoteDownloadWatch, public testing::WithParamInterface<support::BrokenAnswer> {};
class RemoteDownloadReads : public RemoteDownloadWatch, public testing::WithParamInterface<support::ProgressCase> {};

}  // namespace

TEST_F(RemoteDownloadWatch, AsksThePeerAndGivesWhatWasKnownBefore) {
    EXPECT_EQ(progress(), 0.0F);
    ASSERT_EQ(mLink->requests().size(), 1U);
    expectRequest(mLink->requests()[0], kPoll);
    mLink->answer(R"({"pos":0.5,"finish":false})");
    EXPECT_EQ(progress(), 0.5F);
}

TEST_F(RemoteDownloadWatch, TwoCallsSendOnePollWhileItIsUnanswered) {
    progress();
    progress();
    EXPECT_EQ(polls(), 1U);
}

TEST_F(RemoteDownloadWatch, AsksAgainAfterEachAnswer) {
    pollAnswered(R"({"pos":0.25,"finish":false})");
    pollAnswered(R"({"pos":0.5,"finish":false})");
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 3U);
}

TEST_F(RemoteDownloadWatch, SendsNothingByItself) {
    mTransfer->start({});
    mLink->answer(peerAnswer(0));
    mTransfer->getError();
    mTransfer->finish();
    EXPECT_EQ(polls(), 0U);
}

TEST_F(RemoteDownloadWatch, FinishIsWhatThePeerSaidLast) {
    pollAnswered(R"({"pos":1.0,"finish":true})");
    EXPECT_TRUE(mTransfer->finish());
    pollAnswered(R"({"finish":false})");
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(RemoteDownloadWatch, GoesOnAfterTheFinish) {
    pollAnswered(R"({"pos":1.0,"finish":true})");
    progress();
    EXPECT_EQ(polls(), 2U);
}

TEST_F(RemoteDownloadWatch, WithoutALinkFailsAndAsksAgainNextTime) {
    pollAnswered(R"({"pos":0.5})");
    mClient->link.reset();
    float value = 0;
    const ErrorInfo result = mTransfer->getProgress(value);
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(value, 0.5F);
    EXPECT_EQ(mTransfer->getError().errorCode(), -1);
    EXPECT_TRUE(mLog.has(2, "remote download fail! errcode:-1"));
    mClient->link = mLink;
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
}

TEST_F(RemoteDownloadWatch, APollThatCannotBeSentIsNotAnErrorAndIsTriedAgain) {
    mLink->refuse(true);
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(mTransfer->getError().errorCode(), 0);
    EXPECT_TRUE(mLog.has(2, "msgid == 0"));
    EXPECT_EQ(mLog.entries().size(), 1U);
    mLink->refuse(false);
    progress();
    EXPECT_EQ(polls(), 1U);
}

TEST_F(RemoteDownloadWatch, AnswerThatOutrunsThePushEndsThePollAndNotTheWatch) {
    mLink->answerAtOnce([](const auto&) { return support::peerDocument(R"({"pos":0.5,"finish":false})"); });
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
}

TEST_F(RemoteDownloadWatch, ErrorThatOutrunsThePushEndsTheWatch) {
    mLink->answerAtOnce([](const auto&) { return peerAnswer(-416); });
    progress();
    progress();
    EXPECT_EQ(polls(), 1U);
    EXPECT_EQ(mTransfer->getError().errorCode(), -416);
}

TEST_P(RemoteDownloadEnds, ForGoodWithAnErrorInAnAnswer) {
    pollAnswered(R"({"pos":0.5,"finish":false})");
    progress();
    mLink->answer(peerAnswer(GetParam(), nullptr, "why"));
    EXPECT_EQ(mTransfer->getError().errorCode(), GetParam());
    EXPECT_EQ(mTransfer->getError().errorMessage(), "why");
    EXPECT_TRUE(mLog.has(2, "remote download fail! errcode:" + std::to_string(GetParam())));
    for (int call = 0; call < 3; ++call) EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
    EXPECT_FALSE(mTransfer->finish());
}

INSTANTIATE_TEST_SUITE_P(Codes, RemoteDownloadEnds,
                         testing::Values(-1, -2, -202, -203, -204, -301, -416, -425, -426, -602, -10005),
                         [](const auto& one) { return "Minus" + std::to_string(-one.param); });

TEST_P(RemoteDownloadEnds, AndAFurtherStartDoesNotReviveIt) {
    progress();
    mLink->answer(peerAnswer(GetParam()));
    mTransfer->start({});
    mLink->answer(peerAnswer(0));
    EXPECT_EQ(mTransfer->getError().errorCode(), 0);
    progress();
    EXPECT_EQ(polls(), 1U);
}

TEST_P(RemoteDownloadBroken, EndsTheWatchWithABadDocument) {
    pollAnswered(R"({"pos":0.5})");
    progress();
    mLink->answer(GetParam().make());
    EXPECT_EQ(mTransfer->getError().errorCode(), -301);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "");
    EXPECT_TRUE(mLog.has(2, "remote download fail! errcode:-301"));
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Answers, RemoteDownloadBroken, testing::ValuesIn(support::brokenAnswers()),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_P(RemoteDownloadReads, WhatTheDocumentHolds) {
    pollAnswered(R"({"pos":0.25,"finish":false})");
    pollAnswered(GetParam().document);
    EXPECT_EQ(progress(), GetParam().pos);
    EXPECT_EQ(mTransfer->finish(), GetParam().finish);
    EXPECT_EQ(mTransfer->getError().errorCode(), 0);
    EXPECT_EQ(polls(), 3U);
}

INSTANTIATE_TEST_SUITE_P(Documents, RemoteDownloadReads, testing::ValuesIn(support::progressCases()),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(RemoteDownloadWatch, ManyThreadsAskOnceAtATime) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this] {
            for (int round = 0; round < 50; ++round) {
                float value = 0;
                mTransfer->getProgress(value);
                mTransfer->getError();
                mTransfer->finish();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(polls(), 1U);
}

TEST_F(RemoteDownloadWatch, AnswersOfOtherThreadsAreSeenWhole) {
    mLink->answerAtOnce([](const auto&) { return support::peerDocument(R"({"pos":0.5,"finish":true})"); });
    std::thread asking([this] {
        for (int round = 0; round < 200; ++round) {
            float value = 0;
            mTransfer->getProgress(value);
        }
    });
    for (int round = 0; round < 200; ++round) {
        const bool finished = mTransfer->finish();
        EXPECT_TRUE(!finished || progress() == 0.5F);
        mTransfer->start({});
    }
    asking.join();
    EXPECT_TRUE(mTransfer->finish());
}
