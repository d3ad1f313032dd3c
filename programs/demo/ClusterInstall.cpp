// A server of the site installs what a client asks it to.
#include <cstdio>
#include <map>
#include <string>

#include "ClusterStory.h"
#include "Public/Base.h"

using namespace Tarnwick::OrvUpdate;

namespace {

/// The nodes share this process, which goes on, so that the installer is given no process whose end it would have to
/// wait for.
bool startWithoutWaiting(const Public::Base::ProgramStart& ordered, bool elevated) {
    Public::Base::ProgramStart start = ordered;
    const std::string process = "\"" + std::to_string(Public::Base::Process::getProcessId()) + "\"";
    const size_t at = start.parameters.find(process);
    if (at != std::string::npos) start.parameters.replace(at, process.size(), "\"0\"");
    Public::Base::System::setProgramStarter({});
    std::printf("\n");  // the engine has named the program that it starts
    return elevated ? Public::Base::System::startElevated(start) : Public::Base::System::startPlain(start);
}

using Files = std::map<std::string, std::string>;

/// What the first held and the second does not hold as it was.
Files replaced(const Files& before, const Files& after) {
    Files files;
    for (const auto& [name, content] : before) {
        const auto now = after.find(name);
        if (now == after.end() || now->second != content) files[name] = content;
    }
    return files;
}

}  // namespace

Cluster::Host ClusterStory::hostOfServerB() {
    return {[this](const std::string& version, std::string& first, std::string& second) {
                mNarration.tell("asked", "the host of server-b agrees to " + version);
                first = mSite.path("cluster/report.json");
                second = mSite.path("cluster/backup");
                mAgreed = true;
                return true;
            },
            [this] {
                mToldToEnd = true;
                return true;
            }};
}

bool ClusterStory::launchInstaller(const Entry& entry) {
    Public::Base::System::setProgramStarter([elevated = mElevated](const Public::Base::ProgramStart& start) {
        return startWithoutWaiting(start, elevated);
    });
    const auto drive = IInstaller::createRemoteInstaller(mCluster.at("client-1").request, entry, "server-b");
    if (drive->start("", true, {})) return false;
    // A question may overtake the order: the server then knows of no installation, which the order's answer mends.
    float progress = 1;
    drive->getProgress(progress);
    // Asked no more once the host has agreed, since the server is about to go.
    const bool agreed = comesTrue([&] {
        if (!mAgreed) drive->getProgress(progress);
        return mAgreed.load();
    });
    mNarration.expect(agreed && !drive->finish() && progress < 1.0F, "watched", "server-b is at it");
    const bool ended = agreed && comesTrue([&] { return mToldToEnd && !drive->getError(); });
    mNarration.expect(ended, "launched", "the installer runs; server-b is told to end itself");
    if (!mToldToEnd) return false;
    mCluster.end("server-b");
    const bool missed = comesTrue([this] { return mCluster.reachable("server-a") == 2; });
    mNarration.expect(missed, "presence", "server-a sees that server-b is gone");
    const std::string report = mSite.path("cluster/report.json");
    Public::Base::JsonValue told;
    const bool reported =
        comesTrue([&] { return !told.read(Public::Base::SharedBuffer(readFile(report))) && told.isMember("result"); });
    const std::string result = reported ? told["result"]->toString() : "no report came";
    if (!mNarration.expect(result == "installed", "installer", result) || !restartServerB()) return false;
    const bool seen = comesTrue([&] {
        drive->getProgress(progress);
        return drive->finish() || drive->getError();
    });
    return mNarration.expect(
        seen && drive->finish() && !drive->getError() && progress == 1.0F, "watched",
        "client-1 sees that server-b runs the wanted version, error " + std::to_string(drive->getError().errorCode()));
}

bool ClusterStory::restartServerB() {
    const std::string& version = mPackages.ofUser.release.version;
    const bool started = mCluster.startServer("server-b", version, mPage.port(), hostOfServerB());
    const bool back = started && comesTrue([this] {
                          return mCluster.reachable("server-a") == 3 && mCluster.reachable("client-1") == 3;
                      });
    return mNarration.expect(back, "started", "server-b is back and runs " + version);
}

void ClusterStory::installOnServer() {
    const std::string& version = mPackages.ofUser.release.version;
    mNarration.step("client-1 has server-b install " + version);
    const auto installer = std::make_shared<OrvInstaller>(
        std::make_shared<OrvBackup>(mSite.path("machine/unused-backup")), mPackages.running.file, VersionType_Server);
    const bool started = !installer->start(mSite.path("cluster/program"), false, {});
    const bool prepared = started && comesTrue([&] { return installer->finish(); }) && !installer->getError();
    mNarration.expect(prepared, "before", "the program directory of server-b:");
    mNarration.show(mSite.tree("cluster/program"));
    const auto before = mSite.files("cluster/program");
    const Entry entry = entryOf("client-1", version);
    if (!entry || !launchInstaller(entry)) {
        mNarration.expect(false, "installed", "not to the end");
        return;
    }
    const auto after = mSite.files("cluster/program");
    mNarration.expect(after != before, "after", "the program directory of server-b:");
    mNarration.show(mSite.tree("cluster/program"));
    const Files saved = mSite.files("cluster/backup");
    mNarration.expect(!saved.empty() && saved == replaced(before, after), "backup",
                      "every replaced file was saved first:");
    mNarration.show(mSite.tree("cluster/backup"));
    const bool fits = goTogether(mPackages.running.release.version, version);
    mNarration.expect(fits, "asked", "a client of " + mPackages.running.release.version + " may work with it");
}
