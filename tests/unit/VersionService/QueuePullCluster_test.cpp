// Packages pulled by one node of a cluster from the store of another.
#include "CatalogueEntries.h"
#include "FileText.h"
#include "GetConnectionByMaster.h"
#include "MQDownload.h"
#include "OpenFiles.h"
#include "PackageContents.h"
#include "Public/Base/File.h"
#include "RequestFixture.h"
#include "UpdateCloud.h"

using namespace Tarnwick::OrvUpdate;
using support::eventually;
using support::Received;

namespace {

constexpr size_t kChunk = 1048576;

/// The node "server" holds packages; "puller", "client" (of server) and "guest" (of home) want them.
class PullCluster : public RequestFixture {
protected:
    PullCluster() { startAt(*mRequest); }

    /// A sound package of exactly so many bytes in the server's store. @return its bytes
    std::string addPackage(size_t size) {
        const std::string path = mStore.put("kept/2.0.exe", "2.0");
        const size_t packed = std::filesystem::file_size(path);
        if (size < packed) throw std::runtime_error("no package is that small");
        support::appendBytes(path, support::noise(size - packed, 7));
        support::claimAllBytes(path);
        addEntry(path);
        return support::readText(path).value();
    }
    void addEntry(const std::string& path) {
        const auto added = support::entry("2.0", StoragePosition_Local);
        added->setLocalFileName(path);
        mRequest->addVersion(added);
    }
    /// What a puller knows of the server's version.
    std::shared_ptr<OrvVersion> wanted() { return wantedAt(mTarget.path()); }
    std::shared_ptr<OrvVersion> wantedAt(const std::string& target) {
        auto version = std::make_shared<OrvVersion>(mWorker, target, std::string());
        JsonValue document = support::entry("2.0")->buildVersionInfo();
        document["serverid"] = std::string("server");
        EXPECT_FALSE(version->parseVersion(document));
        return version;
    }
    /// @return whether it called back within the patience of a test
    static bool pull(const std::shared_ptr<IDownload>& download) {
        const Received<int> ends;
        EXPECT_TRUE(std::dynamic_pointer_cast<MQDownload>(download));
        EXPECT_EQ(download->start([ends] { ends.add(1); }).errorCode(), 0);
        return ends.waitFor();
    }
    void expectArrived(OrvVersion& version, IDownload& download, const std::string& package) {
        float progress = 0;
        download.getProgress(progress);
        EXPECT_TRUE(download.finish());
        EXPECT_EQ(download.getError().errorCode(), 0);
        EXPECT_EQ(progress, 1.0F);
        EXPECT_TRUE(support::readText(version.getPackageFile()) == package);
    }
    std::shared_ptr<IDownload> transferOf(OrvVersion& version, const std::shared_ptr<VersionRequest>& request) {
        return version.getDownload(std::shared_ptr<IVersionRequest>(request));
    }

    support::TempDir mTarget;
    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQSystemServer> mPullerNode = makeServer("puller");
    std::shared_ptr<VersionRequest> mRequest = makeRequest(mServer);
    std::shared_ptr<VersionRequest> mPuller = makeRequest(mPullerNode);
};

class PulledSize : public PullCluster, public testing::WithParamInterface<size_t> {};

}  // namespace

TEST_P(PulledSize, ArrivesByteForByteAndPassesTheStoresTest) {
    const std::string package = addPackage(GetParam());
    ASSERT_EQ(package.size(), GetParam());
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    ASSERT_TRUE(pull(download));
    expectArrived(*version, *download, package);
    EXPECT_TRUE(VersionRequest::isInvalidPakcage(version->getPackageFile()));
}

INSTANTIATE_TEST_SUITE_P(Bytes, PulledSize,
                         testing::Values(kChunk - 1, kChunk, kChunk + 1, 2 * kChunk - 1, 2 * kChunk, 3 * kChunk + 777,
                                         8 * kChunk),
                         [](const auto& size) { return std::to_string(size.param); });

TEST_F(PullCluster, RealPackageOfAFewKilobytesArrives) {
    addEntry(mStore.put("kept/2.0.exe", "2.0"));
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    ASSERT_TRUE(pull(download));
    expectArrived(*version, *download, support::readText(mStore.path("kept/2.0.exe")).value());
    EXPECT_TRUE(VersionRequest::isInvalidPakcage(version->getPackageFile()));
}

TEST_F(PullCluster, FileOfOneByteArrivesAndIsNoPackage) {
    addEntry(mStore.putText("kept/2.0.exe", "x"));
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    ASSERT_TRUE(pull(download));
    expectArrived(*version, *download, "x");
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(version->getPackageFile()));
}

TEST_F(PullCluster, EmptyFileIsAskedForUntilCancel) {
    addEntry(mStore.putText("kept/2.0.exe", ""));
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    std::atomic<int> asked{0};
    mServer->subscribe("topic_upgrade_downloadversion", &asked,
                       [&asked](const std::shared_ptr<MQMessage>&) -> std::shared_ptr<MQMessage> {
                           ++asked;
                           return nullptr;
                       },
                       {});
    const Received<int> ends;
    ASSERT_EQ(download->start([ends] { ends.add(1); }).errorCode(), 0);
    EXPECT_TRUE(eventually([&] { return asked > 100; }));
    EXPECT_EQ(download->cancel().errorCode(), 0);
    mServer->unsubcribe(&asked);
    EXPECT_EQ(ends.count(), 0U);
    EXPECT_FALSE(download->finish());
    EXPECT_FALSE(support::readText(version->getPackageFile()));
}

TEST_F(PullCluster, ArrivedPackageIsFoundByTheNextTransfer) {
    addPackage(kChunk + 1);
    const auto version = wanted();
    ASSERT_TRUE(pull(transferOf(*version, mPuller)));
    version->resetDownload();
    EXPECT_FALSE(std::dynamic_pointer_cast<MQDownload>(transferOf(*version, mPuller)));
}

TEST_F(PullCluster, LeavesNoFileOpenAtEitherEnd) {
    addPackage(kChunk);
    const auto version = wanted();
    ASSERT_TRUE(pull(transferOf(*version, mPuller)));
    EXPECT_FALSE(support::isOpenHere(version->getPackageFile()));
    EXPECT_FALSE(support::isOpenHere(mStore.path("kept/2.0.exe")));
}

// Ways to the peer

TEST_F(PullCluster, ClientPullsFromItsServer) {
    const std::string package = addPackage(2 * kChunk + 1);
    const auto request = makeRequest(makeClient());
    const auto version = wanted();
    const auto download = transferOf(*version, request);
    ASSERT_TRUE(pull(download));
    expectArrived(*version, *download, package);
}

TEST_F(PullCluster, ClientPullsFromAnotherServerThroughItsOwn) {
    const std::string package = addPackage(2 * kChunk + 1);
    const auto home = makeServer("home");
    const auto homeRequest = makeRequest(home);
    startAt(*homeRequest);
    const auto request = makeRequest(makeClient("guest", "home"));
    const auto version = wanted();
    const auto download = transferOf(*version, request);
    ASSERT_TRUE(pull(download));
    expectArrived(*version, *download, package);
}

TEST_F(PullCluster, MasterPassesThePullOnWhereThereIsNoDirectConnection) {
    const std::string package = addPackage(2 * kChunk + 1);
    const auto master = makeServer("a master");
    const auto masterRequest = makeRequest(master);
    startAt(*masterRequest);
    ASSERT_TRUE(eventually([&] { return mPullerNode->masterServerId() == "a master"; }));
    const std::shared_ptr<IGetConnection> provider = std::make_shared<support::GetConnectionByMaster>(mPullerNode);
    const auto version = wanted();
    const auto download = version->getDownload(provider);
    ASSERT_TRUE(pull(download));
    expectArrived(*version, *download, package);
}

TEST_F(PullCluster, SeveralPullersGetTheirPackagesAtOnce) {
    const std::string package = addPackage(4 * kChunk + 1);
    const Received<int> ends;
    std::vector<std::unique_ptr<support::TempDir>> targets;
    std::vector<std::shared_ptr<OrvVersion>> versions;
    for (int i = 0; i < 4; ++i) {
        targets.push_back(std::make_unique<support::TempDir>());
        versions.push_back(wantedAt(targets.back()->path()));
        transferOf(*versions.back(), mPuller)->start([ends] { ends.add(1); });
    }
    ASSERT_TRUE(ends.waitFor(4));
    for (const auto& version : versions) expectArrived(*version, *transferOf(*version, mPuller), package);
}

// Failures on the way

TEST_F(PullCluster, UnknownVersionEndsThePullWithMinus416) {
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    ASSERT_TRUE(pull(download));
    EXPECT_EQ(download->getError().errorCode(), -416);
    EXPECT_FALSE(download->finish());
    EXPECT_FALSE(support::readText(version->getPackageFile()));
}

TEST_F(PullCluster, NodeWithoutAServiceEndsThePull) {
    addPackage(kChunk);
    mRequest->stop();
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    ASSERT_TRUE(pull(download));
    EXPECT_EQ(download->getError().errorCode(), -2);
}

TEST_F(PullCluster, PullerThatStopsPullingLeavesItsShortFile) {
    addPackage(8 * kChunk);
    auto version = wanted();
    const std::string path = version->getPackageFile();
    auto download = transferOf(*version, mPuller);
    download->start({});
    ASSERT_TRUE(eventually([&] { return Public::Base::File::access(path, Public::Base::AccessMode_Exists); }));
    const std::weak_ptr<IDownload> gone = download;
    download.reset();
    version.reset();
    EXPECT_TRUE(eventually([&] { return gone.expired(); }));
    EXPECT_TRUE(eventually([&] { return !support::isOpenHere(path); }));
    EXPECT_TRUE(support::readText(path));
}

TEST_F(PullCluster, CancelledPullLeavesNoFile) {
    addPackage(8 * kChunk);
    const auto version = wanted();
    const std::string path = version->getPackageFile();
    const auto download = transferOf(*version, mPuller);
    download->start({});
    ASSERT_TRUE(eventually([&] { return Public::Base::File::access(path, Public::Base::AccessMode_Exists); }));
    download->cancel();
    EXPECT_FALSE(support::readText(path));
    EXPECT_FALSE(support::isOpenHere(path));
}

// A package that the peer must fetch first

TEST_F(PullCluster, WaitsForThePeerToFetchFromTheCloud) {
    const std::string package = support::readText(support::PackageStore().put("p.exe", "2.0")).value();
    support::HttpFileServer cloud;
    cloud.serve("/p.exe", package);
    cloud.hold("/p.exe");
    const auto offered = std::make_shared<OrvVersion>(mWorker, mStore.path(), std::string());
    JsonValue document;
    document["softversion"] = std::string("2.0");
    document["description"] = std::string();
    document["url"] = cloud.url("/p.exe");
    ASSERT_FALSE(offered->parseVersionFromHttp(document));
    mRequest->addVersion(offered);

    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    const Received<int> ends;
    ASSERT_EQ(download->start([ends] { ends.add(1); }).errorCode(), 0);
    ASSERT_TRUE(cloud.waitForHeld("/p.exe"));
    EXPECT_EQ(ends.count(), 0U);
    EXPECT_FALSE(support::readText(version->getPackageFile()));
    cloud.release("/p.exe");
    ASSERT_TRUE(ends.waitFor());
    expectArrived(*version, *download, package);
    EXPECT_EQ(cloud.requests().size(), 1U);
}

TEST_F(PullCluster, FailsWhenThePeersFetchCannotBegin) {
    const auto offered = std::make_shared<OrvVersion>(mWorker, mStore.path(), std::string());
    JsonValue document;
    document["softversion"] = std::string("2.0");
    document["description"] = std::string();
    document["url"] = std::string("http://127.0.0.1/p.exe");
    ASSERT_FALSE(offered->parseVersionFromHttp(document));
    std::filesystem::create_directories(offered->getPackageFile() + "/stands in the way");
    mRequest->addVersion(offered);
    const auto version = wanted();
    const auto download = transferOf(*version, mPuller);
    ASSERT_TRUE(pull(download));
    EXPECT_EQ(download->getError().errorCode(), -602);
    EXPECT_FALSE(support::readText(version->getPackageFile()));
}
