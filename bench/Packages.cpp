// Testing and unpacking packages.
#include "Packages.h"

#include <chrono>
#include <filesystem>
#include <vector>

#include "Bench.h"
#include "Content.h"
#include "OrvBackup.h"
#include "OrvInstaller.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

static constexpr const char* kVersion = "1.0.0.0";

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

namespace {

/// A form of the same content, and what is to be reached with it.
struct Form {
    std::string name;
    std::string path;
    double check;
    double unpack;
};

Row compareCheck(const Form& form, double megabytes) {
    return compare({.name = "check package, " + form.name,
                    .peer = "7zz t",
                    .ours = {[&] { check(form.path); }},
                    .theirs = {[&] { run("7zz t -bd " + shellWord(form.path)); }},
                    .amount = megabytes,
                    .unit = "MB/s",
                    .target = form.check});
}

Row compareUnpack(const Form& form, double megabytes) {
    std::string target;
    const auto empty = [&] { target = freshDirectory("unpacked"); };
    return compare({.name = "unpack, " + form.name,
                    .peer = "7zz x",
                    .ours = {[&] { unpack(form.path, target); }, empty},
                    .theirs = {[&] { run("7zz x -bd -y -o" + shellWord(target) + " " + shellWord(form.path)); }, empty},
                    .amount = megabytes,
                    .unit = "MB/s",
                    .target = form.unpack});
}

}  // namespace

void measurePackages(const Report& report) {
    const std::string content = programContent();
    const double megabytes = static_cast<double>(sizeOf(content)) / kMegabyte;
    const std::vector<Form> forms{
        {"LZMA solid", package("lzma-solid", content, "--compressor lzma"), 1.5, 1.3},
        {"LZMA per item", package("lzma-items", content, "--compressor lzma --separate"), 2.2, 1.3},
        {"zlib per item", package("zlib-items", content, "--compressor zlib --separate"), 2.5, 1.3}};
    for (const Form& form : forms) report(compareCheck(form, megabytes));
    for (const Form& form : forms) report(compareUnpack(form, megabytes));
    std::filesystem::remove_all(dataPath("unpacked"));
}

}  // namespace bench
