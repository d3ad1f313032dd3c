// The build for Windows, run under wine, beside the Linux build.
#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "Bench.h"
#include "Content.h"
#include "PackageServer.h"

namespace bench {

namespace {

constexpr int kRuns = 5;
constexpr double kTarget = 1 / 1.5;  // no more than one and a half times as long

/// The seconds that the program prints.
double secondsOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
    double seconds = 0;
    require(output && std::fscanf(output.get(), "%lf", &seconds) == 1, "failed: " + command);
    return seconds;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Question {
    std::string name;
    std::string onLinux;    // arguments
    std::string onWindows;  // wine sees the root as its drive Z:
    double amount;
    std::string unit;
    std::string fresh = {};  // a directory that each run finds empty
};

/// By turns, so that a change of the machine's load meets both; the first of each warms the caches.
Row measure(const Question& question) {
    const auto seconds = [&](const std::string& program, const std::string& arguments) {
        if (!question.fresh.empty()) freshDirectory(question.fresh);
        return secondsOf(program + " " + arguments);
    };
    std::vector<double> ours, theirs;
    for (int i = 0; i <= kRuns; ++i) {
        const double windows = seconds(ORV_BENCH_UNDER_WINE " " ORV_BENCH_WINDOWS_MEASURE, question.onWindows);
        const double native = seconds(ORV_BENCH_MEASURE, question.onLinux);
        if (i == 0) continue;
        ours.push_back(windows);
        theirs.push_back(native);
    }
    Row row{.name = question.name, .peer = "the Linux build", .unit = question.unit, .target = kTarget};
    row.ours = question.amount / median(ours);
    row.theirs = question.amount / median(theirs);
    row.ratio = row.ours / *row.theirs;
    row.holds = *row.ratio >= kTarget;
    return row;
}

Question check(const std::string& name, const std::string& path, double megabytes) {
    return {"under wine: check package, " + name, "check " + shellWord(path), "check " + shellWord("Z:" + path),
            megabytes, "MB/s"};
}

}  // namespace

void measureWindows(const Report& report) {
    require(std::filesystem::exists(ORV_BENCH_WINDOWS_MEASURE),
            "the programs for Windows are not built (./dev bench windows)");
    const std::string content = programContent();
    const double megabytes = static_cast<double>(sizeOf(content)) / kMegabyte;
    report(measure(check("LZMA solid", package("lzma-solid", content, "--compressor lzma"), megabytes)));
    report(measure(check("LZMA per item", package("lzma-items", content, "--compressor lzma --separate"), megabytes)));
    report(measure(check("zlib per item", package("zlib-items", content, "--compressor zlib --separate"), megabytes)));

    const PackageServer server;
    const std::string store = dataPath("windows-download");
    report(
        measure({"under wine: download, 1 GiB from the loopback", "download " + server.url() + " " + shellWord(store),
                 "download " + server.url() + " " + shellWord("Z:" + store),
                 static_cast<double>(PackageServer::kBodyBytes) / (1 << 20), "MiB/s", "windows-download"}));
    std::filesystem::remove_all(store);
}

}  // namespace bench
