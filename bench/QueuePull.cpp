// Pulling a package from a peer over the queue.
#include <algorithm>
#include <array>
#include <filesystem>
#include <future>

#include "Bench.h"
#include "MQDownload.h"
#include "QueueCopy.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr uint64_t kBytes = uint64_t{1} << 30;
constexpr uint64_t kDelayedBytes = uint64_t{64} << 20;  // a round trip of 50 ms a MiB takes its time
constexpr double kMebibyte = 1 << 20;

void pull(const QueueNodes& nodes, const std::string& store, uint64_t bytes) {
    const auto version = nodes.wanted(store);
    const auto transfer = version->getDownload(std::shared_ptr<IVersionRequest>(nodes.taker()));
    require(std::dynamic_pointer_cast<MQDownload>(transfer) != nullptr, "no pull");
    std::promise<void> ended;
    require(!transfer->start([&] { ended.set_value(); }), "the pull does not start");
    ended.get_future().wait();
    require(transfer->finish() && std::filesystem::file_size(version->getPackageFile()) == bytes, "the pull fails");
}

/// MiB in a second.
double delayedSpeed(unsigned roundTripMs) {
    QueueNodes nodes(roundTripMs);
    nodes.hold(queueFile(kDelayedBytes));
    std::string store;
    const auto once = [&] {
        store = freshDirectory("pull");
        return medianSeconds([&] { pull(nodes, store, kDelayedBytes); }, 1);
    };
    once();  // fills the caches, and does not count
    std::array seconds{once(), once(), once()};
    std::sort(seconds.begin(), seconds.end());
    std::filesystem::remove_all(store);
    return static_cast<double>(kDelayedBytes) / kMebibyte / seconds[1];
}

void measureAgainstBareThreads(const Report& report) {
    QueueNodes nodes(0);
    const std::string package = queueFile(kBytes);
    nodes.hold(package);
    std::string target;
    const auto empty = [&] { target = freshDirectory("pull"); };
    report(compare({.name = "pull over the queue, 1 GiB",
                    .peer = "bare threads by turns",
                    .ours = {[&] { pull(nodes, target, kBytes); }, empty},
                    .theirs = {[&] { copyByTurns(package, target + "/package.exe"); }, empty},
                    .amount = static_cast<double>(kBytes) / kMebibyte,
                    .unit = "MiB/s",
                    .target = 0.8}));
    std::filesystem::remove_all(target);
}

/// One chunk goes and comes in a round trip and the time that it takes where there is none.
void measureRoundTrips(const Report& report) {
    const double undelayed = delayedSpeed(0);
    report({.name = "pull over the queue, round trip 0 ms", .ours = undelayed, .unit = "MiB/s"});
    for (const unsigned roundTripMs : {1U, 10U, 50U}) {
        constexpr double kChunk = kQueueChunk / kMebibyte;
        Row row{.name = "pull over the queue, round trip " + std::to_string(roundTripMs) + " ms",
                .peer = "chunk / (trip + chunk time)",
                .unit = "MiB/s"};
        row.ours = delayedSpeed(roundTripMs);
        row.theirs = kChunk / (roundTripMs / 1000.0 + kChunk / undelayed);
        row.ratio = row.ours / *row.theirs;
        report(row);
    }
}

}  // namespace

void measureQueuePull(const Report& report) {
    measureAgainstBareThreads(report);
    measureRoundTrips(report);
}

}  // namespace bench
