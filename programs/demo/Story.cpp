#include "Story.h"

#include <chrono>
#include <cstdlib>
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

/// One word of a command line, whatever is in it.
std::string inQuotes(const std::string& text) {
#if defined(_WIN32)
    return "\"" + text + "\"";
#else
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
#endif
}

/// Runs a command line to its end. @return its exit status
int run(const std::string& commandLine) {
    const int status = std::system(commandLine.c_str());
#if defined(WIFEXITED)
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;  // -1: ended by a signal
#else
    return status;
#endif
}

}  // namespace

SitePackage Story::of(const Package& package) { return {package.release, package.file}; }

Story::Story(bool keep) : mSite(keep) {}

int Story::tell() {
    if (!makePackages()) return 1;
    installOldVersion();
    upgrade();
    refuseTampered();
    restoreFailed();
    cancelHalfWay();
    ClusterStory(mNarration, mSite, mCloud, {of(mOld), of(mNew), of(mBrought)}).tell();
    return mNarration.unexpected();
}

bool Story::makePackages() {
    mNarration.step("The package compiler makes four packages");
    for (Package* package : {&mOld, &mNew, &mNext, &mBrought}) {
        package->file = mSite.path("packages/" + package->release.version + ".exe");
        const bool made = run(inQuotes(ORV_DEMO_MAKE_PACKAGE) + " --layout " + package->layout + " --size " +
                              std::to_string(package->kibibytes) + " --version " + package->release.version + " " +
                              inQuotes(package->file)) == 0;
        if (!mNarration.expect(
                made, package->release.version,
                package->layout + " layout, " + std::to_string(made ? fs::file_size(package->file) : 0) + " bytes")) {
            return false;
        }
    }
    return true;
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
    mNarration.expect(!fs::exists(mSite.path("store/Online/Windows x64 All/1.13.0.1/1.13.0.1.exe")), "store",
                      "the package has been thrown away");
    expectUnchanged(before);
}

void Story::restoreFailed() {
    mNarration.step("An installation fails half-way: a directory stands where a file must go");
    // The tree package again, as if newer, so that several files are replaced before the obstacle.
    Package broken{
        {"1.12.5.0", "2026-08-01 08:00:00", "meets an obstacle"}, "tree", mSite.path("packages/1.12.5.0.exe")};
    const bool made =
        run(inQuotes(ORV_DEMO_MAKE_PACKAGE) + " --layout tree --version 1.12.5.0 " + inQuotes(broken.file)) == 0;
    mNarration.expect(made, broken.release.version, "made");
    const fs::path obstacle = mSite.path("installed/tools/OrvService.exe");
    fs::remove(obstacle);
    fs::create_directories(obstacle / "in the way");
    const auto before = mSite.files("installed");
    mCloud.publish(broken.release);
    mCloud.offer(broken.release, readFile(broken.file), kUsualLine);
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
    fs::remove(mSite.path("report.json"));
    return run(inQuotes(mSite.path("program/orvhost")) + " " + runningVersion + " " + inQuotes(mSite.path("store")) +
               " " + inQuotes(mSite.path("installed")) + " " + inQuotes(mSite.path("report.json")) + " " +
               inQuotes(mSite.path("backup")) + " " + inQuotes(mSite.path("machine/Windows/system32")) +
               (cancel ? " cancel" : ""));
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
