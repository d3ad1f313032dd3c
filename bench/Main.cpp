// Measures the engine beside tools that do the same work, prints a table, and writes it as JSON.
//
//   orvbench [GROUP...]    dependencies, packages, signature, download, backup, store, catalogue, compatibility,
//                         cluster, pull, push, memory, windows; all of them unless some are named
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <vector>

#include "Bench.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/Printer.h"

namespace {

using bench::Row;
using Public::Base::JsonValue;

struct Group {
    std::string name;
    void (*measure)(const bench::Report& report);
};

// The dependency copy comes before those that remove many files, after which the file system makes new ones slowly.
const std::vector<Group> sGroups{{"dependencies", bench::measureDependencies},
                                 {"packages", bench::measurePackages},
                                 {"signature", bench::measureSignature},
                                 {"download", bench::measureDownload},
                                 {"backup", bench::measureBackup},
                                 {"store", bench::measureStore},
                                 {"catalogue", bench::measureCatalogue},
                                 {"compatibility", bench::measureCompatibility},
                                 {"cluster", bench::measureCluster},
                                 {"pull", bench::measureQueuePull},
                                 {"push", bench::measureQueuePush},
                                 {"memory", bench::measureMemory},
                                 {"windows", bench::measureWindows}};

std::string number(const std::optional<double>& value, const char* format) {
    char text[32];
    if (!value) return "-";
    std::snprintf(text, sizeof text, format, *value);
    return text;
}

const char* verdict(const Row& row) {
    if (!row.holds) return "-";
    return *row.holds ? "yes" : "NO";
}

void print(const Row& row) {
    std::printf("%-44s %-24s %10s %10s %-9s %7s %7s %-5s %7s\n", row.name.c_str(),
                row.peer.empty() ? "-" : row.peer.c_str(), number(row.ours, "%.1f").c_str(),
                number(row.theirs, "%.1f").c_str(), row.unit.c_str(), number(row.ratio, "%.2f").c_str(),
                number(row.target, "%.2f").c_str(), verdict(row), number(row.processorRatio, "%.2f").c_str());
    std::fflush(stdout);
}

template <class T>
JsonValue optional(const std::optional<T>& value) {
    return value ? JsonValue(*value) : JsonValue();
}

JsonValue document(const Row& row) {
    JsonValue value;
    value["name"] = row.name;
    value["peer"] = row.peer.empty() ? JsonValue() : JsonValue(row.peer);
    value["ours"] = row.ours;
    value["theirs"] = optional(row.theirs);
    value["unit"] = row.unit;
    value["ratio"] = optional(row.ratio);
    value["target"] = optional(row.target);
    value["holds"] = optional(row.holds);
    value["processorRatio"] = optional(row.processorRatio);
    return value;
}

void save(const std::vector<Row>& rows) {
    JsonValue list;
    for (const Row& row : rows) list.append(document(row));
    std::ofstream out(ORV_BENCH_JSON, std::ios::binary);
    out << list.toStyledString(Public::Base::WriteStyle_Indented).toStdString() << '\n';
    bench::require(out.flush().good(), "cannot write " ORV_BENCH_JSON);
}

bool isWanted(const std::string& name, const std::vector<std::string>& wanted) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end();
}

int measureAll(const std::vector<std::string>& wanted) {
    std::printf("%u cores\n%-44s %-24s %10s %10s %-9s %7s %7s %-5s %7s\n", std::thread::hardware_concurrency(), "what",
                "peer", "ours", "theirs", "unit", "ratio", "target", "holds", "cpu");
    std::fflush(stdout);
    std::vector<Row> rows;
    bool failed = false;
    for (const Group& group : sGroups) {
        if (!isWanted(group.name, wanted)) continue;
        try {
            group.measure([&](const Row& row) {
                print(row);
                rows.push_back(row);
            });
        } catch (const std::exception& error) {
            std::fprintf(stderr, "orvbench: %s: %s\n", group.name.c_str(), error.what());
            failed = true;
        }
    }
    save(rows);
    return failed ? 1 : 0;
}

bool isGroup(const std::string& name) {
    return std::any_of(sGroups.begin(), sGroups.end(), [&](const Group& group) { return group.name == name; });
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> wanted(argv + 1, argv + argc);
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    try {
        if (wanted.size() == 2 && wanted[0] == bench::kPeakOption) {
            bench::printPeak(std::stoul(wanted[1]));
            return 0;
        }
        const auto wrong = std::find_if_not(wanted.begin(), wanted.end(), isGroup);
        if (wrong == wanted.end()) return measureAll(wanted);
        std::fprintf(stderr, "orvbench: no group '%s'\n", wrong->c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvbench: %s\n", error.what());
    }
    return 2;
}
