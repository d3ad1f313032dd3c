// Which transfer a version hands out.
#include "FakeQueueNodes.h"
#include "ForeignRequest.h"
#include "HttpDownload.h"
#include "IGetConnection.h"
#include "LocalDownload.h"
#include "PackageStore.h"
#include "VersionRequest.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

const std::shared_ptr<IGetConnection> sNoConnection;

/// Reaches nobody.
struct DeadConnection : IGetConnection {
    std::shared_ptr<Tarnwick::MQ::MQConnection> getConnection() override { return nullptr; }
    std::shared_ptr<Tarnwick::MQ::MQConnection> getMasterConnection() override { return nullptr; }
    std::string getMasterId() override { return {}; }
};

class TransferSelection : public testing::Test {
protected:
    std::shared_ptr<OrvVersion> makeVersion(StoragePosition position, const std::string& serverId = "") const {
        auto version = std::make_shared<OrvVersion>(nullptr, mStore.path(), serverId);
        version->setVersion("1.11.0.8");
        version->setStoragePosition(position);
        return version;
    }
    /// An offer of the cloud for a client.
    std::shared_ptr<OrvVersion> cloudVersion(const std::string& url = "http://127.0.0.1/p.exe") const {
        auto version = makeVersion(StoragePosition_None);
        JsonValue document;
        document["softversion"] = "1.11.0.8";
        document["description"] = "";
        document["url"] = url;
        EXPECT_FALSE(version->parseVersionFromHttp(document));
        version->setVersionType(VersionType_Client);
        return version;
    }
    static std::shared_ptr<LocalDownload> local(const std::shared_ptr<IDownload>& transfer) {
        return std::dynamic_pointer_cast<LocalDownload>(transfer);
    }
    static bool isHttp(const std::shared_ptr<IDownload>& transfer) {
        return std::dynamic_pointer_cast<HttpDownload>(transfer) != nullptr;
    }
    static std::string fileOf(const std::shared_ptr<IDownload>& transfer) {
        std::string fileName;
        if (transfer) transfer->getFileName(fileName);
        return fileName;
    }

    support::PackageStore mStore;
    std::shared_ptr<IGetConnection> mConnection = std::make_shared<DeadConnection>();
};

const std::string sArrived = "Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe";

}  // namespace

TEST_F(TransferSelection, TestsTheFileOfALocalVersion) {
    const auto version = makeVersion(StoragePosition_Local);
    version->setLocalFileName(mStore.path("p.exe"));
    const auto transfer = version->getDownload(sNoConnection);
    ASSERT_TRUE(local(transfer));
    EXPECT_EQ(fileOf(transfer), mStore.path("p.exe"));
}

TEST_F(TransferSelection, TestsTheComputedFileOfALocalVersionWithoutAFileName) {
    const auto transfer = makeVersion(StoragePosition_Local)->getDownload(sNoConnection);
    ASSERT_TRUE(local(transfer));
    EXPECT_EQ(fileOf(transfer), mStore.path("Online/Windows x64 All/1.11.0.8/1.11.0.8.exe"));
}

TEST_F(TransferSelection, DoesNotScanTheStoreForALocalVersion) {
    mStore.put(sArrived);
    const auto version = makeVersion(StoragePosition_Local);
    EXPECT_EQ(fileOf(version->getDownload(sNoConnection)), mStore.path("Online/Windows x64 All/1.11.0.8/1.11.0.8.exe"));
}

TEST_F(TransferSelection, FetchesACloudVersionByHttp) {
    const auto version = cloudVersion();
    const auto transfer = version->getDownload(sNoConnection);
    ASSERT_TRUE(isHttp(transfer));
    EXPECT_EQ(fileOf(transfer), version->getPackageFile());
}

TEST_F(TransferSelection, HasNothingForACloudVersionWithoutUrl) {
    EXPECT_EQ(cloudVersion("")->getDownload(sNoConnection), nullptr);
    EXPECT_EQ(cloudVersion("")->getDownload(mConnection), nullptr);
}

TEST_F(TransferSelection, TakesACloudPackageThatHasArrivedAlready) {
    const std::string path = mStore.put(sArrived);
    const auto version = cloudVersion();
    const auto transfer = version->getDownload(sNoConnection);
    ASSERT_TRUE(local(transfer));
    EXPECT_EQ(fileOf(transfer), path);
    EXPECT_EQ(version->getPackageFile(), path);
}

TEST_F(TransferSelection, TakesAnArrivedPackageUnderAnyNameAndRole) {
    const std::string path = mStore.put("Online/Windows x64 Server/any/other.exe");
    const auto version = cloudVersion();
    EXPECT_TRUE(local(version->getDownload(sNoConnection)));
    EXPECT_EQ(version->getPackageFile(), path);
}

TEST_F(TransferSelection, TakesAnArrivedPackageAlsoWithoutUrl) {
    mStore.put(sArrived);
    EXPECT_TRUE(local(cloudVersion("")->getDownload(sNoConnection)));
}

TEST_F(TransferSelection, KeepsTheArrivedTransferUsableForItsCallers) {
    mStore.put(sArrived);
    const auto transfer = cloudVersion()->getDownload(sNoConnection);  // the version itself is gone
    ASSERT_TRUE(transfer);
    int calls = 0;
    EXPECT_EQ(transfer->start([&] { ++calls; }).errorCode(), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(transfer->finish());
}

struct NotTheSame {
    std::string name;
    std::string path;
    std::string version;
};

class TransferSelectionOther : public TransferSelection, public testing::WithParamInterface<NotTheSame> {};

TEST_P(TransferSelectionOther, IsNoArrivedCopy) {
    mStore.put(GetParam().path, GetParam().version);
    const auto version = cloudVersion();
    EXPECT_TRUE(isHttp(version->getDownload(sNoConnection)));
    EXPECT_EQ(version->getPackageFile(), mStore.path(sArrived));
}

INSTANTIATE_TEST_SUITE_P(
    Packages, TransferSelectionOther,
    testing::Values(NotTheSame{"OtherVersion", "Online/Windows x64 Client/1.11.0.8/2.exe", "1.11.0.9"},
                    NotTheSame{"OtherSource", "Manual/Windows x64 Client/1.11.0.8/1.11.0.8.exe", "1.11.0.8"},
                    NotTheSame{"OtherBits", "Online/Windows x86 Client/1.11.0.8/1.11.0.8.exe", "1.11.0.8"},
                    NotTheSame{"OtherSystem", "Online/Linux x64 Client/1.11.0.8/1.11.0.8.exe", "1.11.0.8"}),
    [](const auto& test) { return test.param.name; });

TEST_F(TransferSelection, FetchesAgainWhatArrivedDamaged) {
    support::cutBytes(mStore.put(sArrived), 1);
    EXPECT_TRUE(isHttp(cloudVersion()->getDownload(sNoConnection)));
}

TEST_F(TransferSelection, TakesTheArrivedPackageOfANodesVersion) {
    const std::string path = mStore.put(sArrived);
    const auto version = makeVersion(StoragePosition_Node);
    EXPECT_TRUE(local(version->getDownload(sNoConnection)));
    EXPECT_EQ(version->getPackageFile(), path);
}

TEST_F(TransferSelection, HasNothingForANodesVersionWithoutServerId) {
    EXPECT_EQ(makeVersion(StoragePosition_Node)->getDownload(mConnection), nullptr);
}

TEST_F(TransferSelection, HasNothingForANodesVersionWithoutConnection) {
    EXPECT_EQ(makeVersion(StoragePosition_Node, "S2")->getDownload(sNoConnection), nullptr);
}

TEST_F(TransferSelection, HasNothingForAnyOtherPosition) {
    for (const int position : {0, 4, -1}) {
        const auto version = makeVersion(static_cast<StoragePosition>(position), "S2");
        EXPECT_EQ(version->getDownload(mConnection), nullptr) << position;
    }
}

TEST_F(TransferSelection, TakesTheArrivedPackageAtAnyOtherPosition) {
    mStore.put(sArrived);
    EXPECT_TRUE(local(makeVersion(StoragePosition_None)->getDownload(sNoConnection)));
}

TEST_F(TransferSelection, HasNothingWithoutAStore) {
    const auto version = std::make_shared<OrvVersion>(nullptr);
    version->setVersion("1.11.0.8");
    version->setStoragePosition(StoragePosition_Node);
    EXPECT_EQ(version->getDownload(sNoConnection), nullptr);
}

TEST_F(TransferSelection, LooksAgainAfterItHadNothing) {
    const auto version = cloudVersion("");
    EXPECT_EQ(version->getDownload(sNoConnection), nullptr);
    mStore.put(sArrived);
    EXPECT_TRUE(local(version->getDownload(sNoConnection)));
}

// One transfer at a time

TEST_F(TransferSelection, HandsOutTheSameTransferAgain) {
    const auto version = cloudVersion();
    const auto transfer = version->getDownload(sNoConnection);
    EXPECT_EQ(version->getDownload(mConnection), transfer);
    version->setStoragePosition(StoragePosition_Local);
    EXPECT_EQ(version->getDownload(sNoConnection), transfer);
    version->setStoragePosition(StoragePosition_None);
    EXPECT_EQ(version->getDownload(sNoConnection), transfer);
    mStore.put(sArrived);
    EXPECT_EQ(version->getDownload(sNoConnection), transfer);
}

TEST_F(TransferSelection, ChoosesAfreshAfterAReset) {
    const std::string path = mStore.put(sArrived);
    const auto version = cloudVersion();
    const auto first = version->getDownload(sNoConnection);
    ASSERT_TRUE(local(first));
    std::filesystem::remove(path);
    version->resetDownload();
    EXPECT_TRUE(isHttp(version->getDownload(sNoConnection)));
    EXPECT_EQ(fileOf(first), path);
}

TEST_F(TransferSelection, ResetForgetsTheFoundFile) {
    mStore.put("Online/Windows x64 All/1.11.0.8/found.exe");
    const auto version = cloudVersion();
    version->getDownload(sNoConnection);
    EXPECT_EQ(version->getPackageFile(), mStore.path("Online/Windows x64 All/1.11.0.8/found.exe"));
    version->resetDownload();
    EXPECT_EQ(version->getPackageFile(), mStore.path(sArrived));
}

TEST_F(TransferSelection, ResetReleasesTheTransfer) {
    const auto version = cloudVersion();
    const std::weak_ptr<IDownload> transfer = version->getDownload(sNoConnection);
    EXPECT_FALSE(transfer.expired());
    version->resetDownload();
    EXPECT_TRUE(transfer.expired());
}

TEST_F(TransferSelection, ResetDoesNothingToAVersionWithoutTransfer) {
    const auto version = cloudVersion("");
    version->resetDownload();
    version->resetDownload();
    EXPECT_EQ(version->getDownload(sNoConnection), nullptr);
}

TEST_F(TransferSelection, VersionAndTransferDoNotKeepEachOther) {
    auto version = cloudVersion();
    const std::weak_ptr<OrvVersion> weakVersion = version;
    const std::weak_ptr<IDownload> weakTransfer = version->getDownload(sNoConnection);
    EXPECT_FALSE(weakTransfer.expired());
    version.reset();
    EXPECT_TRUE(weakVersion.expired());
    EXPECT_TRUE(weakTransfer.expired());
}

TEST_F(TransferSelection, ThrowsForACloudVersionThatNoSharedPointerOwns) {
    OrvVersion version(nullptr, mStore.path(), "");
    JsonValue document;
    document["softversion"] = "1.11.0.8";
    document["description"] = "";
    document["url"] = "http://127.0.0.1/p.exe";
    ASSERT_FALSE(version.parseVersionFromHttp(document));
    EXPECT_THROW(version.getDownload(sNoConnection), std::bad_weak_ptr);
}

TEST_F(TransferSelection, GivesOneTransferToAllThreads) {
    mStore.put(sArrived);
    const auto version = cloudVersion();
    std::array<std::shared_ptr<IDownload>, 4> transfers;
    std::vector<std::thread> threads;
    for (auto& transfer : transfers) threads.emplace_back([&] { transfer = version->getDownload(sNoConnection); });
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(transfers[0]);
    for (const auto& transfer : transfers) EXPECT_EQ(transfer, transfers[0]);
}

TEST_F(TransferSelection, MayBeResetWhileOthersAsk) {
    const auto version = cloudVersion();
    std::atomic<bool> over{false};
    std::thread resetting([&] {
        while (!over) version->resetDownload();
    });
    bool always = true;
    for (int round = 0; round < 200; ++round) always = always && isHttp(version->getDownload(sNoConnection));
    over = true;
    resetting.join();
    EXPECT_TRUE(always);
}

// By way of a request

namespace {

std::shared_ptr<IVersionRequest> requestOver(const std::shared_ptr<TWMQClient>& client) {
    return IVersionRequest::allocVersionRequest(nullptr, client, VersionType_Client);
}

std::shared_ptr<IVersionRequest> requestOver(const std::shared_ptr<TWMQSystemServer>& server) {
    return IVersionRequest::allocVersionRequest(nullptr, server, VersionType_Server);
}

}  // namespace

TEST_F(TransferSelection, HasNothingForANullRequest) {
    const auto version = makeVersion(StoragePosition_Local);
    EXPECT_EQ(version->getDownload(std::shared_ptr<IVersionRequest>()), nullptr);
}

TEST_F(TransferSelection, HasNothingForARequestOfAnotherClass) {
    const std::shared_ptr<IVersionRequest> request = std::make_shared<ForeignRequest>();
    EXPECT_EQ(makeVersion(StoragePosition_Local)->getDownload(request), nullptr);
    EXPECT_EQ(cloudVersion()->getDownload(request), nullptr);
}

TEST_F(TransferSelection, ServesLocalAndCloudVersionsForARequestWithoutQueue) {
    const auto request = requestOver(std::shared_ptr<TWMQClient>());
    EXPECT_TRUE(local(makeVersion(StoragePosition_Local)->getDownload(request)));
    EXPECT_TRUE(isHttp(cloudVersion()->getDownload(request)));
    EXPECT_EQ(makeVersion(StoragePosition_Node, "S2")->getDownload(request), nullptr);
}

TEST_F(TransferSelection, ServesLocalAndCloudVersionsForARequestOfAClient) {
    const auto request = requestOver(std::make_shared<support::FakeClient>());
    EXPECT_TRUE(local(makeVersion(StoragePosition_Local)->getDownload(request)));
    EXPECT_TRUE(isHttp(cloudVersion()->getDownload(request)));
}

TEST_F(TransferSelection, ServesLocalAndCloudVersionsForARequestOfAServer) {
    const auto request = requestOver(std::make_shared<support::FakeSystemServer>());
    EXPECT_TRUE(local(makeVersion(StoragePosition_Local)->getDownload(request)));
    EXPECT_TRUE(isHttp(cloudVersion()->getDownload(request)));
}

TEST_F(TransferSelection, GivesTheSameTransferForARequestAndForAConnection) {
    const auto version = cloudVersion();
    const auto transfer = version->getDownload(requestOver(std::shared_ptr<TWMQClient>()));
    EXPECT_TRUE(transfer);
    EXPECT_EQ(version->getDownload(mConnection), transfer);
}
