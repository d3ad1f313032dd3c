// Copying a program with the libraries that it needs, beside reading the files of the tree.
#include <filesystem>
#include <fstream>
#include <vector>

#include "Bench.h"
#include "OrvInstaller/DependencyCopy.h"
#include "PeBuilder.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr int kModules = 2000;
constexpr int kImported = 300;
constexpr int kDirectories = 20;
constexpr size_t kModuleBytes = 128 << 10;

std::string moduleName(int number) { return "module" + std::to_string(number) + ".dll"; }

std::string modulePath(const std::string& tree, int number) {
    return tree + "/part" + std::to_string(number % kDirectories) + "/" + moduleName(number);
}

/// Each needed module imports the next two, so that most are imported twice, and a module of the system.
std::vector<std::string> importsOf(int number) {
    std::vector<std::string> imports{"KERNEL32.dll"};
    for (const int next : {number + 1, number + 2}) {
        if (number < kImported && next < kImported) imports.push_back(moduleName(next));
    }
    return imports;
}

void writeModule(const std::string& path, const std::vector<std::string>& imports) {
    support::PeSpec spec;
    spec.imports = imports;
    spec.trailer = std::string(kModuleBytes, 'x');
    std::ofstream(path, std::ios::binary) << support::buildPe(spec).bytes;
}

std::string makeTree() {
    const std::string tree = freshDirectory("modules");
    for (int i = 0; i < kDirectories; ++i) fs::create_directory(tree + "/part" + std::to_string(i));
    for (int i = 0; i < kModules; ++i) writeModule(modulePath(tree, i), importsOf(i));
    writeModule(tree + "/program.exe", {moduleName(0)});
    return tree;
}

void readFiles(const std::string& tree, int count) {
    std::vector<char> buffer(kModuleBytes * 2);
    for (int i = 0; i < count; ++i) {
        std::ifstream in(modulePath(tree, i), std::ios::binary);
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        require(static_cast<size_t>(in.gcount()) > kModuleBytes, "a module is too short");
    }
}

/// Each run copies into a directory of its own, and all stay to the end: the file system is slow to make files where
/// many were removed a moment ago.
std::string nextDirectory() {
    static int sRuns = 0;
    return freshDirectory("copies/" + std::to_string(sRuns++));
}

Row beside(const std::string& peer, const std::string& tree, int count, std::optional<double> target) {
    std::string copies;
    return compare(
        {.name = "copyDependens, 300 of 2,000 modules",
         .peer = peer,
         .ours = {[&] {
                      require(Tarnwick::OrvUpdate::copyDependens(tree + "/program.exe", tree, copies), "not copied");
                      const auto copied = std::distance(fs::directory_iterator(copies), fs::directory_iterator());
                      require(copied == kImported + 1, "copied: " + std::to_string(copied));
                  },
                  [&] { copies = nextDirectory(); }},
         .theirs = {[&] { readFiles(tree, count); }},
         .amount = kImported,
         .unit = "modules/s",
         .target = target});
}

}  // namespace

void measureDependencies(const Report& report) {
    const std::string tree = makeTree();
    report(beside("reading the 2,000 once", tree, kModules, 0.5));
    report(beside("reading the 300 once", tree, kImported, {}));
    for (const std::string& directory : {tree, dataPath("copies")}) fs::remove_all(directory);
}

}  // namespace bench
