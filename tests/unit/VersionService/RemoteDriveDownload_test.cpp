// A client has servers fetch a package, from the first request to the file on their disks.
#include "RemoteDriveFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

class RemoteDriveDownload : public RemoteDrive {};

}  // namespace

TEST_F(RemoteDriveDownload, BringsThePackageFromTheCloudToTheServersStore) {
    ASSERT_NE(mVersion, nullptr);
    const auto transfer = download();
    EXPECT_EQ(transfer->start([] { FAIL() << "called back"; }).errorCode(), 0);
    EXPECT_EQ(watch(*transfer), 0);
    EXPECT_TRUE(transfer->finish());
    EXPECT_EQ(position(*transfer), 1.0F);
    EXPECT_EQ(packageOn(mStore), mBytes);
    EXPECT_EQ(packageOn(mFarStore), std::nullopt);
    EXPECT_EQ(mCloud.requestCount(kCloudPackage), 1U);
}

TEST_F(RemoteDriveDownload, ShowsHowFarItIs) {
    mCloud.hold(kCloudPackage);
    const auto transfer = download();
    transfer->start({});
    ASSERT_TRUE(mCloud.waitForHeld(kCloudPackage));
    EXPECT_TRUE(support::eventually([&] { return position(*transfer) > 0.0F; }));
    const float half = position(*transfer);
    EXPECT_LT(half, 0.75F);
    EXPECT_FALSE(transfer->finish());
    mCloud.release(kCloudPackage);
    EXPECT_EQ(watch(*transfer), 0);
    EXPECT_EQ(position(*transfer), 1.0F);
}

TEST_F(RemoteDriveDownload, LeavesTheTransferRunningWhenTheClientLetsGo) {
    mCloud.hold(kCloudPackage);
    auto transfer = download();
    transfer->start({});
    ASSERT_TRUE(mCloud.waitForHeld(kCloudPackage));
    transfer->cancel();
    transfer.reset();
    mCloud.release(kCloudPackage);
    EXPECT_TRUE(support::eventually([&] { return packageOn(mStore) == mBytes; }));
}

TEST_F(RemoteDriveDownload, TwoClientsWatchOneTransfer) {
    mCloud.hold(kCloudPackage);
    const auto first = download();
    first->start({});
    ASSERT_TRUE(mCloud.waitForHeld(kCloudPackage));
    const auto second = download();
    second->start({});
    mCloud.release(kCloudPackage);
    EXPECT_EQ(watch(*first), 0);
    EXPECT_EQ(watch(*second), 0);
    EXPECT_EQ(mCloud.requestCount(kCloudPackage), 1U);
    EXPECT_EQ(packageOn(mStore), mBytes);
}

TEST_F(RemoteDriveDownload, AFailureOnTheServerEndsTheWatchWithItsCode) {
    mCloud.serve(kCloudPackage, "sorry", 404);
    const auto transfer = download();
    transfer->start({});
    const int code = watch(*transfer);
    EXPECT_NE(code, 0);
    const auto entry = mRequest->queryVersion(mVersion);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(code, entry->getDownload(std::shared_ptr<IGetConnection>())->getError().errorCode());
    EXPECT_FALSE(transfer->finish());
    EXPECT_TRUE(mLog.has(2, "download fail! errcode:" + std::to_string(code)));
}

TEST_F(RemoteDriveDownload, ATransferThatFailedMayBeDrivenAgainByAnotherObject) {
    mCloud.serve(kCloudPackage, "sorry", 404);
    const auto failed = download();
    failed->start({});
    ASSERT_NE(watch(*failed), 0);
    mCloud.serve(kCloudPackage, mBytes);
    const auto again = download();
    again->start({});
    bus().settle();  // a question that overtakes the start is told of the failure before it
    EXPECT_EQ(watch(*again), 0);
    EXPECT_EQ(packageOn(mStore), mBytes);
}

TEST_F(RemoteDriveDownload, ReachesAnotherServerThroughTheClientsOwn) {
    const auto transfer = download("far");
    transfer->start({});
    EXPECT_EQ(watch(*transfer), 0);
    EXPECT_EQ(packageOn(mFarStore), mBytes);
    EXPECT_EQ(packageOn(mStore), std::nullopt);
}

TEST_F(RemoteDriveDownload, AServerThatDoesNotKnowTheVersionPullsItFromTheNodeThatHasIt) {
    const std::string package = mFarStore.put(packageOf("3.0.0.1"), "3.0.0.1");
    const auto held = std::make_shared<OrvVersion>(mWorker, mFarStore.path(), std::string("far"));
    held->parseVersion(documentOf("3.0.0.1", "far"));
    held->setLocalFileName(package);
    held->setStoragePosition(StoragePosition_Local);
    mFarRequest->addVersion(held);

    const auto transfer = std::make_shared<RemoteDownload>(mClient, held, "server");
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    bus().settle();  // a question that overtakes the start finds no such version
    EXPECT_EQ(watch(*transfer), 0);
    EXPECT_TRUE(transfer->finish());
    EXPECT_EQ(support::readText(mStore.path(packageOf("3.0.0.1"))), support::readText(package));
    ASSERT_NE(mRequest->queryVersion(std::static_pointer_cast<IVersion>(held)), nullptr);

    const auto drive = IInstaller::createRemoteInstaller(mClientRequest, held, "server");
    drive->start("", true, {});
    EXPECT_TRUE(support::eventually([&] { return mPrograms.starts().size() == 1; }));
    EXPECT_EQ(mAsked.values(), std::vector<std::string>{"3.0.0.1"});
}

TEST_F(RemoteDriveDownload, AWatchOfAVersionThatThePeerDoesNotKnowEndsWithABadDocument) {
    const auto unknown = support::entry("7.7");
    const auto transfer = std::make_shared<RemoteDownload>(mClient, unknown, "server");
    EXPECT_EQ(watch(*transfer), -301);
    EXPECT_TRUE(mLog.has(2, "not find version"));
}

TEST_F(RemoteDriveDownload, AServerThatCannotGetTheVersionRefuses) {
    const auto unknown = support::entry("7.7");
    const auto transfer = std::make_shared<RemoteDownload>(mClient, unknown, "server");
    transfer->start({});
    EXPECT_TRUE(support::eventually([&] { return transfer->getError().errorCode() == -1; }));
    EXPECT_TRUE(mLog.has(2, "getdownload fail!"));
}

TEST_F(RemoteDriveDownload, AServerThatHasLeftIsToldAsUnreachable) {
    mFarRequest->stop();
    while (mFarRequest.use_count() > 1) std::this_thread::yield();
    mFarRequest = makeRequest(std::shared_ptr<TWMQSystemServer>());
    mFar.reset();
    bus().settle();
    const auto transfer = download("far");
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    EXPECT_TRUE(support::eventually([&] { return transfer->getError().errorCode() == -425; }));
    EXPECT_EQ(watch(*download("far")), -425);
}

TEST_F(RemoteDriveDownload, AServerThatIsNotReadyIsToldAsSuch) {
    auto busy = options("busy");
    busy.ready = false;
    const auto node = TWMQSystemServer::create(mBus, busy);
    bus().settle();
    EXPECT_EQ(watch(*download("busy")), -426);
}

TEST_F(RemoteDriveDownload, AServerThatNobodyKnowsIsToldAsADeadLink) { EXPECT_EQ(watch(*download("nobody")), -203); }

TEST_F(RemoteDriveDownload, AServerThatHangsEndsTheWatchAfterAMinute) {
    bus().stopNode("server");
    const auto transfer = download();
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    position(*transfer);
    elapseOnQueue(59750);
    EXPECT_EQ(transfer->getError().errorCode(), 0);
    elapseOnQueue(250);
    EXPECT_EQ(transfer->getError().errorCode(), -202);
    EXPECT_TRUE(mLog.has(2, "remote download fail! errcode:-202"));
    bus().resumeNode("server");
}

TEST_F(RemoteDriveDownload, AClientWithoutALinkFails) {
    const auto alone = makeClient("alone", "");
    const auto transfer = std::make_shared<RemoteDownload>(alone, mVersion, "server");
    EXPECT_EQ(transfer->start({}).errorCode(), -1);
    EXPECT_EQ(transfer->getError().errorCode(), -1);
}
