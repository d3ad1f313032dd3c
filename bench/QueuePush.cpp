// Pushing a package to a peer over the queue.
#include <chrono>
#include <filesystem>
#include <future>

#include "Bench.h"
#include "Content.h"
#include "OrvDownload/ConnectionProviders.h"
#include "PostDownload.h"
#include "QueueCopy.h"

namespace fs = std::filesystem;

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr double kMebibyte = 1 << 20;

/// The way from the node "taker" to the node "holder". The first look at it, which the push takes when it has tested
/// the package and holds the first chunk, waits until it is opened.
class GatedConnection : public IGetConnection {
public:
    explicit GatedConnection(const QueueNodes& nodes) : mWay(nodes.taker()->getMQServer(), "holder") {}

    std::shared_ptr<Tarnwick::MQ::MQConnection> getConnection() override {
        if (!mPassed.exchange(true)) {
            mReached.set_value();
            mOpened.get_future().wait();
        }
        return mWay.getConnection();
    }
    std::shared_ptr<Tarnwick::MQ::MQConnection> getMasterConnection() override { return nullptr; }
    std::string getMasterId() override { return {}; }

    void waitUntilReached() { mReached.get_future().wait(); }
    void open() { mOpened.set_value(); }

private:
    GetServerConnection mWay;
    std::atomic<bool> mPassed{false};
    std::promise<void> mReached;
    std::promise<void> mOpened;
};

/// One push, whose moving of bytes can be measured apart from its test of the package.
class Push {
public:
    /// Tests the package and stops before the first chunk goes.
    Push(const QueueNodes& nodes, const std::string& package)
        : mWay(std::make_shared<GatedConnection>(nodes)),
          mTransfer(std::make_shared<PostDownload>(nodes.taker(), package, mWay, VersionSource_Online, "holder")) {
        require(!mTransfer->start([this] { mEnded.set_value(); }), "the push does not start");
        mWay->waitUntilReached();
    }
    void move() {
        mWay->open();
        mEnded.get_future().wait();
        require(mTransfer->finish(), "the push fails");
    }

private:
    std::promise<void> mEnded;
    std::shared_ptr<GatedConnection> mWay;
    std::shared_ptr<PostDownload> mTransfer;
};

/// Where the pushed package arrives.
std::string arrival(const QueueNodes& nodes) {
    return nodes.holder()->getDownloadDir() + "/Online/Windows x64 All/1.0.0.0/1.0.0.0.exe";
}

double mebibytes(const std::string& package) { return static_cast<double>(fs::file_size(package)) / kMebibyte; }

/// MiB in a second.
double delayedSpeed(const std::string& package, unsigned roundTripMs) {
    const QueueNodes nodes(roundTripMs);
    std::vector<double> seconds;
    for (int run = 0; run < 3; ++run) {
        fs::remove(arrival(nodes));
        Push push(nodes, package);
        seconds.push_back(medianSeconds([&] { push.move(); }, 1));
    }
    std::sort(seconds.begin(), seconds.end());
    fs::remove(arrival(nodes));
    return mebibytes(package) / seconds[1];
}

void measureAgainstBareThreads(const Report& report, const std::string& package) {
    const QueueNodes nodes(0);
    const std::string target = freshDirectory("push") + "/package.exe";
    std::unique_ptr<Push> push;
    std::vector<double> tests;
    const auto test = [&] {
        tests.push_back(medianSeconds([&] { push = std::make_unique<Push>(nodes, package); }, 1));
        fs::remove(
            arrival(nodes));  // now, as for the peer: memory that lies free for seconds is dear on a virtual machine
    };
    report(compare({.name = "push over the queue, 1 GiB, its bytes alone",
                    .peer = "bare threads by turns",
                    .ours = {[&] { push->move(); }, test},
                    .theirs = {[&] { copyByTurns(package, target); }, [&] { fs::remove(target); }},
                    .amount = mebibytes(package),
                    .unit = "MiB/s",
                    .target = 0.8}));
    require(fs::file_size(arrival(nodes)) == fs::file_size(package), "the package has not arrived");
    std::sort(tests.begin(), tests.end());
    report({.name = "push over the queue, 1 GiB, the test before it",
            .ours = mebibytes(package) / tests[tests.size() / 2],
            .unit = "MiB/s"});
    fs::remove(arrival(nodes));
    fs::remove_all(dataPath("push"));
}

/// One chunk goes and is acknowledged in a round trip and the time that it takes where there is none.
void measureRoundTrips(const Report& report, const std::string& package) {
    const double undelayed = delayedSpeed(package, 0);
    report({.name = "push over the queue, round trip 0 ms", .ours = undelayed, .unit = "MiB/s"});
    for (const unsigned roundTripMs : {1U, 10U, 50U}) {
        constexpr double kChunk = kQueueChunk / kMebibyte;
        Row row{.name = "push over the queue, round trip " + std::to_string(roundTripMs) + " ms",
                .peer = "chunk / (trip + chunk time)",
                .unit = "MiB/s",
                .target = 0.8};
        row.ours = delayedSpeed(package, roundTripMs);
        row.theirs = kChunk / (roundTripMs / 1000.0 + kChunk / undelayed);
        row.ratio = row.ours / *row.theirs;
        row.holds = *row.ratio >= *row.target;
        report(row);
    }
}

}  // namespace

void measureQueuePush(const Report& report) {
    measureAgainstBareThreads(report, largePackage());
    measureRoundTrips(report, package("lzma-solid", programContent(), "--compressor lzma"));
}

}  // namespace bench
