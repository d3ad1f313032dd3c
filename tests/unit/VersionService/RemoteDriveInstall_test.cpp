// A client has servers install a package, up to their return with the new version.
#include "FakeInstaller.h"
#include "RemoteDriveFixture.h"

using namespace Tarnwick::OrvUpdate;
using Texts = std::vector<std::string>;

namespace {

class RemoteDriveInstall : public RemoteDrive {
protected:
    /// True once the start's answer has come: the launch is recorded, and the queue is at rest.
    bool launched(size_t programs = 1) {
        const bool reached = support::eventually([&] { return mPrograms.starts().size() == programs; });
        bus().settle();
        return reached;
    }
};

}  // namespace

TEST_F(RemoteDriveInstall, GoesFromTheConsentToTheReturnWithTheNewVersion) {
    fetch();
    const auto drive = installer();
    EXPECT_EQ(drive->start("C:\\unused", false, [] { FAIL() << "called back"; }).errorCode(), 0);
    ASSERT_TRUE(launched());
    EXPECT_EQ(mAsked.values(), Texts{kNewVersion});
    const auto launch = mPrograms.starts()[0];
    EXPECT_NE(launch.parameters.find(kNewVersion), std::string::npos) << launch.parameters;
    EXPECT_NE(launch.parameters.find("\"" + mCloud.programDir() + "\""), std::string::npos) << launch.parameters;
    EXPECT_TRUE(launch.parameters.ends_with("\"one\" \"two\" \"1\"")) << launch.parameters;

    EXPECT_EQ(position(*drive), 0.0F);
    bus().settle();
    EXPECT_FALSE(drive->finish());
    EXPECT_EQ(drive->getError().errorCode(), 0);

    elapse(999);
    EXPECT_EQ(mExits.count(), 0U);
    elapse(1);
    EXPECT_EQ(mExits.count(), 1U);

    startHost(kNewVersion);
    EXPECT_EQ(watch(*drive), 0);
    EXPECT_TRUE(drive->finish());
    EXPECT_EQ(position(*drive), 1.0F);
}

TEST_F(RemoteDriveInstall, BearsThatTheServerIsAwayWhileItInstalls) {
    fetch();
    const auto drive = installer();
    drive->start("", true, {});
    ASSERT_TRUE(launched());
    mRequest->stop();
    while (mRequest.use_count() > 1) std::this_thread::yield();
    mRequest = makeRequest(std::shared_ptr<TWMQSystemServer>());
    mServer.reset();
    bus().settle();
    for (int poll = 0; poll < 3; ++poll) {
        position(*drive);
        bus().settle();
        EXPECT_EQ(drive->getError().errorCode(), 0);
        EXPECT_FALSE(drive->finish());
    }
    mServer = makeServer();
    mRequest = makeRequest(mServer);
    startHost(kNewVersion);
    elapseOnQueue(5000);
    EXPECT_EQ(watch(*drive), 0);
    EXPECT_TRUE(drive->finish());
}

TEST_F(RemoteDriveInstall, ReachesAnotherServerThroughTheClientsOwn) {
    fetch("far");
    const auto drive = installer("far");
    drive->start("", true, {});
    ASSERT_TRUE(launched());
    EXPECT_NE(mPrograms.starts()[0].parameters.find(mFarStore.path()), std::string::npos);
    mFarRequest->stop();
    mFarRequest->start(Version(kNewVersion, 0), consent(), ends(), mFarStore.path());
    EXPECT_EQ(watch(*drive), 0);
    EXPECT_TRUE(drive->finish());
}

TEST_F(RemoteDriveInstall, ARefusalOfTheHostIsTheError) {
    fetch();
    mConsent = false;
    const auto drive = installer();
    drive->start("", true, {});
    EXPECT_TRUE(support::eventually([&] { return drive->getError().errorCode() == -1; }));
    EXPECT_FALSE(drive->getError().errorMessage().empty());
    EXPECT_FALSE(drive->finish());
    elapse(10000);
    EXPECT_EQ(mExits.count(), 0U);
}

TEST_F(RemoteDriveInstall, APackageThatTheServerDoesNotHaveIsRefused) {
    const auto unknown = support::entry("7.7");
    const auto drive = IInstaller::createRemoteInstaller(mClientRequest, unknown, "server");
    drive->start("", true, {});
    EXPECT_TRUE(support::eventually([&] { return drive->getError().errorCode() == -416; }));
    EXPECT_TRUE(mLog.has(2, "not find version, versionstr:7.7"));
}

TEST_F(RemoteDriveInstall, APackageThatHasNotBeenFetchedIsRefused) {
    const auto drive = installer();
    drive->start("", true, {});
    EXPECT_TRUE(support::eventually([&] { return static_cast<bool>(drive->getError()); }));
    EXPECT_TRUE(mPrograms.starts().empty());
    EXPECT_TRUE(mAsked.values().empty());
}

TEST_F(RemoteDriveInstall, AWatchOfWhatWasNeverStartedTellsTheMismatch) { EXPECT_EQ(watch(*installer()), -428); }

TEST_F(RemoteDriveInstall, AnUnreachableServerIsAFailure) {
    mFarRequest->stop();
    while (mFarRequest.use_count() > 1) std::this_thread::yield();
    mFarRequest = makeRequest(std::shared_ptr<TWMQSystemServer>());
    mFar.reset();
    bus().settle();
    EXPECT_EQ(watch(*installer("far")), -425);
}

TEST_F(RemoteDriveInstall, ServersThatAreNotReadyOrUnknownAreWaitedForUntilTheLimit) {
    auto busy = options("busy");
    busy.ready = false;
    const auto node = TWMQSystemServer::create(mBus, busy);
    bus().settle();
    for (const std::string peer : {"busy", "nobody"}) {
        const auto drive = installer(peer);
        drive->start("", true, {});
        for (int poll = 0; poll < 3; ++poll) {
            position(*drive);
            bus().settle();
            EXPECT_EQ(drive->getError().errorCode(), 0) << peer;
        }
        EXPECT_FALSE(drive->finish());
        mClock.advance(179999);
        EXPECT_EQ(drive->getError().errorCode(), 0);
        mClock.advance(1);
        EXPECT_EQ(drive->getError().errorCode(), -1);
        EXPECT_TRUE(drive->finish());
    }
}

TEST_F(RemoteDriveInstall, AServerThatHangsIsWaitedFor) {
    fetch();
    const auto drive = installer();
    bus().stopNode("server");
    drive->start("", true, {});
    position(*drive);
    elapseOnQueue(61000);
    EXPECT_EQ(drive->getError().errorCode(), 0);
    EXPECT_FALSE(drive->finish());
    bus().resumeNode("server");
    elapseOnQueue(5000);
    drive->start("", true, {});
    EXPECT_TRUE(launched());
}

TEST_F(RemoteDriveInstall, WatchesAProcessThatHasAnInstallerAndNoCatalogue) {
    const auto node = makeServer("setup");
    const auto given = std::make_shared<FakeInstaller>();
    const auto service = std::make_shared<VersionService>(mWorker, node, given);
    service->start();
    bus().settle();
    given->pos = 0.5F;
    const auto drive = installer("setup");
    position(*drive);
    bus().settle();
    EXPECT_EQ(position(*drive), 0.5F);
    bus().settle();
    given->pos = 1.0F;
    given->finished = true;
    EXPECT_EQ(watch(*drive), 0);
    EXPECT_EQ(position(*drive), 1.0F);
}
