// Memory while a package of a gigabyte goes through the engine.
#include <malloc.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>
#include <vector>

#include "Bench.h"
#include "Content.h"
#include "Download.h"
#include "Packages.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

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

double largestFile(const std::string& directory) {
    uint64_t most = 0;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) most = std::max<uint64_t>(most, entry.file_size());
    }
    return static_cast<double>(most) / (1 << 20);
}

/// What a package goes through, and the largest item of that package in MiB.
struct Stage {
    std::string name;
    double largestItem;
    Step step;
};

std::vector<Stage> makeStages() {
    const std::string letters = largeContent();
    const std::string large = largePackage();
    const std::string programs = programContent();
    const std::string solid = package("lzma-solid", programs, "--compressor lzma");
    const auto receive = [] {
        const PackageServer server;
        download(Tarnwick::OrvUpdate::IOWorker::create(2), freshDirectory("download"), server.url());
    };
    return {
        {"download of 1 GiB", 0, receive},
        {"test of a package of 1 GiB", largestFile(letters), [large] { check(large); }},
        {"unpacking a package of 1 GiB", largestFile(letters), [large] { unpack(large, freshDirectory("unpacked")); }},
        {"test of 300 MB, LZMA solid", largestFile(programs), [solid] { check(solid); }},
        {"unpacking 300 MB, LZMA solid", largestFile(programs),
         [solid] { unpack(solid, freshDirectory("unpacked")); }}};
}

/// Each stage has a process of its own, since one that has run holds memory that the next would not have to ask for.
double peakInNewProcess(size_t stage) {
    const std::string command =
        shellWord(fs::read_symlink("/proc/self/exe").string()) + " " + kPeakOption + " " + std::to_string(stage);
    const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), &::pclose);
    double peak = 0;
    require(output && std::fscanf(output.get(), "%lf", &peak) == 1, "failed: " + command);
    return peak;
}

}  // namespace

void printPeak(size_t stage) { std::printf("%f\n", peakOf(makeStages().at(stage).step)); }

void measureMemory(const Report& report) {
    const std::vector<Stage> stages = makeStages();
    for (size_t i = 0; i < stages.size(); ++i) {
        Row row{.name = "memory, " + stages[i].name,
                .ours = peakInNewProcess(i),
                .unit = "MiB",
                .target = kAllowed + stages[i].largestItem};
        row.holds = row.ours <= *row.target;
        report(row);
    }
    for (const char* directory : {"download", "unpacked"}) fs::remove_all(dataPath(directory));
}

}  // namespace bench
