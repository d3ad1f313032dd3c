// What an installation holds, and how long.
#include "InstallFixture.h"
#include "OrvInstaller/AgentInstaller.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;

namespace {

class InstallLifetime : public Install {};

}  // namespace

TEST_F(InstallLifetime, NothingIsHeldAfterACompletedInstall) {
    auto version = cloudEntry();
    auto transfer = version->getDownload(std::static_pointer_cast<IVersionRequest>(mRequest));
    const std::weak_ptr<IVersion> watchedVersion = version;
    const std::weak_ptr<IDownload> watchedTransfer = transfer;
    transfer.reset();
    install(version);
    ASSERT_TRUE(mExits.waitFor());
    version.reset();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(support::eventually([&] { return watchedVersion.expired() && watchedTransfer.expired(); }));
}

TEST_F(InstallLifetime, NothingIsHeldAfterAFailedTransfer) {
    auto version = cloudEntry();
    mCloud.forget(kPackagePath);
    const std::weak_ptr<IVersion> watchedVersion = version;
    install(version);
    ASSERT_TRUE(mErrors.waitFor());
    version.reset();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(support::eventually([&] { return watchedVersion.expired(); }));
}

TEST_F(InstallLifetime, NothingIsHeldAfterACancelledTransfer) {
    auto version = cloudEntry();
    const std::weak_ptr<IVersion> watchedVersion = version;
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->installCancel(version);
    version.reset();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(support::eventually([&] { return watchedVersion.expired(); }));
}

TEST_F(InstallLifetime, CallbacksGoWithTheInstallation) {
    const auto held = std::make_shared<int>(0);
    const auto version = cloudEntry();
    mRequest->install(
        version, "C:\\Orv", true, [held](const ErrorInfo&) {}, [held] {}, [held] {});
    ASSERT_TRUE(mExits.waitFor());
    EXPECT_TRUE(support::eventually([&] { return held.use_count() == 1; }));
}

TEST_F(InstallLifetime, CallbacksOfAReplacedInstallationGoAtOnce) {
    const auto held = std::make_shared<int>(0);
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    mRequest->install(
        version, "C:\\Orv", true, [held](const ErrorInfo&) {}, [held] {}, [held] {});
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    EXPECT_GT(held.use_count(), 1);
    install(version);
    EXPECT_EQ(held.use_count(), 1);
    mCloud.release(kPackagePath);
    EXPECT_TRUE(mExits.waitFor());
}

TEST_F(InstallLifetime, RunningTransferDoesNotKeepTheRequest) {
    auto version = cloudEntry();
    const std::weak_ptr<IVersion> watchedVersion = version;
    const std::weak_ptr<VersionRequest> watchedRequest = mRequest;
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    version.reset();
    mRequest.reset();
    EXPECT_TRUE(support::eventually([&] { return watchedRequest.expired() && watchedVersion.expired(); }));
    mCloud.release(kPackagePath);
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallLifetime, HostMayLetGoOfTheRequestWhenItIsToEnd) {
    const auto version = cloudEntry();
    const std::weak_ptr<VersionRequest> watch = mRequest;
    const Received<int> exits;
    mRequest->stop();
    const auto last = std::make_shared<std::shared_ptr<VersionRequest>>(mRequest);
    mRequest->start(
        Version("1.0", 0), [](const std::string&, std::string&, std::string&) { return true; },
        [=] {
            last->reset();
            exits.add(1);
            return true;
        },
        mStore.path());
    install(version);
    mRequest.reset();
    ASSERT_TRUE(exits.waitFor());
    EXPECT_TRUE(support::eventually([&] { return watch.expired(); }));
}
