// What the drive of a peer's installation tells the peer, what it counts as a failure, and how long it waits.
#include "ForeignRequest.h"
#include "RemoteInstallerFixture.h"
#include "VersionRequest.h"

using namespace Tarnwick::OrvUpdate;
using support::peerAnswer;

namespace {

class RemoteInstallerStart : public RemoteInstallerFixture {};
class RemoteInstallerLimit : public RemoteInstallerFixture {};
class RemoteInstallerMade : public RemoteInstallerFixture {};
class RemoteInstallerPassing : public RemoteInstallerFixture, public testing::WithParamInterface<int> {};

}  // namespace

TEST_F(RemoteInstallerStart, FreshOneHasNoErrorAndIsNotFinished) {
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mInstaller->finish());
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteInstallerStart, TellsThePeerTheVersion) {
    const ErrorInfo result = start();
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    ASSERT_EQ(mLink->requests().size(), 1U);
    expectRequest(mLink->requests()[0], kStartInstall);
}

TEST_F(RemoteInstallerStart, UsesNoneOfItsArguments) {
    int calls = 0;
    mInstaller->start("", false, [&calls] { ++calls; });
    mInstaller->start("C:\\Elsewhere", true, [&calls] { ++calls; });
    mLink->answer(peerAnswer(0));
    pollAnswered(R"({"pos":1.0,"finish":true})");
    EXPECT_EQ(mLink->requests()[0].body, mLink->requests()[1].body);
    EXPECT_EQ(calls, 0);
}

TEST_F(RemoteInstallerStart, WithoutAServerIdGoesToTheQueueAsItStands) {
    const auto installer = std::make_shared<RemoteInstaller>(mClient, mVersion, "");
    EXPECT_EQ(installer->start("", true, {}).errorCode(), 0);
    ASSERT_EQ(mLink->requests().size(), 1U);
    EXPECT_EQ(mLink->requests()[0].to, "");
}

TEST_F(RemoteInstallerStart, WithoutALinkFails) {
    mClient->link.reset();
    const ErrorInfo result = start();
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(error(), -1);
    EXPECT_TRUE(mLog.has(2, "remote install fail! errcode:-1"));
    EXPECT_EQ(mLog.entries().size(), 1U);
}

TEST_F(RemoteInstallerStart, WithoutAClientOrAVersionFails) {
    for (const auto& installer : {std::make_shared<RemoteInstaller>(nullptr, mVersion, "peer"),
                                  std::make_shared<RemoteInstaller>(mClient, nullptr, "peer")}) {
        EXPECT_EQ(installer->start("", true, {}).errorCode(), -1);
        EXPECT_EQ(installer->getError().errorCode(), -1);
        float value = -1;
        EXPECT_EQ(installer->getProgress(value).errorCode(), 0);
        EXPECT_EQ(value, 0.0F);
    }
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteInstallerStart, WithoutAnOwnerFails) {
    RemoteInstaller installer(mClient, mVersion, "peer");
    EXPECT_EQ(installer.start("", true, {}).errorCode(), -1);
    EXPECT_EQ(installer.getError().errorCode(), -1);
    EXPECT_TRUE(mLink->requests().empty());
}

TEST_F(RemoteInstallerStart, ThatCannotBeSentGivesZeroAndTellsAnError) {
    mLink->refuse(true);
    EXPECT_EQ(start().errorCode(), 0);
    EXPECT_EQ(error(), -1);
    EXPECT_TRUE(mLog.has(2, "msgid == 0"));
    EXPECT_EQ(mLog.entries().size(), 1U);
}

TEST_F(RemoteInstallerStart, TakesTheErrorOfTheAnswer) {
    start();
    mLink->answer(peerAnswer(-416, nullptr, "not here"));
    EXPECT_EQ(error(), -416);
    EXPECT_EQ(mInstaller->getError().errorMessage(), "not here");
    EXPECT_TRUE(mLog.has(2, "remote install fail! errcode:-416"));
    EXPECT_EQ(mLog.entries().size(), 1U);
}

TEST_F(RemoteInstallerStart, DoesNotReadTheAnswersBody) {
    start();
    mLink->answer(R"({"pos":0.5,"finish":true})");
    EXPECT_FALSE(mInstaller->finish());
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(RemoteInstallerStart, AnswerThatOutrunsThePushIsTaken) {
    mLink->answerAtOnce([](const auto&) { return peerAnswer(-416); });
    EXPECT_EQ(start().errorCode(), 0);
    EXPECT_EQ(error(), -416);
}

TEST_F(RemoteInstallerStart, AnswerOfZeroClearsAnEarlierFailure) {
    mLink->refuse(true);
    start();
    EXPECT_EQ(error(), -1);
    mLink->refuse(false);
    start();
    EXPECT_EQ(error(), -1);
    mLink->answer(peerAnswer(0));
    EXPECT_EQ(error(), 0);
}

TEST_F(RemoteInstallerStart, OffersNoStopAndNoCancel) {
    start();
    for (const ErrorInfo& result : {mInstaller->stop(), mInstaller->cancel()}) {
        EXPECT_EQ(result.errorCode(), -2);
        EXPECT_EQ(result.errorMessage(), "");
    }
    EXPECT_EQ(mLink->requests().size(), 1U);
    pollAnswered(R"({"pos":0.5})");
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(error(), 0);
}

TEST_F(RemoteInstallerStart, AnswersAfterTheLastOwnerLetGoDoNothing) {
    start();
    progress();
    const std::weak_ptr<RemoteInstaller> watch = mInstaller;
    mInstaller.reset();
    EXPECT_TRUE(watch.expired());
    for (const auto& request : mLink->requests()) request.answer(peerAnswer(-416));
    EXPECT_TRUE(mLog.entries().empty());
}

// --- Failures that pass

TEST_P(RemoteInstallerPassing, InTheAnswerToTheStartDoNotCount) {
    start();
    mLink->answer(peerAnswer(GetParam()));
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(mLog.entries().empty());
    progress();
    EXPECT_EQ(polls(), 1U);
}

TEST_P(RemoteInstallerPassing, InTheAnswerToAPollDoNotCountAndTheNextAsksAtOnce) {
    pollAnswered(R"({"pos":0.5})");
    pollAnswered(peerAnswer(GetParam()));
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(mLog.entries().empty());
    EXPECT_EQ(progress(), 0.5F);
    EXPECT_EQ(polls(), 3U);
}

TEST_P(RemoteInstallerPassing, LeaveAnEarlierFailureAsItIs) {
    progress();
    const auto first = mLink->requests().back().answer;
    pollAnswered(peerAnswer(-416));
    mClock.advance(5000);
    first(peerAnswer(GetParam()));
    EXPECT_EQ(error(), -416);
}

INSTANTIATE_TEST_SUITE_P(Codes, RemoteInstallerPassing, testing::Values(-202, -203, -426),
                         [](const auto& one) { return "Minus" + std::to_string(-one.param); });

// --- The limit of 180 seconds

TEST_F(RemoteInstallerLimit, IsReachedAfter180000Milliseconds) {
    start();
    mClock.advance(179999);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mInstaller->finish());
    mClock.advance(1);
    const ErrorInfo timeout = mInstaller->getError();
    EXPECT_EQ(timeout.errorCode(), -1);
    EXPECT_EQ(timeout.errorMessage(), "");
    EXPECT_TRUE(mInstaller->finish());
    EXPECT_TRUE(mLog.has(2, "remote install timeout"));
}

TEST_F(RemoteInstallerLimit, IsOnlyNoticedByGetError) {
    start();
    mClock.advance(1000000);
    EXPECT_FALSE(mInstaller->finish());
    progress();
    EXPECT_EQ(polls(), 1U);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(RemoteInstallerLimit, EndsThePolling) {
    start();
    mClock.advance(180000);
    error();
    mClock.advance(5000);
    progress();
    EXPECT_EQ(polls(), 0U);
}

TEST_F(RemoteInstallerLimit, HidesAFailureThatCameBefore) {
    start();
    mLink->answer(peerAnswer(-416));
    mClock.advance(180000);
    EXPECT_EQ(error(), -1);
}

TEST_F(RemoteInstallerLimit, CountsHoweverWellTheInstallationGoes) {
    start();
    mLink->answer(peerAnswer(0));
    pollAnswered(R"({"pos":1.0,"finish":true})");
    mClock.advance(180000);
    EXPECT_EQ(error(), -1);
    EXPECT_TRUE(mInstaller->finish());
}

TEST_F(RemoteInstallerLimit, LeavesTheErrorToANewStartWhichCountsAnew) {
    start();
    mClock.advance(180000);
    EXPECT_EQ(error(), -1);
    start();
    EXPECT_EQ(error(), 0);
    mClock.advance(179999);
    EXPECT_EQ(error(), 0);
    mClock.advance(1);
    EXPECT_EQ(error(), -1);
}

TEST_F(RemoteInstallerLimit, DoesNotHoldForOneThatWasNeverStarted) {
    mClock.advance(1000000);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(mInstaller->finish());
}

TEST_F(RemoteInstallerLimit, HoldsForAStartThatFailed) {
    mClient->link.reset();
    start();
    mClock.advance(180000);
    EXPECT_EQ(error(), -1);
    EXPECT_TRUE(mInstaller->finish());
}

// --- The factory

TEST_F(RemoteInstallerMade, FromARequestUsesItsClientAndIsNotStarted) {
    const auto request = IVersionRequest::allocVersionRequest(nullptr, mClient, VersionType_Client);
    const auto installer = IInstaller::createRemoteInstaller(request, mVersion, "peer");
    ASSERT_NE(installer, nullptr);
    EXPECT_TRUE(mLink->requests().empty());
    EXPECT_EQ(installer->start("", true, {}).errorCode(), 0);
    ASSERT_EQ(mLink->requests().size(), 1U);
    expectRequest(mLink->requests()[0], kStartInstall);
}

TEST_F(RemoteInstallerMade, FromNoRequestOrAForeignOneCannotStart) {
    const std::vector<std::shared_ptr<IVersionRequest>> requests = {nullptr, std::make_shared<ForeignRequest>()};
    for (const auto& request : requests) {
        const auto installer = IInstaller::createRemoteInstaller(request, mVersion, "peer");
        ASSERT_NE(installer, nullptr);
        EXPECT_EQ(installer->getError().errorCode(), 0);
        EXPECT_EQ(installer->start("", true, {}).errorCode(), -1);
        EXPECT_EQ(installer->getError().errorCode(), -1);
    }
}

TEST_F(RemoteInstallerMade, FromAServersRequestCannotStart) {
    const auto request =
        IVersionRequest::allocVersionRequest(nullptr, std::shared_ptr<TWMQSystemServer>(), VersionType_Server);
    const auto installer = IInstaller::createRemoteInstaller(request, mVersion, "peer");
    ASSERT_NE(installer, nullptr);
    EXPECT_EQ(installer->start("", true, {}).errorCode(), -1);
}

TEST_F(RemoteInstallerMade, WithoutAVersionCannotStart) {
    const auto request = IVersionRequest::allocVersionRequest(nullptr, mClient, VersionType_Client);
    const auto installer = IInstaller::createRemoteInstaller(request, nullptr, "peer");
    ASSERT_NE(installer, nullptr);
    EXPECT_EQ(installer->start("", true, {}).errorCode(), -1);
    EXPECT_TRUE(mLink->requests().empty());
}
