// Installations, here and on peers.
#include "Deeds.h"
#include "IInstaller.h"
#include "OrvVersion.h"
#include "Verdicts.h"
#include "VersionRequest.h"

namespace cluster {

using namespace Tarnwick::OrvUpdate;

namespace {

void probeInstall(Book& book, const std::string& where, const std::weak_ptr<VersionRequest>& weak,
                  const std::weak_ptr<IVersion>& entry) {
    book.probe(where, [weak, entry] {
        const auto request = weak.lock();
        const auto version = entry.lock();
        if (!request || !version) return;
        request->getVersions();
        request->queryVersion(version);
        request->getCurVersion();
        version->getPackageFile();
        version->getServerid();
    });
}

}  // namespace

void Deeds::install(ClusterNode& node) {
    const auto entry = pickEntry(node, true);
    if (!entry) return;
    const auto activity = book().open(node.id(), "install " + nameOf(*entry), judgeInstallation);
    book().expectGone(activity->name() + "'s version", entry);
    const auto noting = [activity, weak = std::weak_ptr(node.request()), version = std::weak_ptr(entry),
                         pages = &book()](const char* callback, const std::string& detail) {
        activity->called(callback, detail);
        pages->count("install " + std::string(callback));
        probeInstall(*pages, activity->name(), weak, version);
    };
    const auto result = node.request()->install(
        entry, "C:\\Orv", true,
        [noting](const ErrorInfo& error) { noting("error", std::to_string(error.errorCode())); },
        [noting] { noting("downloaded", ""); }, [noting] { noting("installing", ""); });
    if (result) activity->called("refused", std::to_string(result.errorCode()));
    mCluster.goOn(mDice);
}

void Deeds::cancelInstall(ClusterNode& node) {
    const auto entry = pickEntry(node);
    if (!entry) return;
    const auto transfer = entry->getDownload(node.request());
    mCluster.log().add(node.id() + " cancels the installation of " + nameOf(*entry));
    node.request()->installCancel(entry);
    if (transfer) releaseAllOf(transfer);
    mCluster.goOn(mDice);
}

void Deeds::installOnPeer(ClusterNode& node) {
    const auto entry = pickEntry(node);
    const auto peer = pickPeer(node);
    if (!entry || peer.empty() || !node.client()) return;
    const auto installer = IInstaller::createRemoteInstaller(node.request(), entry, peer);
    node.keep(installer);
    const auto result = installer->start("", false, {}).errorCode();
    mCluster.log().add(node.id() + " has " + peer + " install " + nameOf(*entry) + ": " + std::to_string(result));
    mCluster.goOn(mDice);
}

void Deeds::grantWishes() {
    for (auto* node : mCluster.alive()) {
        if (!node->takeWish()) continue;
        const auto launches = mCluster.machine().launches(node->id());
        if (launches.empty()) {
            book().violation(node->id() + " was asked to end without an installer that was started");
            continue;
        }
        const auto version = Machine::versionIn(launches.back());
        mCluster.log().add(node->id() + " comes back as " + version);
        book().count("upgraded");
        mCluster.end(*node);
        node->becomes(version);
        mCluster.begin(*node);
    }
}

}  // namespace cluster
