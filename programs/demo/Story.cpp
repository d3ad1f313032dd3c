#include "Story.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

#include "OrvUpdate.h"
#include "Public/Base.h"

namespace fs = std::filesystem;
using namespace Tarnwick::OrvUpdate;

namespace {

constexpr auto kReportWithin = std::chrono::seconds(60);
// Bytes a second.
constexpr size_t kUsualLine = 400000;
constexpr size_t kSlowLine = 60000;

}  // namespace

SitePackage Story::of(const Package& package) { return {package.release, package.file}; }

Story::Story(const Options& options) : mOptions(options), mSite(options.keep), mCloud(options.cloud) {}

std::vector<Story::Package*> Story::allPackages() { return {&mOld, &mNew, &mNext, &mBrought, &mBroken}; }

std::vector<std::string> Story::makingOf(const Package& package) {
    return {"--layout",
            package.layout,
            "--size",
            std::to_string(package.kibibytes),
            "--version",
            package.release.version,
            package.release.version + ".exe"};
}

void Story::listPackages() {
    for (const Package* package : allPackages()) {
        std::string line;
        for (const auto& word : makingOf(*package)) line += (line.empty() ? "" : " ") + word;
        std::printf("%s\n", line.c_str());
    }
}

/// Takes it from where packages were made beforehand, or makes it.
bool Story::obtain(const Package& package) {
    if (!mOptions.packages.empty()) {
        return Public::Base::File::copy(mOptions.packages + "/" + package.release.version + ".exe", package.file);
    }
    std::vector<std::string> words = makingOf(package);
    words.insert(words.begin(), ORV_DEMO_MAKE_PACKAGE);
    words.back() = package.file;
    return Public::Base::Process::run(words) == 0;
}

int Story::tell() {
    if (!makePackages()) return 1;
    installOldVersion();
    upgrade();
    refuseTampered();
    restoreFailed();
    cancelHalfWay();
    ClusterStory(mNarration, mSite, mCloud, {of(mOld), of(mNew), of(mBrought)}, mOptions.elevated).tell();
    return mNarration.unexpected();
}

bool Story::makePackages() {
    mNarration.step("The package compiler makes five packages");
    const auto packages = allPackages();
    return std::all_of(packages.begin(), packages.end(), [this](Package* package) {
        package->file = mSite.path("packages/" + package->release.version + ".exe");
        const bool made = obtain(*package);
        const std::string size = std::to_string(made ? Public::Base::File::getLength(package->file) : 0);
        return mNarration.expect(made, package->release.version, package->layout + " layout, " + size + " bytes");
    });
}

void Story::installOldVersion() {
    mNarration.step("A server runs " + mOld.release.version);
    mSite.installHost(mCloud.address());
    const auto backup = std::make_shared<OrvBackup>(mSite.path("machine/unused-backup"));
    const auto installer = std::make_shared<OrvInstaller>(backup, mOld.file, VersionType_Server);
    const bool started = !installer->start(mSite.path("installed"), false, {});
    while (started && !installer->finish()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    mNarration.expect(started && !installer->getError() && !mSite.files("installed").empty(), "installed",
                      mSite.path("installed"));
    mNarration.show(mSite.tree("installed"));
}

void Story::upgrade() {
    mNarration.step("The update cloud at " + mCloud.address() + " offers " + mNew.release.version);
    mCloud.publish(mOld.release);
    mCloud.publish(mNew.release);
    mCloud.offer(mNew.release, readFile(mNew.file), kUsualLine);
    const auto before = mSite.files("installed");
    const int status = runHost(mOld.release.version, false);
    mNarration.expect(status == 0, "host", "has ended with status " + std::to_string(status));
    const Report report = waitForReport();
    mNarration.expect(report.result == "installed", "installer", report.result + report.reason);
    mNarration.expect(mSite.files("installed") != before, "after", "what is installed now:");
    mNarration.show(mSite.tree("installed"));
    mNarration.expect(mSite.files("backup") == before, "backup", "every replaced file was saved first:");
    mNarration.show(mSite.tree("backup"));
}

void Story::refuseTampered() {
    mNarration.step("The cloud serves " + mNext.release.version + " with one byte changed");
    std::string tampered = readFile(mNext.file);
    tampered[tampered.size() / 2] = static_cast<char>(tampered[tampered.size() / 2] ^ 1);
    mCloud.publish(mNext.release);
    mCloud.offer(mNext.release, tampered, kUsualLine);
    const auto before = mSite.files("installed");
    const int status = runHost(mNew.release.version, false);
    mNarration.expect(status == 4, "host", "has refused the package and goes on, status " + std::to_string(status));
    mNarration.expect(!fs::exists(sitePath(mSite.path("store/Online/Windows x64 All/1.13.0.1/1.13.0.1.exe"))), "store",
                      "the package has been thrown away");
    expectUnchanged(before);
}

void Story::restoreFailed() {
    mNarration.step("An installation fails half-way: a directory stands where a file must go");
    const fs::path obstacle = sitePath(mSite.path("installed/tools/OrvService.exe"));
    fs::remove(obstacle);
    fs::create_directories(obstacle / "in the way");
    const auto before = mSite.files("installed");
    mCloud.publish(mBroken.release);
    mCloud.offer(mBroken.release, readFile(mBroken.file), kUsualLine);
    const int status = runHost(mNew.release.version, false);
    mNarration.expect(status == 0, "host", "has ended with status " + std::to_string(status));
    const Report report = waitForReport();
    mNarration.expect(report.result == "restored", "installer", report.result + report.reason);
    expectUnchanged(before);
    fs::remove_all(obstacle);
}

void Story::cancelHalfWay() {
    mNarration.step("The line is slow, and the user cancels " + mNext.release.version);
    mCloud.offer(mNext.release, readFile(mNext.file), kSlowLine);
    const auto before = mSite.files("installed");
    const auto stored = mSite.files("store");
    const int status = runHost(mNew.release.version, true);
    mNarration.expect(status == 5, "host", "goes on, status " + std::to_string(status));
    mNarration.expect(mSite.files("store") == stored, "store", "holds nothing of the cancelled package");
    expectUnchanged(before);
}

void Story::expectUnchanged(const Files& before) {
    mNarration.expect(mSite.files("installed") == before, "installed", "every file is as it was");
}

int Story::runHost(const std::string& runningVersion, bool cancel) {
    fs::remove(sitePath(mSite.path("report.json")));
    std::vector<std::string> words{mSite.path("program/") + ORV_DEMO_HOST, runningVersion};
    for (const char* place : {"store", "installed", "report.json", "backup", "machine/Windows/system32"}) {
        words.push_back(mSite.path(place));
    }
    if (cancel) words.emplace_back("cancel");
    if (mOptions.elevated) words.emplace_back("elevated");
    return Public::Base::Process::run(words);
}

Story::Report Story::waitForReport() const {
    const auto deadline = std::chrono::steady_clock::now() + kReportWithin;
    while (std::chrono::steady_clock::now() < deadline) {
        Public::Base::JsonValue report;
        if (!report.read(Public::Base::SharedBuffer(readFile(mSite.path("report.json")))) &&
            report.isMember("result")) {
            const int error = report["error"]->toInt();
            const std::string reason = report["reason"]->toString() + " (error " + std::to_string(error) + ")";
            return {report["result"]->toString(), error == 0 ? "" : ": " + reason};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return {"no report came", ""};
}
