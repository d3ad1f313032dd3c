// The push of a package between two nodes: what fails at the sender's disk and at the receiver's.
#include "FaultTest.h"
#include "FileText.h"
#include "OrvDownload/ConnectionProviders.h"
#include "PackageMaker.h"
#include "PostDownload.h"
#include "Public/Base/DetachedThread.h"
#include "Received.h"
#include "RequestAccess.h"

using namespace faults;
using namespace Tarnwick::OrvUpdate;
using Tarnwick::MQ::Bus;
using Tarnwick::MQ::NodeOptions;

namespace {

constexpr char kArrived[] = "store/Online/Windows x64 All/2.0.0.0/2.0.0.0.exe";
constexpr char kSent[] = "sent.exe";

/// A package of two chunks.
const std::string& packageBytes() {
    static const std::string bytes = [] {
        support::PackageSpec spec;
        spec.version = "2.0.0.0";
        spec.compressor = "none";
        spec.files = {{"win64.sysbits", "x"},
                      {"Orv Client\\client.exe", support::programImage(64, "client", 800000)},
                      {"Orv Server\\server.exe", support::programImage(64, "server", 800000)}};
        const support::TempDir workshop;
        return *support::readText(support::makePackage(spec, workshop.path() + "/p.exe"));
    }();
    return bytes;
}

/// From the node "sender" to the node "taker", whose store is empty.
class PushAttempt : public Attempt {
public:
    void prepare() override {
        support::writeText(at(kSent), packageBytes());
        startNodes();
    }
    ErrorInfo run() override {
        const auto way = std::make_shared<GetServerConnection>(mSenderNode, "taker");
        const auto push = std::make_shared<PostDownload>(mSender, at(kSent), way, VersionSource_Online, "taker");
        const support::Received<bool> ended;
        EXPECT_FALSE(push->start([ended] { ended.add(true); }));
        EXPECT_TRUE(ended.waitFor());
        Public::Base::settleDetached();
        EXPECT_EQ(ended.count(), 1U);
        EXPECT_EQ(push->finish(), !push->getError());
        return push->getError();
    }
    /// A broken transfer leaves its file open for a while, until the service ends.
    void settle(const ErrorInfo&) override {
        mTaker->stop();
        EXPECT_FALSE(mTaker->start(Version("1.0", 0), {}, {}, at("store")));
    }
    void check(const ErrorInfo& result) override {
        static const std::set<int> known{0, -1, -302, -416, -606};
        EXPECT_TRUE(known.contains(result.errorCode()) || result.errorCode() <= -10000);
        for (const auto& [name, content] : treeOf(root())) EXPECT_TRUE(name == kSent || name == kArrived) << name;
        EXPECT_TRUE(treeOf(root())[kSent] == packageBytes());
    }
    void checkReached() override {
        EXPECT_TRUE(equal(treeOf(root()), expected()));
        const VersionSet versions = mTaker->getVersions();
        ASSERT_EQ(versions.size(), 1U);
        EXPECT_EQ((*versions.begin())->getStoragePosition(), StoragePosition_Local);
    }

protected:
    static Tree expected() { return {{kSent, packageBytes()}, {kArrived, packageBytes()}}; }
    const std::shared_ptr<VersionRequest>& taker() const { return mTaker; }

private:
    std::shared_ptr<TWMQSystemServer> makeNode(const std::string& id) const {
        NodeOptions options;
        options.id = id;
        options.systemId = "site";
        return TWMQSystemServer::create(mBus, options);
    }
    void startNodes() {
        VersionRequestAccess::forgetStore();
        mSenderNode = makeNode("sender");
        mSender = std::make_shared<VersionRequest>(mWorker, mSenderNode, VersionType_Server);
        mTaker = std::make_shared<VersionRequest>(mWorker, makeNode("taker"), VersionType_Server);
        EXPECT_FALSE(mTaker->start(Version("1.0", 0), {}, {}, at("store")));
    }

    std::shared_ptr<Bus> mBus = Bus::embedded();
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
    std::shared_ptr<TWMQSystemServer> mSenderNode;
    std::shared_ptr<VersionRequest> mSender;
    std::shared_ptr<VersionRequest> mTaker;
};

/// A longer file lies where the package is to arrive.
class PushOverALongerOne : public PushAttempt {
public:
    void prepare() override {
        PushAttempt::prepare();
        support::writeText(at(kArrived), packageBytes() + "the end of a longer one");
    }
};

class PushFaults : public FaultTest {};

}  // namespace

TEST_P(PushFaults, AreToldOrBorne) {
    exhaust([] { return std::make_unique<PushAttempt>(); });
}

TEST_P(PushFaults, AreToldOrBorneOverALongerPackage) {
    exhaust([] { return std::make_unique<PushOverALongerOne>(); });
}

// The package is opened for the push after its test, which opens it too: that is the last one, since nobody is reached.
TEST(PushedFile, ThatCannotBeOpenedAfterItsTestIsMinusOne) {
    const support::TempDir root;
    const std::string package = root.path() + "/" + kSent;
    support::writeText(package, packageBytes());
    const auto request =
        std::make_shared<VersionRequest>(IOWorker::create(1), std::shared_ptr<TWMQSystemServer>(), VersionType_Server);
    const auto nobody = std::make_shared<GetServerConnection>(nullptr, "taker");
    std::vector<int> codes;
    bool struck = true;
    for (size_t at = 1; struck; ++at) {
        const Armed armed(root.path(), Kind::TooManyOpen, at);
        const auto push = std::make_shared<PostDownload>(request, package, nobody, VersionSource_Online, "taker");
        const support::Received<bool> ended;
        ASSERT_FALSE(push->start([ended] { ended.add(true); }));
        ASSERT_TRUE(ended.waitFor());
        Public::Base::settleDetached();
        codes.push_back(push->getError().errorCode());
        struck = armed.struck();
    }
    ASSERT_GE(codes.size(), 3U);
    EXPECT_EQ(codes.back(), -200);
    EXPECT_EQ(codes[codes.size() - 2], -1);
    EXPECT_NE(codes.front(), -200);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PushFaults, testing::ValuesIn(kWriting), titleOf);
