// Saving and putting back the files of an upgrade.
#include <filesystem>
#include <fstream>

#include "Bench.h"
#include "OrvBackup.h"

namespace bench {

using Tarnwick::OrvUpdate::OrvBackup;

namespace {

constexpr int kFiles = 1000;
constexpr int kFileBytes = 1 << 20;

std::string fileName(int number) { return "part" + std::to_string(number % 10) + "/file" + std::to_string(number); }

std::string makeFiles() {
    const std::string directory = freshDirectory("files");
    for (int i = 0; i < kFiles; ++i) {
        const std::string path = directory + "/" + fileName(i);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << std::string(kFileBytes, static_cast<char>('a' + i % 26));
    }
    return directory;
}

void backupAndRestore(const std::string& files, const std::string& saved, const std::string& target) {
    OrvBackup backup(saved);
    for (int i = 0; i < kFiles; ++i) require(!backup.backup(fileName(i), files), "backup fails");
    for (int i = 0; i < kFiles; ++i) require(!backup.restore(fileName(i), target), "restore fails");
}

}  // namespace

void measureBackup(const Report& report) {
    const std::string files = makeFiles();
    std::string saved;
    std::string target;
    const auto empty = [&] {
        saved = freshDirectory("saved");
        target = freshDirectory("restored");
    };
    report(compare({.name = "backup and restore, 1,000 files, 1 GiB",
                    .peer = "cp -a, twice",
                    .ours = {[&] { backupAndRestore(files, saved, target); }, empty},
                    .theirs = {[&] {
                                   run("cp -a " + shellWord(files) + "/. " + shellWord(saved));
                                   run("cp -a " + shellWord(saved) + "/. " + shellWord(target));
                               },
                               empty},
                    .amount = kFiles,
                    .unit = "files/s",
                    .target = 0.9}));
    require(std::filesystem::file_size(target + "/" + fileName(kFiles - 1)) == kFileBytes, "a file was not restored");
    for (const std::string& directory : {files, saved, target}) std::filesystem::remove_all(directory);
}

}  // namespace bench
