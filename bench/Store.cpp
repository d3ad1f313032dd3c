// The scan of a store as it grows, and what is read of each package.
#include <filesystem>
#include <fstream>

#include "Bench.h"
#include "Content.h"
#include "OrvVersion.h"
#include "Public/Base/Signature.h"

namespace fs = std::filesystem;

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

std::string readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string wide(const std::string& text) {
    std::string out;
    for (const char c : text) (out += c) += '\0';
    return out;
}

void replaceAll(std::string& bytes, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = bytes.find(from, at)) != std::string::npos; at += to.size()) {
        bytes.replace(at, from.size(), to);
    }
}

/// Packages of one content that differ in the version of their resource, which the checksum does not guard at a scan.
std::string makeStore(const std::string& package, int count) {
    const std::string content = readAll(package);
    const std::string store = freshDirectory("store");
    for (int i = 0; i < count; ++i) {
        const std::string version = std::to_string(1000 + i) + ".0.0.0";
        std::string bytes = content;
        replaceAll(bytes, wide("1000.0.0.0"), wide(version));
        const std::string directory = store + "/Online/Windows x64 Server/" + version;
        fs::create_directories(directory);
        std::ofstream(directory + "/" + version + ".exe", std::ios::binary) << bytes;
    }
    return store;
}

void scan(const std::string& store, size_t expected) {
    VersionSet found;
    OrvVersion::parseVersionFromCache(nullptr, store, found, nullptr);
    require(found.size() == expected, "the scan finds " + std::to_string(found.size()) + " packages");
}

double microsecondsEach(const std::string& package, int count) {
    const std::string store = makeStore(package, count);
    const int repeats = 1000 / count;  // a short scan is measured as a row of them
    const double seconds = medianSeconds(
        [&] {
            for (int i = 0; i < repeats; ++i) scan(store, static_cast<size_t>(count));
        },
        5);
    return seconds / repeats * 1e6 / count;
}

std::string smallPackage() {
    const std::string path = dataPath("small.exe");
    if (fs::exists(path)) return path;
    run(shellWord(ORV_BENCH_MAKE_PACKAGE) + " --version 1000.0.0.0 " + shellWord(dataPath("small.new.exe")));
    fs::rename(dataPath("small.new.exe"), path);
    return path;
}

void measureGrowth(const Report& report) {
    const std::string package = smallPackage();
    const double few = microsecondsEach(package, 10);
    report({.name = "store scan, 10 packages", .ours = few, .unit = "us each"});
    for (const int count : {100, 1000}) {
        const double cost = microsecondsEach(package, count);
        Row row{.name = "store scan, " + std::to_string(count) + " packages",
                .peer = "itself, 10 packages",
                .ours = cost,
                .theirs = few,
                .unit = "us each",
                .ratio = few / cost,
                .target = 0.8};
        row.holds = *row.ratio >= *row.target;
        report(row);
    }
}

/// Of an unsigned package a scan reads little; the bytes of a signed one go through the digest, and must do so once.
void measureReading(const Report& report) {
    const std::string root = dataPath("root.pem");
    const std::string package = signedPackage(root);
    const std::string store = freshDirectory("store");
    const std::string directory = store + "/Online/Windows x64 Server/1.0";
    fs::create_directories(directory);
    fs::create_hard_link(package, directory + "/1.0.exe");
    Public::Base::Signature::setTrustedRoots(root);
    report(compare({.name = "store scan, a signed package of 300 MB",
                    .peer = "openssl dgst -sha256",
                    .ours = {[&] { scan(store, 1); }},
                    .theirs = {[&] { run("openssl dgst -sha256 " + shellWord(package)); }},
                    .amount = static_cast<double>(fs::file_size(package)) / kMegabyte,
                    .unit = "MB/s",
                    .target = 1 / 1.2}));
    Public::Base::Signature::setTrustedRoots("");
}

}  // namespace

void measureStore(const Report& report) {
    measureGrowth(report);
    measureReading(report);
    fs::remove_all(dataPath("store"));
}

}  // namespace bench
