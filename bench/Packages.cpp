// Testing and unpacking packages.
#include <chrono>
#include <filesystem>

#include "Bench.h"
#include "OrvBackup.h"
#include "OrvInstaller.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr const char* kVersion = "1.0.0.0";
constexpr int kFileKib = 6144;
constexpr int kFiles = 10;
constexpr double kMegabytes = kFiles * kFileKib / 1024.0;

std::string package(const std::string& name, const std::string& options) {
    const std::string path = dataPath(name + ".exe");
    if (!std::filesystem::exists(path)) {
        run(shellWord(ORV_BENCH_MAKE_PACKAGE) + " --version " + kVersion + " --size " + std::to_string(kFileKib) + " " +
            options + " " + shellWord(path + ".exe"));
        std::filesystem::rename(path + ".exe", path);  // one that was not finished does not stay
    }
    return path;
}

void check(const std::string& path) {
    require(!OrvInstaller::checkPackage(path, kVersion, 64), "checkPackage refuses " + path);
}

void unpack(const std::string& path, const std::string& target) {
    const auto backup = std::make_shared<OrvBackup>(dataPath("unpack-backup"));
    const auto installer = std::make_shared<OrvInstaller>(backup, path, VersionType_All);
    require(!installer->start(target, false, {}), "cannot unpack " + path);
    // The interface has no wait; a hundredth of a percent of the run is lost between two looks.
    while (!installer->finish()) std::this_thread::sleep_for(std::chrono::microseconds(50));
    float progress = 0;
    installer->getProgress(progress);
    require(!installer->getError() && progress > 0.999F, "unpacking fails: " + path);
}

Row compareCheck(const std::string& form, const std::string& path) {
    return compare({.name = "check package, " + form,
                    .peer = "7zz t",
                    .ours = {[&] { check(path); }},
                    .theirs = {[&] { run("7zz t -bd " + shellWord(path)); }},
                    .amount = kMegabytes,
                    .unit = "MiB/s"});
}

Row compareUnpack(const std::string& form, const std::string& path) {
    std::string target;
    const auto empty = [&] { target = freshDirectory("unpacked"); };
    return compare({.name = "unpack, " + form,
                    .peer = "7zz x",
                    .ours = {[&] { unpack(path, target); }, empty},
                    .theirs = {[&] { run("7zz x -bd -y -o" + shellWord(target) + " " + shellWord(path)); }, empty},
                    .amount = kMegabytes,
                    .unit = "MiB/s"});
}

}  // namespace

void measurePackages(const Report& report) {
    const std::string solid = package("lzma-solid", "--compressor lzma");
    const std::string separate = package("lzma-items", "--compressor lzma --separate");
    const std::string zlib = package("zlib-items", "--compressor zlib --separate");
    report(compareCheck("LZMA solid", solid));
    report(compareCheck("LZMA per item", separate));
    report(compareCheck("zlib per item", zlib));
    report(compareUnpack("LZMA solid", solid));
    report(compareUnpack("LZMA per item", separate));
    report(compareUnpack("zlib per item", zlib));
    std::filesystem::remove_all(dataPath("unpacked"));
}

}  // namespace bench
