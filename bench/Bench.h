// What the measurements share: rows, timing, and the peers' command lines.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace bench {

/// One line of the result.
struct Row {
    std::string name;
    std::string peer = {};  ///< empty for none
    double ours = 0;
    std::optional<double> theirs = {};
    std::string unit = {};
    std::optional<double> ratio = {};   ///< how many times as good as the peer we are
    std::optional<double> target = {};  ///< of the ratio; without a peer, of our own figure
    std::optional<bool> holds = {};
    /// Processor time of the peer by ours, all threads and children: what a loaded machine makes of the ratio it cannot
    /// make of this.
    std::optional<double> processorRatio = {};
};

using Step = std::function<void()>;

/// One side of a comparison. Only `run` is measured.
struct Side {
    Step run;
    Step prepare = {};
};

/// Measures both sides in turn and takes the median of each, so that a change of the machine's load meets both.
struct Comparison {
    std::string name;
    std::string peer;
    Side ours;
    Side theirs;
    double amount = 0;  ///< work of one run, in the unit
    std::string unit;   ///< what is done, per second
    std::optional<double> target = {};
};
Row compare(const Comparison& comparison);

/// Median seconds of a step alone.
double medianSeconds(const Step& step, int runs);

/// Runs a command line of the shell without its output. Throws std::runtime_error when it fails.
void run(const std::string& command);
std::string shellWord(const std::string& text);
/// Throws std::runtime_error with that text when the condition does not hold: a run that failed is no figure.
void require(bool condition, const std::string& text);

/// A path in the directory of the benchmarks. The directory is kept: what is dear to make is made once.
std::string dataPath(const std::string& name);
/// An empty directory there.
std::string freshDirectory(const std::string& name);

/// Called with each row as soon as it is measured.
using Report = std::function<void(const Row&)>;

void measurePackages(const Report& report);
void measureSignature(const Report& report);
void measureDownload(const Report& report);
void measureBackup(const Report& report);
void measureDependencies(const Report& report);
void measureStore(const Report& report);
void measureCatalogue(const Report& report);
void measureCompatibility(const Report& report);
void measureCluster(const Report& report);
void measureQueuePull(const Report& report);
void measureQueuePush(const Report& report);
void measureMemory(const Report& report);
void measureWindows(const Report& report);

/// The command line by which the memory benchmark runs one of its stages in a process of its own.
constexpr const char* kPeakOption = "--peak";
/// Prints the most memory, in MiB, that the stage takes.
void printPeak(size_t stage);

}  // namespace bench
