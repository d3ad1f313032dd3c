#include "UpgradeSite.h"

#include <algorithm>
#include <filesystem>
#include <random>

#include "FileLinks.h"
#include "FileText.h"
#include "FileTimes.h"
#include "Journal.h"
#include "PackageMaker.h"

namespace fs = std::filesystem;

namespace {

/// Reproducible; half of it packs well.
std::string content(const std::string& seed, size_t size) {
    std::mt19937 random(static_cast<unsigned>(std::hash<std::string>()(seed)));
    std::string bytes = seed;
    while (bytes.size() < size / 2) bytes += static_cast<char>(random());
    while (bytes.size() < size) bytes += seed;
    bytes.resize(size);
    return bytes;
}

struct OldLink {
    const char* name;
    const char* target;
};
constexpr OldLink kLinks[] = {{"current.dll", "versions/7.dll"},  // the package has a file of that name
                              {"dangling.dll", "no\\where"},      // likewise
                              {"shared", "lib"},                  // to a directory; likewise
                              {"lib64", "lib"},                   // the package writes through this one
                              {"kept-link", "own.cfg"}};

}  // namespace

UpgradeSite::UpgradeSite(size_t files, size_t size, const std::string& parent) : mDir(parent) {
    order.installDir = at("installed");
    order.role = 3;
    order.backupDir = at("work/backup");
    order.reportFile = at("report.json");
    order.package = at("package.exe");

    mOldFiles = {{"own.cfg", "settings", 0640}, {"versions/7.dll", "seven", 0644}, {"lib/base.dll", "old base", 0755}};
    for (const char* name : {"current.dll", "dangling.dll", "shared", "lib64/base.dll", "new/deep/er/file.bin"}) {
        addToPackage(name, std::string("new ") + name);
    }
    constexpr unsigned kPermissions[] = {0644, 0755, 0600, 04755, 0664};
    for (size_t number = 0; number < files; ++number) {
        const std::string directory = number % 5 == 0 ? "" : "part" + std::to_string(number % 7) + "/";
        const std::string name = directory + "file" + std::to_string(number) + ".bin";
        // Of every four, three are replaced and one is added.
        if (number % 4 != 3) {
            mOldFiles.push_back({name, content("old " + name, number % 11 * size / 3), kPermissions[number % 5]});
        }
        addToPackage(name, content("new " + name, number % 13 * size / 4));
    }
    support::PackageSpec spec;
    spec.compressor = "zlib";
    spec.solid = false;
    spec.files.emplace_back("Orv Client\\OrvClient.exe", "client");
    for (auto [name, bytes] : mPackage) {
        std::replace(name.begin(), name.end(), '/', '\\');
        spec.files.emplace_back("Orv Server\\" + name, bytes);
    }
    support::makePackage(spec, order.package);
    support::writeText(at("usual"), "");
    mUsualPermissions = support::permissionsText(fs::status(at("usual")));
    reset();
    mOld = support::snapshot(order.installDir);
    makeNew();
}

std::string UpgradeSite::memory() {
    constexpr const char* kMemory = "/dev/shm";  // no such directory on Windows, whose disk is waited for then
    std::error_code ignored;
    return fs::is_directory(kMemory, ignored) ? kMemory : "";
}

void UpgradeSite::addToPackage(const std::string& name, const std::string& content) {
    mPackage.emplace_back(name, content);
}

void UpgradeSite::writeOld(const std::string& name, const std::string& content, unsigned permissions) {
    const std::string path = order.installDir + "/" + name;
    support::writeText(path, content);
    fs::permissions(path, static_cast<fs::perms>(permissions));
    // Not of today, and to the tick, on either system's clock.
    support::setModifiedTime(path, 131'000'000'123'456'789 - static_cast<int64_t>(content.size()));
}

void UpgradeSite::reset() {
    fs::remove_all(order.installDir);
    fs::remove_all(at("work"));
    fs::remove(order.reportFile);
    for (const auto& file : mOldFiles) writeOld(file.name, file.content, file.permissions);
    for (const auto& link : kLinks) {
        const std::string path = order.installDir + "/" + link.name;
        if (support::linksCanBeMade()) {
            support::makeLink(link.target, path);
        } else if (std::string(link.name) != "lib64") {
            writeOld(link.name, link.target, 0644);  // a file in its place
        }
    }
    fs::create_directory(order.installDir + "/empty");
}

void UpgradeSite::makeNew() {
    mNew = support::withoutTimes(support::snapshot(order.installDir));
    const support::TreeEntry directory = mNew.at("./empty");
    for (const auto& name : {"./new", "new/deep", "new/deep/er"}) mNew[name] = directory;
    for (auto [name, bytes] : mPackage) {
        if (name == "lib64/base.dll" && support::linksCanBeMade()) name = "lib/base.dll";
        const std::string key = (name.find('/') == std::string::npos ? "./" : "") + name;
        const auto old = mNew.find(key);
        const bool replaced = old != mNew.end() && old->second.text.starts_with("file ");
        // A file that is written anew keeps its permissions.
        const std::string permissions =
            replaced ? old->second.text.substr(5, old->second.text.find(' ', 5) - 5) : mUsualPermissions;
        mNew[key] = support::fileEntry(permissions, 0, bytes);
        const fs::path parent = fs::path(name).parent_path();
        if (!parent.empty()) {
            const std::string above = parent.parent_path().empty() ? "." : parent.parent_path().generic_string();
            mNew.try_emplace(above + "/" + parent.filename().string(), directory);
        }
    }
}

UpgradeSite::State UpgradeSite::state() const {
    const support::Tree found = support::snapshot(order.installDir);
    if (found == mOld) return State::Old;
    return support::withoutTimes(found) == mNew ? State::New : State::Mixed;
}

std::string UpgradeSite::differences() const {
    const std::string fromOld = support::difference(mOld, support::snapshot(order.installDir));
    const std::string fromNew = support::difference(mNew, support::withoutTimes(support::snapshot(order.installDir)));
    return fromOld.size() < fromNew.size() ? "from the old version:\n" + fromOld : "from the new version:\n" + fromNew;
}

bool UpgradeSite::hasJournal() const { return fs::exists(order.backupDir + "/" + JournalFile::kName); }
