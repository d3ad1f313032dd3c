// How the drive of a peer's installation asks for its progress.
#include "RemoteInstallerFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::peerAnswer;

namespace {

class RemoteInstallerPoll : public RemoteInstallerFixture {};
class RemoteInstallerEnds : public RemoteInstallerFixture, public testing::WithParamInterface<int> {};
class RemoteInstallerBroken : public RemoteInstallerFixture,
                              public testing::WithParamInterface<support::BrokenAnswer> {};
class RemoteInstallerReads : public RemoteInstallerFixture,
                             public testing::WithParamInterface<support::ProgressCase> {};

}  // namespace

TEST_F(RemoteInstallerPoll, AsksThePeerAndGivesWhatWasKnownBefore) {
    EXPECT_EQ(progress(), 0.0F);
    ASSERT_EQ(mLink->requests().size(), 1U);
    expectRequest(mLink->requests()[0], kInstallPos);
    mLink->answer(R"({"pos":0.5,"finish":false})");
    EXPECT_EQ(progress(), 0.5F);
}

TEST_F(RemoteInstallerPoll, AsksOnceInFiveSecondsWhileAnAnswerIsOut) {
    progress();
    mClock.advance(4999);
    progress();
    EXPECT_EQ(polls(), 1U);
    mClock.advance(1);
    progress();
    EXPECT_EQ(polls(), 2U);
    mClock.advance(4999);
    progress();
    EXPECT_EQ(polls(), 2U);
}

TEST_F(RemoteInstallerPoll, AsksAtOnceAfterAnAnswer) {
    for (int poll = 0; poll < 3; ++poll) pollAnswered(R"({"pos":0.5})");
    EXPECT_EQ(polls(), 3U);
}

TEST_F(RemoteInstallerPoll, AnAnswerToAnEarlierOneOpensTheGateToo) {
    progress();
    const auto first = mLink->requests().back().answer;
    mClock.advance(5000);
    progress();
    first(support::peerDocument(R"({"pos":0.5})"));
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 3U);
}

TEST_F(RemoteInstallerPoll, AnswerThatOutrunsThePushIsOver) {
    mLink->answerAtOnce([](const auto&) { return support::peerDocument(R"({"pos":0.5})"); });
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
}

TEST_F(RemoteInstallerPoll, DoesNotAskOnceFinished) {
    pollAnswered(R"({"pos":1.0,"finish":true})");
    EXPECT_TRUE(mInstaller->finish());
    mClock.advance(5000);
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(polls(), 1U);
}

TEST_F(RemoteInstallerPoll, FinishMayBeTakenBackByAnAnswerThatWasOut) {
    progress();
    const auto first = mLink->requests().back().answer;
    mClock.advance(5000);
    pollAnswered(R"({"finish":true})");
    EXPECT_TRUE(mInstaller->finish());
    first(support::peerDocument(R"({"finish":false})"));
    EXPECT_FALSE(mInstaller->finish());
}

TEST_F(RemoteInstallerPoll, WithoutALinkGoesOnAndTellsNoError) {
    mClient->link.reset();
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(mLog.has(2, "connection empty()"));
    EXPECT_EQ(mLog.entries().size(), 1U);
    mClient->link = mLink;
    progress();
    EXPECT_EQ(polls(), 1U);
}

TEST_F(RemoteInstallerPoll, ThatCannotBeSentIsTriedAgainAndTellsNoError) {
    mLink->refuse(true);
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(mLog.has(2, "msgid == 0"));
    EXPECT_EQ(mLog.entries().size(), 1U);
    mLink->refuse(false);
    progress();
    EXPECT_EQ(polls(), 1U);
}

TEST_F(RemoteInstallerPoll, DoesNotAskAfterAFailedStart) {
    mLink->refuse(true);
    start();
    mLink->refuse(false);
    progress();
    mClock.advance(5000);
    progress();
    EXPECT_EQ(polls(), 0U);
}

TEST_F(RemoteInstallerPoll, AnAnswerOfZeroAfterAFailureClearsItAndPollingResumes) {
    progress();
    const auto first = mLink->requests().back().answer;
    mClock.advance(5000);
    pollAnswered(peerAnswer(-416));
    EXPECT_EQ(error(), -416);
    first(support::peerDocument(R"({"pos":0.5})"));
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 3U);
}

TEST_F(RemoteInstallerPoll, ABrokenAnswerOfZeroAfterAFailureTakesItsPlace) {
    progress();
    const auto first = mLink->requests().back().answer;
    mClock.advance(5000);
    pollAnswered(peerAnswer(-416));
    first(peerAnswer(0));
    EXPECT_EQ(error(), -301);
}

TEST_P(RemoteInstallerEnds, WithAnErrorInAnAnswer) {
    pollAnswered(R"({"pos":0.5})");
    pollAnswered(peerAnswer(GetParam(), nullptr, "why"));
    const ErrorInfo failure = mInstaller->getError();
    EXPECT_EQ(failure.errorCode(), GetParam());
    EXPECT_EQ(failure.errorMessage(), "why");
    const std::string code = std::to_string(GetParam());
    EXPECT_TRUE(mLog.has(2, "remote install fail! errcode:" + code));
    EXPECT_TRUE(mLog.has(2, "remote installer fail! errcode:" + code));
    mClock.advance(5000);
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
    EXPECT_FALSE(mInstaller->finish());
}

INSTANTIATE_TEST_SUITE_P(Codes, RemoteInstallerEnds, testing::Values(-1, -2, -204, -301, -416, -425, -428, -10005),
                         [](const auto& one) { return "Minus" + std::to_string(-one.param); });

TEST_P(RemoteInstallerBroken, EndsThePollingWithABadDocument) {
    pollAnswered(R"({"pos":0.5})");
    pollAnswered(GetParam().make());
    EXPECT_EQ(error(), -301);
    EXPECT_EQ(mInstaller->getError().errorMessage(), "");
    EXPECT_TRUE(mLog.has(2, "remote installer fail! errcode:-301"));
    EXPECT_EQ(mLog.entries().size(), 1U);
    mClock.advance(5000);
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Answers, RemoteInstallerBroken, testing::ValuesIn(support::brokenAnswers()),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_P(RemoteInstallerReads, WhatTheDocumentHolds) {
    pollAnswered(R"({"pos":0.25,"finish":false})");
    pollAnswered(GetParam().document);
    EXPECT_EQ(progress(), GetParam().pos);
    EXPECT_EQ(mInstaller->finish(), GetParam().finish);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(mLog.entries().empty());
}

INSTANTIATE_TEST_SUITE_P(Documents, RemoteInstallerReads, testing::ValuesIn(support::progressCases()),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(RemoteInstallerPoll, MayBeDrivenFromManyThreadsWhileAnswersCome) {
    mLink->answerAtOnce([](const auto& request) {
        return request.topic == kInstallPos ? support::peerDocument(R"({"pos":0.5})") : peerAnswer(-203);
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this] {
            for (int round = 0; round < 50; ++round) {
                start();
                progress();
                EXPECT_EQ(error(), 0);
                EXPECT_FALSE(mInstaller->finish());
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(progress(), 0.5F);
}
