// Which transfer brings a version onto a peer.
#include "CatalogueEntries.h"
#include "ForeignRequest.h"
#include "ForeignVersion.h"
#include "ForwardDownload.h"
#include "RemoteDownload.h"
#include "RequestFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

class RemoteTransfer : public RequestFixture {
protected:
    /// A version of the cloud, with that server's id.
    std::shared_ptr<OrvVersion> cloudVersion(const std::string& serverId = {},
                                             const std::string& url = "http://cloud.invalid/p.exe") {
        const auto version = std::make_shared<OrvVersion>(mWorker, mStore.path(), serverId);
        JsonValue document;
        document["softversion"] = "1.11.0.8";
        document["description"] = "";
        document["url"] = url;
        EXPECT_FALSE(version->parseVersionFromHttp(document));
        return version;
    }
    std::shared_ptr<IDownload> create(const std::shared_ptr<IVersion>& version) {
        return IDownload::createRemoteDownload(mRequest, version, "peer");
    }

    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQClient> mClient = makeClient();
    std::shared_ptr<VersionRequest> mRequest = makeRequest(mClient);
};

bool isRemote(const std::shared_ptr<IDownload>& transfer) {
    return std::dynamic_pointer_cast<RemoteDownload>(transfer) != nullptr;
}

bool isForward(const std::shared_ptr<IDownload>& transfer) {
    return std::dynamic_pointer_cast<ForwardDownload>(transfer) != nullptr;
}

}  // namespace

TEST_F(RemoteTransfer, CloudVersionThatNoServerHoldsPassesThroughThisProgram) {
    EXPECT_TRUE(isForward(create(cloudVersion())));
}

TEST_F(RemoteTransfer, CloudVersionOfAServerIsFetchedByThePeer) { EXPECT_TRUE(isRemote(create(cloudVersion("far")))); }

TEST_F(RemoteTransfer, VersionsOfOtherPlacesAreFetchedByThePeer) {
    for (const int position : {0, 1, 3, 7}) {
        const auto version = cloudVersion();
        version->setStoragePosition(static_cast<StoragePosition>(position));
        EXPECT_TRUE(isRemote(create(version))) << position;
    }
}

TEST_F(RemoteTransfer, ServerIdIsAskedOfTheProviderToo) {
    const auto version = std::make_shared<OrvVersion>(mWorker, mStore.path(), std::shared_ptr<IGetServerId>(mRequest));
    version->setStoragePosition(StoragePosition_Cloud);
    EXPECT_TRUE(isRemote(create(version)));
}

TEST_F(RemoteTransfer, NeedsARequestOfTheEngine) {
    EXPECT_EQ(IDownload::createRemoteDownload(nullptr, cloudVersion(), "peer"), nullptr);
    EXPECT_EQ(IDownload::createRemoteDownload(std::make_shared<ForeignRequest>(), cloudVersion(), "peer"), nullptr);
}

TEST_F(RemoteTransfer, NeedsAVersionOfTheEngine) {
    EXPECT_EQ(create(nullptr), nullptr);
    EXPECT_EQ(create(std::make_shared<support::ForeignVersion>("1.0")), nullptr);
}

TEST_F(RemoteTransfer, WorksOnlyInAClientOfTheQueue) {
    EXPECT_EQ(IDownload::createRemoteDownload(makeRequest(mServer), cloudVersion(), "peer"), nullptr);
    EXPECT_EQ(IDownload::createRemoteDownload(makeRequest(std::shared_ptr<TWMQClient>()), cloudVersion(), "peer"),
              nullptr);
}

TEST_F(RemoteTransfer, CloudVersionWithoutAnAddressHasNone) { EXPECT_EQ(create(cloudVersion("", "")), nullptr); }

TEST_F(RemoteTransfer, FileNameIsThatOfTheTransferFromTheCloudAndProgressThatOfThePush) {
    const auto version = cloudVersion();
    const auto transfer = create(version);
    std::string fileName;
    float progress = -1.0F;
    EXPECT_EQ(transfer->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, version->getPackageFile());
    EXPECT_EQ(transfer->getProgress(progress).errorCode(), 0);
    EXPECT_EQ(progress, 0.0F);
    EXPECT_FALSE(transfer->finish());
}

TEST_F(RemoteTransfer, PackageThatLiesOnThisDiskGivesATransferThatRefusesToStart) {
    fillStore({"1.11.0.8"});
    const auto transfer = create(cloudVersion());
    ASSERT_TRUE(isForward(transfer));
    EXPECT_EQ(transfer->start({}).errorCode(), -2);
    std::string fileName;
    EXPECT_EQ(transfer->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(std::filesystem::path(fileName), std::filesystem::path(mStore.path(packageOf("1.11.0.8"))));
}

TEST_F(RemoteTransfer, IsWithoutOwnerAfterTheHostLetsGo) {
    const std::weak_ptr<IDownload> transfer = create(cloudVersion());
    EXPECT_TRUE(transfer.expired());
}
