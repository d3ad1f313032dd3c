// Packages on their way through a cluster of real nodes: bytes and catalogue at the far end.
#include "CatalogueEntries.h"
#include "FileText.h"
#include "HttpFileServer.h"
#include "OpenFiles.h"
#include "OrvDownload/ConnectionProviders.h"
#include "PostDownload.h"
#include "Public/Base/DetachedThread.h"
#include "RequestFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::eventually;
using support::Received;

namespace {

constexpr char kVersion[] = "2.0.0.0";

/// Reaches a peer through the master alone.
class MasterOnly : public IGetConnection {
public:
    explicit MasterOnly(std::shared_ptr<TWMQSystemServer> server) : mServer(std::move(server)) {}
    std::shared_ptr<MQConnection> getConnection() override { return nullptr; }
    std::shared_ptr<MQConnection> getMasterConnection() override {
        return mServer->connectionToMaster(mServer->masterServerId());
    }
    std::string getMasterId() override { return mServer->masterServerId(); }

private:
    std::shared_ptr<TWMQSystemServer> mServer;
};

/// The servers "alpha", which is the master, "beta" and "gamma", and a client of "beta"; each with a store of its own.
class PushCluster : public RequestFixture {
protected:
    PushCluster() {
        startNode(*mAlphaRequest, "alpha");
        startNode(*mBetaRequest, "beta");
        startNode(*mGammaRequest, "gamma");
        startNode(*mClientRequest, "client");
        support::PackageSpec spec;
        spec.version = kVersion;
        spec.compressor = "none";
        spec.files = {{"win64.sysbits", "x"},
                      {"Orv Client\\client.exe", support::programImage(64, "client", 1500000)},
                      {"Orv Server\\server.exe", support::programImage(64, "server", 1000000)}};
        support::makePackage(spec, mPackage);
        mBytes = *support::readText(mPackage);
    }
    ~PushCluster() override { Public::Base::settleDetached(); }

    std::string storeOf(const std::string& node) const { return mStore.path("store of " + node); }
    void startNode(VersionRequest& request, const std::string& node) {
        VersionRequestAccess::forgetStore();
        EXPECT_FALSE(startAt(request, "1.0.0.0", storeOf(node)));
    }
    bool clusterIsComplete() {
        return eventually([&] {
            return mClient->masterId() == "alpha" && sees(*mBeta, "alpha") && sees(*mBeta, "gamma") &&
                   sees(*mAlpha, "gamma") && mBeta->masterServerId() == "alpha";
        });
    }
    static bool sees(TWMQSystemServer& node, const std::string& other) {
        Tarnwick::MQ::TWServerInfo info;
        return !node.getServerInfo(other, info) && info.reachable && info.ready;
    }
    /// Pushes and waits for the callback.
    int push(const std::shared_ptr<VersionRequest>& from, const std::shared_ptr<IGetConnection>& connection,
             const std::string& to) {
        const auto transfer = std::make_shared<PostDownload>(from, mPackage, connection, VersionSource_Online, to);
        return run(*transfer);
    }
    int run(IDownload& transfer) {
        const Received<bool> ended;
        const int started = transfer.start([ended] { ended.add(true); }).errorCode();
        if (started != 0) return started;
        EXPECT_TRUE(ended.waitFor());
        EXPECT_EQ(transfer.finish(), !transfer.getError());
        return transfer.getError().errorCode();
    }
    /// The node holds the package, byte for byte, as a local one that the store's test accepts.
    void expectArrived(VersionRequest& request, const std::string& node, const std::string& source) {
        const std::string path = storeOf(node) + "/" + packageOf(kVersion, source);
        EXPECT_TRUE(support::readText(path) == mBytes);
        EXPECT_TRUE(VersionRequest::isInvalidPakcage(path));
        const VersionSet versions = request.getVersions();
        ASSERT_EQ(versions.size(), 1U);
        const auto entry = *versions.begin();
        EXPECT_EQ(entry->getVersion().toString(), kVersion);
        EXPECT_EQ(entry->getStoragePosition(), StoragePosition_Local);
        EXPECT_EQ(entry->getPackageFile(), path);
        EXPECT_EQ(support::timesOpenHere(mPackage), 0U);
    }

    std::string mPackage = mStore.path("package to send.exe");
    std::string mBytes;
    std::shared_ptr<TWMQSystemServer> mAlpha = makeServer("alpha");
    std::shared_ptr<TWMQSystemServer> mBeta = makeServer("beta");
    std::shared_ptr<TWMQSystemServer> mGamma = makeServer("gamma");
    std::shared_ptr<TWMQClient> mClient = makeClient("client", "beta");
    std::shared_ptr<VersionRequest> mAlphaRequest = makeRequest(mAlpha);
    std::shared_ptr<VersionRequest> mBetaRequest = makeRequest(mBeta);
    std::shared_ptr<VersionRequest> mGammaRequest = makeRequest(mGamma);
    std::shared_ptr<VersionRequest> mClientRequest = makeRequest(mClient);
};

}  // namespace

TEST_F(PushCluster, ClientUploadsToTheMasterThroughItsOwnServer) {
    ASSERT_TRUE(clusterIsComplete());
    const Received<std::string> outcomes;
    EXPECT_FALSE(mClientRequest->uploadVersion(mPackage, VersionSource_Manual,
                                               [outcomes](const std::string& masterId, const ErrorInfo& error) {
                                                   outcomes.add(masterId + " " + std::to_string(error.errorCode()));
                                               }));
    EXPECT_EQ(outcomes.first(), "alpha 0");
    expectArrived(*mAlphaRequest, "alpha", "Manual");
    EXPECT_TRUE(mBetaRequest->getVersions().empty());
}

TEST_F(PushCluster, UploaderKnowsThePackageWhenTheUploadEnds) {
    ASSERT_TRUE(clusterIsComplete());
    const Received<bool> known;
    EXPECT_FALSE(mClientRequest->uploadVersion(
        mPackage, VersionSource_Manual, [this, known](const std::string&, const ErrorInfo&) {
            const VersionSet versions = mClientRequest->getVersions();
            known.add(versions.size() == 1 && (*versions.begin())->getStoragePosition() == StoragePosition_Node &&
                      (*versions.begin())->getServerid() == "alpha");
        }));
    EXPECT_EQ(known.first(), true);
    Public::Base::settleDetached();
}

TEST_F(PushCluster, ServerPushesToAPeerDirectly) {
    ASSERT_TRUE(clusterIsComplete());
    EXPECT_EQ(push(mBetaRequest, std::make_shared<GetServerConnection>(mBeta, "gamma"), "gamma"), 0);
    expectArrived(*mGammaRequest, "gamma", "Online");
    EXPECT_TRUE(mAlphaRequest->getVersions().empty());
}

TEST_F(PushCluster, MasterForwardsAPushToAPeer) {
    ASSERT_TRUE(clusterIsComplete());
    EXPECT_EQ(push(mBetaRequest, std::make_shared<MasterOnly>(mBeta), "gamma"), 0);
    expectArrived(*mGammaRequest, "gamma", "Online");
    EXPECT_TRUE(mAlphaRequest->getVersions().empty());
}

TEST_F(PushCluster, ClientPushesToAPeerOfItsServer) {
    ASSERT_TRUE(clusterIsComplete());
    EXPECT_EQ(push(mClientRequest, std::make_shared<GetClientConnection>(mClient), "gamma"), 0);
    expectArrived(*mGammaRequest, "gamma", "Online");
}

TEST_F(PushCluster, SecondPushReplacesThePackageOfTheFirst) {
    ASSERT_TRUE(clusterIsComplete());
    support::writeText(storeOf("gamma") + "/" + packageOf(kVersion), std::string(2 * mBytes.size(), 'o'));
    mGammaRequest->addVersion(support::entry(kVersion, 1));
    EXPECT_EQ(push(mBetaRequest, std::make_shared<GetServerConnection>(mBeta, "gamma"), "gamma"), 0);
    expectArrived(*mGammaRequest, "gamma", "Online");
}

TEST_F(PushCluster, ManyPushesToOneNodeAtOnceAllArrive) {
    ASSERT_TRUE(clusterIsComplete());
    const Received<int> codes;
    std::vector<std::shared_ptr<PostDownload>> pushes;
    const std::vector<std::shared_ptr<VersionRequest>> senders{mAlphaRequest, mBetaRequest, mClientRequest};
    const std::vector<std::shared_ptr<IGetConnection>> links{std::make_shared<GetServerConnection>(mAlpha, "gamma"),
                                                             std::make_shared<GetServerConnection>(mBeta, "gamma"),
                                                             std::make_shared<GetClientConnection>(mClient)};
    for (size_t index = 0; index < senders.size(); ++index) {
        pushes.push_back(
            std::make_shared<PostDownload>(senders[index], mPackage, links[index], VersionSource_Online, "gamma"));
        EXPECT_FALSE(pushes.back()->start([codes, push = std::weak_ptr(pushes.back())] {
            const auto ended = push.lock();
            codes.add(ended ? ended->getError().errorCode() : 1);
        }));
    }
    ASSERT_TRUE(codes.waitFor(senders.size()));
    EXPECT_EQ(codes.values(), (std::vector<int>{0, 0, 0}));
    expectArrived(*mGammaRequest, "gamma", "Online");
}

TEST_F(PushCluster, PackageOfTheCloudPassesThroughTheClientToAPeer) {
    ASSERT_TRUE(clusterIsComplete());
    support::HttpFileServer cloud;
    cloud.serve("/p.exe", mBytes);
    const auto version = std::make_shared<OrvVersion>(mWorker, storeOf("client"), std::string());
    JsonValue document;
    document["softversion"] = kVersion;
    document["description"] = "";
    document["url"] = cloud.url("/p.exe");
    ASSERT_FALSE(version->parseVersionFromHttp(document));
    const auto transfer = IDownload::createRemoteDownload(mClientRequest, version, "gamma");
    ASSERT_NE(transfer, nullptr);
    EXPECT_EQ(run(*transfer), 0);
    EXPECT_TRUE(transfer->finish());
    EXPECT_TRUE(support::readText(storeOf("client") + "/" + packageOf(kVersion)) == mBytes);
    expectArrived(*mGammaRequest, "gamma", "Online");
}

TEST_F(PushCluster, PackageThatTheCloudDoesNotHaveCallsBackTwice) {
    ASSERT_TRUE(clusterIsComplete());
    support::HttpFileServer cloud;
    const auto version = std::make_shared<OrvVersion>(mWorker, storeOf("client"), std::string());
    JsonValue document;
    document["softversion"] = kVersion;
    document["description"] = "";
    document["url"] = cloud.url("/none.exe");
    ASSERT_FALSE(version->parseVersionFromHttp(document));
    const auto transfer = IDownload::createRemoteDownload(mClientRequest, version, "gamma");
    ASSERT_NE(transfer, nullptr);
    const Received<int> errors;
    EXPECT_FALSE(transfer->start([errors, weak = std::weak_ptr(transfer)] {
        const auto ended = weak.lock();
        errors.add(ended ? ended->getError().errorCode() : 1);
    }));
    ASSERT_TRUE(errors.waitFor(2));
    EXPECT_EQ(errors.values(), (std::vector<int>{-1, -1}));
    EXPECT_FALSE(transfer->finish());
    EXPECT_TRUE(mGammaRequest->getVersions().empty());
}

TEST_F(PushCluster, PushToANodeThatNobodyKnowsFails) {
    ASSERT_TRUE(clusterIsComplete());
    EXPECT_EQ(push(mClientRequest, std::make_shared<GetClientConnection>(mClient), "nobody"), -203);
}

TEST_F(PushCluster, PushToANodeThatHasNoStoreFailsAndWritesNothing) {
    ASSERT_TRUE(clusterIsComplete());
    mGammaRequest->stop();
    VersionRequestAccess::forgetStore();
    ASSERT_FALSE(startAt(*mGammaRequest, "1.0.0.0", ""));
    EXPECT_EQ(push(mBetaRequest, std::make_shared<GetServerConnection>(mBeta, "gamma"), "gamma"), -1);
    EXPECT_TRUE(mGammaRequest->getVersions().empty());
}

TEST_F(PushCluster, NodeThatGoesInTheMiddleEndsThePush) {
    ASSERT_TRUE(clusterIsComplete());
    mGammaRequest->stop();
    int owner = 0;
    mGamma->subscribe("topic_upgrade_postversion", &owner,
                      [this](const std::shared_ptr<MQMessage>&) -> std::shared_ptr<MQMessage> {
                          mGammaRequest.reset();
                          mGamma.reset();
                          return nullptr;
                      },
                      {});
    EXPECT_EQ(push(mBetaRequest, std::make_shared<GetServerConnection>(mBeta, "gamma"), "gamma"), -203);
}
