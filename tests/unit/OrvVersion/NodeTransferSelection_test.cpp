// The transfer of a version that a node holds.
#include "LocalDownload.h"
#include "MQDownload.h"
#include "PackageStore.h"
#include "ScriptedPeer.h"
#include "ServerIdSource.h"
#include "VersionRequest.h"

using namespace Tarnwick::OrvUpdate;
using support::ScriptedConnection;
using support::ScriptedProvider;

namespace {

const std::shared_ptr<IGetConnection> sNoConnection;

class NodeTransferSelection : public testing::Test {
protected:
    NodeTransferSelection() {
        const auto provider = std::make_shared<ScriptedProvider>();
        provider->direct = mPeer;
        mProvider = provider;
    }
    std::shared_ptr<OrvVersion> makeVersion(const std::string& serverId) const {
        return prepared(std::make_shared<OrvVersion>(nullptr, mStore.path(), serverId));
    }
    static std::shared_ptr<OrvVersion> prepared(const std::shared_ptr<OrvVersion>& version) {
        version->setVersion("1.11.0.8");
        version->setStoragePosition(StoragePosition_Node);
        return version;
    }
    static bool isPull(const std::shared_ptr<IDownload>& transfer) {
        return std::dynamic_pointer_cast<MQDownload>(transfer) != nullptr;
    }
    static std::shared_ptr<IDownload> transferOf(OrvVersion& version, const std::shared_ptr<VersionRequest>& request) {
        return version.getDownload(std::shared_ptr<IVersionRequest>(request));
    }

    support::PackageStore mStore;
    std::shared_ptr<ScriptedConnection> mPeer = std::make_shared<ScriptedConnection>();
    std::shared_ptr<IGetConnection> mProvider;
};

}  // namespace

TEST_F(NodeTransferSelection, PullsWithAServerIdAndAConnectionProvider) {
    const auto version = makeVersion("S2");
    const auto transfer = version->getDownload(mProvider);
    ASSERT_TRUE(isPull(transfer));
    std::string fileName;
    transfer->getFileName(fileName);
    EXPECT_EQ(fileName, version->getPackageFile());
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    EXPECT_EQ(mPeer->last().to, "S2");
}

TEST_F(NodeTransferSelection, PullsWithAProviderOfTheServerIdEvenIfItGivesNone) {
    const std::shared_ptr<IGetServerId> source = std::make_shared<support::ServerIdSource>("");
    const auto version = prepared(std::make_shared<OrvVersion>(nullptr, mStore.path(), source));
    EXPECT_TRUE(isPull(version->getDownload(mProvider)));
}

TEST_F(NodeTransferSelection, HasNothingWithoutServerIdOrWithoutProvider) {
    EXPECT_EQ(makeVersion("")->getDownload(mProvider), nullptr);
    EXPECT_EQ(makeVersion("S2")->getDownload(sNoConnection), nullptr);
}

TEST_F(NodeTransferSelection, AProviderThatReachesNobodyIsEnough) {
    const std::shared_ptr<IGetConnection> provider = std::make_shared<ScriptedProvider>();
    const auto version = makeVersion("S2");
    const auto transfer = version->getDownload(provider);
    ASSERT_TRUE(isPull(transfer));
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    EXPECT_EQ(transfer->getError().errorCode(), -200);
}

TEST_F(NodeTransferSelection, TakesThePackageThatHasArrivedAlready) {
    mStore.put("Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe");
    const auto transfer = makeVersion("S2")->getDownload(mProvider);
    EXPECT_TRUE(std::dynamic_pointer_cast<LocalDownload>(transfer));
}

TEST_F(NodeTransferSelection, HandsOutTheSamePullUntilItIsReset) {
    const auto version = makeVersion("S2");
    const auto transfer = version->getDownload(mProvider);
    EXPECT_EQ(version->getDownload(sNoConnection), transfer);
    version->resetDownload();
    EXPECT_EQ(version->getDownload(sNoConnection), nullptr);
    EXPECT_NE(version->getDownload(mProvider), transfer);
}

TEST_F(NodeTransferSelection, ThrowsForAVersionThatNoSharedPointerOwns) {
    OrvVersion version(nullptr, mStore.path(), std::string("S2"));
    version.setVersion("1.11.0.8");
    version.setStoragePosition(StoragePosition_Node);
    EXPECT_THROW(version.getDownload(mProvider), std::bad_weak_ptr);
}

// With a request

TEST_F(NodeTransferSelection, GoesOverTheClientsLink) {
    const auto client = std::make_shared<support::FakeClient>();
    client->link = mPeer;
    const auto request = std::make_shared<VersionRequest>(nullptr, client, VersionType_Client);
    const auto version = makeVersion("S2");
    const auto transfer = transferOf(*version, request);
    ASSERT_TRUE(isPull(transfer));
    transfer->start({});
    EXPECT_EQ(mPeer->last().to, "S2");
}

TEST_F(NodeTransferSelection, GoesOverTheServersConnectionToTheStoredServerId) {
    const auto server = std::make_shared<support::FakeSystemServer>();
    server->links["S2"] = mPeer;
    const auto request = std::make_shared<VersionRequest>(nullptr, server, VersionType_Server);
    const auto version = makeVersion("S2");
    const auto transfer = transferOf(*version, request);
    ASSERT_TRUE(isPull(transfer));
    transfer->start({});
    EXPECT_EQ(mPeer->last().to, "S2");
}

TEST_F(NodeTransferSelection, ServersConnectionDoesNotAskTheProviderOfTheServerId) {
    const auto server = std::make_shared<support::FakeSystemServer>();
    const auto request = std::make_shared<VersionRequest>(nullptr, server, VersionType_Server);
    const std::shared_ptr<IGetServerId> source = std::make_shared<support::ServerIdSource>("S2");
    const auto version = prepared(std::make_shared<OrvVersion>(nullptr, mStore.path(), source));
    transferOf(*version, request)->start({});
    ASSERT_EQ(server->asked.size(), 1U);
    EXPECT_EQ(server->asked[0].first, "");
}

TEST_F(NodeTransferSelection, HasNothingWithARequestOfNeitherClientNorServer) {
    const auto request =
        std::make_shared<VersionRequest>(nullptr, std::shared_ptr<TWMQSystemServer>(), VersionType_Server);
    const auto version = makeVersion("S2");
    EXPECT_EQ(transferOf(*version, request), nullptr);
    version->setStoragePosition(StoragePosition_Local);
    EXPECT_TRUE(transferOf(*version, request));
}
