// The transfer from the cloud: what fails on the way, on the wire and on the disk.
#include "FaultTest.h"
#include "FileText.h"
#include "HttpDownload.h"
#include "HttpTransferFixture.h"
#include "PackageMaker.h"
#include "Public/Base/JsonValue.h"

using namespace faults;
using namespace Tarnwick::OrvUpdate;

namespace {

constexpr char kPackage[] = "store/p.exe";

std::string packageBytes() {
    static const std::string bytes = [] {
        const support::TempDir workshop;
        return *support::readText(support::makePackage({}, workshop.path() + "/p.exe"));
    }();
    return bytes;
}

/// One whole transfer with a worker of its own, whose threads end with it.
class Fetch : public Attempt {
public:
    void prepare() override { mServer.serve("/p.exe", packageBytes()); }

    ErrorInfo run() override {
        const auto worker = Public::Network::IOWorker::create(1);
        if (!worker) return ErrorInfo(-1, "no worker");
        const auto version = std::make_shared<OrvVersion>(worker, root(), "");
        Public::Base::JsonValue document(0);
        document["softversion"] = "1.11.0.8";
        document["description"] = "";
        document["url"] = mServer.url("/p.exe");
        EXPECT_FALSE(version->parseVersionFromHttp(document));
        version->setLocalFileName(at(kPackage));
        const auto transfer = std::make_shared<HttpDownload>(worker, version);
        const support::Waiter waiter;
        const ErrorInfo refused = transfer->start(waiter.callback());
        if (refused) {
            EXPECT_EQ(waiter.calls(), 0);
            return refused;
        }
        EXPECT_TRUE(waiter.wait());
        EXPECT_EQ(waiter.calls(), 1);
        // The thread that has called back may not be the last to let go of the worker, or it would end by itself.
        EXPECT_TRUE(support::eventually([&] { return transfer.use_count() == 1; }));
        const ErrorInfo error = transfer->getError();
        // The body's arrival alone decides: a disk that fails leaves the transfer finished, with its error.
        EXPECT_TRUE(transfer->finish() ? !error || error.errorCode() <= -10000 : error.errorCode() == -1);
        return error;
    }

    void settle(const ErrorInfo&) override { EXPECT_TRUE(mServer.waitForNoConnection()); }

    void check(const ErrorInfo& result) override {
        const Tree now = treeOf(root());
        const int code = result.errorCode();
        EXPECT_TRUE(code == 0 || code == -1 || code == -602 || code <= -10000);
        for (const auto& [name, content] : now) EXPECT_EQ(name, kPackage);
        // What did not arrive is deleted; what the disk did not take stays, short, and is no package.
        EXPECT_TRUE(code != -1 || now.empty());
        EXPECT_TRUE(code > -10000 || now.size() == 1);
    }

    void checkReached() override { EXPECT_TRUE(equal(treeOf(root()), (Tree{{kPackage, packageBytes()}}))); }

private:
    support::HttpFileServer mServer;
};

/// A package that was cut short lies there.
class FetchOverAnUnfitOne : public Fetch {
public:
    void prepare() override {
        Fetch::prepare();
        support::writeText(at(kPackage), packageBytes().substr(1));
    }
};

/// A sound package lies there: it is taken as it is, or, where it cannot be read, fetched again.
class FetchOverASoundOne : public Fetch {
public:
    void prepare() override {
        Fetch::prepare();
        support::writeText(at(kPackage), packageBytes());
    }
};

const std::vector<Kind> kAll = {Kind::InputOutputError, Kind::DiskFull,      Kind::DiskStaysFull,
                                Kind::NoRight,          Kind::TooManyOpen,   Kind::OutOfMemory,
                                Kind::Interrupted,      Kind::ShortTransfer, Kind::ConnectionReset};

class HttpFetch : public FaultTest {};
class HttpFetchOfAPackageThatIsThere : public FaultTest {};

}  // namespace

TEST_P(HttpFetch, BringsTheWholePackageOrAnError) {
    exhaust([] { return std::make_unique<Fetch>(); });
}
TEST_P(HttpFetch, TakesThePlaceOfAnUnfitPackageOrTellsWhyNot) {
    exhaust([] { return std::make_unique<FetchOverAnUnfitOne>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, HttpFetch, testing::ValuesIn(kAll), titleOf);

TEST_P(HttpFetchOfAPackageThatIsThere, TakesItOrFetchesItAgain) {
    exhaust([] { return std::make_unique<FetchOverASoundOne>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, HttpFetchOfAPackageThatIsThere, testing::ValuesIn(kMapping), titleOf);
