// Memory while a package of a gigabyte goes through the engine.
#include <malloc.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "Bench.h"
#include "Content.h"
#include "Download.h"
#include "Packages.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr int kFiles = 90;
constexpr uint64_t kFileBytes = 16 << 20;
constexpr double kAllowed = 64;  // MiB, beyond the largest item

/// Memory that is the process's own: what it maps of files, the system can take back at any time.
uint64_t ownKibibytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        uint64_t value = 0;
        if (word == "RssAnon:" && status >> value) return value;
    }
    require(false, "the system does not tell the memory of a process");
    return 0;
}

/// The most that the step takes beyond what was held before, in MiB. Looks some thousand times a second.
double peakOf(const Step& step) {
    ::malloc_trim(0);
    const uint64_t before = ownKibibytes();
    std::atomic<uint64_t> most{before};
    std::jthread looker([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            most = std::max(most.load(), ownKibibytes());
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    step();
    looker.request_stop();
    looker.join();
    return static_cast<double>(most - before) / 1024;
}

void measure(const Report& report, const std::string& name, double largestItem, const Step& step) {
    Row row{.name = "memory, " + name, .ours = peakOf(step), .unit = "MiB", .target = kAllowed + largestItem};
    row.holds = row.ours <= *row.target;
    report(row);
}

double largestFile(const std::string& directory) {
    uint64_t most = 0;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) most = std::max<uint64_t>(most, entry.file_size());
    }
    return static_cast<double>(most) / (1 << 20);
}

}  // namespace

void measureMemory(const Report& report) {
    {
        const PackageServer server;
        measure(report, "download of 1 GiB", 0,
                [&] { download(Tarnwick::OrvUpdate::IOWorker::create(2), freshDirectory("download"), server.url()); });
        fs::remove_all(dataPath("download"));
    }
    // Three quarters of these bytes are left after packing: a package of 1 GiB.
    const std::string large =
        package("large", noiseContent("letters", kFiles, kFileBytes, Noise::Letters), "--compressor zlib --separate");
    require(fs::file_size(large) >= uint64_t{1} << 30, "the package is less than 1 GiB");
    const double item = static_cast<double>(kFileBytes) / (1 << 20);
    measure(report, "test of a package of 1 GiB", item, [&] { check(large); });
    measure(report, "unpacking a package of 1 GiB", item, [&] { unpack(large, freshDirectory("unpacked")); });
    fs::remove_all(dataPath("unpacked"));

    const std::string content = programContent();
    const std::string solid = package("lzma-solid", content, "--compressor lzma");
    measure(report, "test of 300 MB, LZMA solid", largestFile(content), [&] { check(solid); });
}

}  // namespace bench
