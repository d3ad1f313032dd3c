#include "Packages.h"

#include <stdexcept>

#include "FileText.h"
#include "PackageMaker.h"
#include "TempDir.h"

namespace cluster {

namespace {

constexpr size_t kChunk = 0x100000;

/// @param filling bytes in one more program of the package
std::string build(const std::string& version, size_t filling) {
    const support::TempDir workshop;
    support::PackageSpec spec;
    spec.version = version;
    spec.compressor = "none";
    spec.files = support::defaultFiles(spec);
    if (filling > 0)
        spec.files.emplace_back("Orv Server\\filling.dll", support::programImage(64, "filling " + version, filling));
    const auto bytes = support::readText(support::makePackage(spec, workshop.path() + "/package.exe"));
    if (!bytes) throw std::runtime_error("no package was made");
    return *bytes;
}

/// One of exactly that length: what is not compressed grows by what is put in.
std::string buildOfLength(const std::string& version, size_t length) {
    constexpr size_t kTry = 4096;
    const size_t without = build(version, kTry).size() - kTry;
    auto bytes = build(version, length - without);
    if (bytes.size() != length) throw std::runtime_error("the package is not of the length that was wanted");
    return bytes;
}

}  // namespace

const std::vector<Package>& packages() {
    static const std::vector<Package> all{
        {"1.1.0.1", build("1.1.0.1", 0)},
        {"1.2.0.2", buildOfLength("1.2.0.2", 2 * kChunk)},
        {"1.3.0.3", build("1.3.0.3", 300 * 1024)},
        {"1.4.0.4", build("1.4.0.4", 3 * kChunk - 1000)},
    };
    return all;
}

const Package* packageOf(const std::string& version) {
    for (const auto& package : packages()) {
        if (package.version == version) return &package;
    }
    return nullptr;
}

std::string placeOf(const std::string& version, const std::string& source) {
    return source + "/Windows x64 All/" + version + "/" + version + ".exe";
}

void putPackage(const Package& package, const std::string& store, const std::string& source) {
    support::writeText(store + "/" + placeOf(package.version, source), package.bytes);
}

}  // namespace cluster
