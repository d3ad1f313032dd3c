// Cancelling an installation at each of its steps.
#include "InstallFixture.h"
#include "OrvInstaller/AgentInstaller.h"
#include "WatchedVersion.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Access = VersionRequestAccess;

namespace {

constexpr int kProgress = 4;

class InstallCancel : public Install {};

}  // namespace

TEST_F(InstallCancel, BeforeAnyInstallSetsTheRequestThatTheNextInstallClears) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    const ErrorInfo result = mRequest->installCancel(version);
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_TRUE(Access::cancelRequested(*mRequest));
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_FALSE(Access::cancelRequested(*mRequest));
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(InstallCancel, RequestIsClearedAlsoByAnInstallOfTheRunningVersion) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    startAt("1.11.0.8");
    mRequest->installCancel(version);
    install(version);
    EXPECT_FALSE(Access::cancelRequested(*mRequest));
}

TEST_F(InstallCancel, OfAnEntryWithoutATransferSucceeds) {
    EXPECT_EQ(mRequest->installCancel(support::entry("5.0")).errorCode(), 0);
    EXPECT_EQ(mRequest->installCancel(nullptr).errorCode(), 0);
}

TEST_F(InstallCancel, DuringTheTransferEndsItWithoutAWord) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    EXPECT_EQ(install(version).errorCode(), 0);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);
    EXPECT_TRUE(ended());
    mCloud.release(kPackagePath);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_FALSE(std::filesystem::exists(version->getPackageFile()));
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(InstallCancel, OfATransferLeavesTheWayClearForTheNextInstall) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->installCancel(version);
    mCloud.release(kPackagePath);
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_TRUE(ended());
    EXPECT_EQ(mCloud.requestCount(kPackagePath), 2U);
}

TEST_F(InstallCancel, OfAnotherEntryStopsTheCompletionToo) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->installCancel(localEntry(mStore.path("other.exe"), "3.0"));
    mCloud.release(kPackagePath);
    EXPECT_TRUE(ended());
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_TRUE(std::filesystem::exists(version->getPackageFile()));
}

TEST_F(InstallCancel, AfterTheArrivalStopsBehindTheAgent) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    support::LogRecorder log;
    mDuringInstalling = [&] { mRequest->installCancel(version); };
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_TRUE(log.has(kProgress, "mAgentInstaller start is cancel by user"));
    EXPECT_FALSE(log.has(kProgress, "mAgentInstaller exit"));
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(InstallCancel, DuringThePackageTestDiscardsThePackage) {
    const auto version = std::make_shared<WatchedVersion>(mWorker, mStore.path(), std::string());
    const std::string package = mStore.put(packageOf("1.11.0.8"));
    version->setVersion("1.11.0.8");
    version->setStoragePosition(StoragePosition_Local);
    version->setLocalFileName(package);
    version->duringTest = [&] {
        if (Access::agent(*mRequest)) mRequest->installCancel(version);
    };
    support::LogRecorder log;
    EXPECT_EQ(install(version).errorCode(), 0);
    version->duringTest = nullptr;
    EXPECT_FALSE(std::filesystem::exists(package));
    EXPECT_EQ(mArrived.count(), 1U);
    EXPECT_EQ(mInstalling.count(), 0U);
    EXPECT_EQ(mAsked.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_TRUE(log.has(kProgress, "mAgentInstaller start is cancel by user"));
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(InstallCancel, DuringTheAcknowledgementLaunchesYetDoesNotEndTheHost) {
    mHoldAcknowledgement = true;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    std::thread installing([&] { install(version); });
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);
    mAcknowledgement.open();
    installing.join();
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(InstallCancel, DuringTheAcknowledgementOfAFetchedPackageReturnsAtOnce) {
    mHoldAcknowledgement = true;
    const auto version = cloudEntry();
    install(version);
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 0U);
    mAcknowledgement.open();
    EXPECT_TRUE(support::eventually([&] { return Access::agent(*mRequest) == nullptr; }));
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallCancel, DuringARefusedAcknowledgementReportsNothing) {
    mHoldAcknowledgement = true;
    mConsent = false;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    std::thread installing([&] { install(version); });
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    mRequest->installCancel(version);
    mAcknowledgement.open();
    installing.join();
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(mExits.count(), 0U);
}

TEST_F(InstallCancel, HoldsForItsInstallationAlsoWhenAnotherHasBegun) {
    mHoldAcknowledgement = true;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    std::thread installing([&] { install(version); });
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    mRequest->installCancel(version);
    install(localEntry(mStore.path("running.exe"), "1.0.0.0"));
    EXPECT_FALSE(Access::cancelRequested(*mRequest));
    mAcknowledgement.open();
    installing.join();
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallCancel, AfterTheLaunchLeavesTheInstallerRunning) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    const Received<std::string> launched;
    Public::Base::System::setProgramStarter([&](const Public::Base::ProgramStart& start) {
        launched.add(start.program);
        mRequest->installCancel(version);
        return true;
    });
    EXPECT_EQ(install(version).errorCode(), 0);
    Public::Base::System::setProgramStarter({});
    EXPECT_EQ(launched.count(), 1U);
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallCancel, WhenThePackageArrivesAtThatMomentNeitherHangsNorReports) {
    for (int round = 0; round < 20; ++round) {
        const auto version = cloudEntry();
        // A place of its own: one that is cancelled in its test still discards its package, at whatever time.
        version->setSystemType(static_cast<Public::Base::SystemType>(round % 5 + 1));
        version->setVersionType(static_cast<VersionType>(round / 5 + 1));
        install(version);
        mRequest->installCancel(version);
        EXPECT_TRUE(ended());
        std::filesystem::remove_all(mStore.path("Online"));
    }
    EXPECT_TRUE(errors().empty());
}
