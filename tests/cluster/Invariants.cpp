#include "Invariants.h"

#include <filesystem>
#include <thread>

#include "Archive/NSISDecompile.h"
#include "FileText.h"
#include "OpenFiles.h"
#include "Packages.h"
#include "Public/Base/ObjCounter.h"
#include "RunningThreads.h"
#include "VersionRequest.h"

namespace cluster {

namespace fs = std::filesystem;

namespace {

/// Of the records that travel in the runs.
long recordsAlive() {
    using Public::Base::ObjCounter;
    return ObjCounter::count("Include/TWProtocol/TWProtoUpgrade.pb", 19) +
           ObjCounter::count("Include/TWProtocol/TWProtoUpgrade.pb", 60) +
           ObjCounter::count("Include/TWProtocol/TWProtoDeviceCmd.pb", 366);
}

std::string describe(const fs::path& path) {
    const auto text = support::readText(path.string()).value_or("");
    return std::to_string(text.size()) + " " + std::to_string(std::hash<std::string>()(text));
}

std::string versionOf(const std::string& path) {
    NSISDecompile package;
    std::string version;
    return package.open(path, "") && package.getVersion(version) ? version : std::string();
}

/// The version that a place in a store names: node/source/platform/version/version.exe. Empty for any other place.
std::string versionOfPlace(const std::string& relative) {
    std::vector<std::string> parts;
    for (const auto& part : fs::path(relative)) parts.push_back(part.generic_string());
    if (parts.size() != 5 || (parts[1] != "Online" && parts[1] != "Manual")) return {};
    if (parts[2] != "Windows x64 All" && parts[2] != "Windows x86 All") return {};
    return parts[4] == parts[3] + ".exe" ? parts[3] : std::string();
}

/// @param relative to the directory of the stores   @return what is wrong, or nothing
std::string judgeFile(const std::string& path, const std::string& relative) {
    const auto place = versionOfPlace(relative);
    if (place.empty()) return "is not where a package lies";
    if (!Tarnwick::OrvUpdate::VersionRequest::isInvalidPakcage(path)) return {};  // told to be unsound, as it may be
    const auto version = versionOf(path);
    const auto* package = packageOf(version);
    if (!package) return "passes for a package of version " + version + ", which nobody made";
    if (version != place) return "passes for another version, " + version;
    if (support::readText(path) != package->bytes) return "passes for a sound package, but is another";
    return {};
}

}  // namespace

Violations findWrongPackages(const std::string& stores) {
    Violations found;
    for (const auto& file : fs::recursive_directory_iterator(stores)) {
        if (file.is_directory()) continue;
        const std::string path = file.path().generic_string();
        const auto relative = path.substr(stores.size() + 1);
        const auto wrong = judgeFile(path, relative);
        if (!wrong.empty()) found.push_back(relative + " " + wrong);
    }
    return found;
}

Fingerprint fingerprintOf(const std::string& directory, const std::vector<std::string>& except) {
    Fingerprint files;
    for (const auto& file : fs::recursive_directory_iterator(directory)) {
        const std::string relative = file.path().generic_string().substr(directory.size() + 1);
        const bool left = std::any_of(except.begin(), except.end(), [&](const std::string& name) {
            return relative == name || relative.starts_with(name + "/");
        });
        if (!left) files[relative] = file.is_regular_file() ? describe(file.path()) : "directory";
    }
    return files;
}

Violations findChanges(const Fingerprint& before, const Fingerprint& after) {
    Violations found;
    for (const auto& [name, content] : after) {
        const auto known = before.find(name);
        if (known == before.end()) found.push_back(name + " was written outside of the stores");
        if (known != before.end() && known->second != content) found.push_back(name + " was changed");
    }
    for (const auto& [name, content] : before) {
        if (!after.contains(name)) found.push_back(name + " was removed");
    }
    return found;
}

Holdings holdings() { return {support::countOpenHere(), support::countThreads(), recordsAlive()}; }

Violations findLeaks(const Holdings& before, std::chrono::milliseconds patience) {
    Violations found;
    // A thread that has done its work may not have left the system's list yet, which it does without a notice.
    const auto end = std::chrono::steady_clock::now() + patience;
    while (holdings().threads > before.threads && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    const auto now = holdings();
    if (now.threads > before.threads) {
        found.push_back(std::to_string(now.threads - before.threads) + " threads are left");
    }
    if (now.descriptors > before.descriptors) {
        found.push_back(std::to_string(now.descriptors - before.descriptors) + " files are left open");
    }
    if (now.records > before.records) {
        found.push_back(std::to_string(now.records - before.records) + " records are left in memory");
    }
    return found;
}

}  // namespace cluster
