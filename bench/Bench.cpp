#include "Bench.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace bench {

namespace {

constexpr int kRuns = 5;

double seconds(const Step& step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Processor seconds of this process and of the programs that it has run.
double processorSeconds() {
    double sum = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        require(::getrusage(who, &usage) == 0, "no processor time");
        for (const timeval& part : {usage.ru_utime, usage.ru_stime}) {
            sum += static_cast<double>(part.tv_sec) + static_cast<double>(part.tv_usec) / 1e6;
        }
    }
    return sum;
}

struct Measured {
    std::vector<double> elapsed;
    std::vector<double> processor;

    void add(const Side& side) {
        if (side.prepare) side.prepare();
        const double before = processorSeconds();
        elapsed.push_back(seconds(side.run));
        processor.push_back(processorSeconds() - before);
    }
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

Row compare(const Comparison& comparison) {
    Measured warming;  // fills the caches, and does not count
    warming.add(comparison.ours);
    warming.add(comparison.theirs);
    Measured ours;
    Measured theirs;
    for (int i = 0; i < kRuns; ++i) {
        ours.add(comparison.ours);
        theirs.add(comparison.theirs);
    }
    Row row{.name = comparison.name, .peer = comparison.peer, .unit = comparison.unit, .target = comparison.target};
    row.ours = comparison.amount / median(ours.elapsed);
    row.theirs = comparison.amount / median(theirs.elapsed);
    row.ratio = row.ours / *row.theirs;
    if (row.target) row.holds = *row.ratio >= *row.target;
    row.processorRatio = median(theirs.processor) / median(ours.processor);
    return row;
}

double medianSeconds(const Step& step, int runs) {
    std::vector<double> values;
    for (int i = 0; i < runs; ++i) values.push_back(seconds(step));
    return median(values);
}

void run(const std::string& command) {
    require(std::system((command + " > /dev/null 2>&1").c_str()) == 0, "failed: " + command);
}

std::string shellWord(const std::string& text) {
    std::string out = "'";
    for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

void require(bool condition, const std::string& text) {
    if (!condition) throw std::runtime_error(text);
}

std::string dataPath(const std::string& name) {
    std::filesystem::create_directories(ORV_BENCH_DIR);
    return std::string(ORV_BENCH_DIR) + "/" + name;
}

std::string freshDirectory(const std::string& name) {
    const std::string path = dataPath(name);
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    return path;
}

}  // namespace bench
