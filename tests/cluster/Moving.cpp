// Transfers of packages.
#include <array>
#include <optional>

#include "Deeds.h"
#include "FileText.h"
#include "ForwardDownload.h"
#include "OrvDownload/ConnectionProviders.h"
#include "OrvVersion.h"
#include "Packages.h"
#include "PostDownload.h"
#include "Verdicts.h"
#include "VersionRequest.h"

namespace cluster {

using namespace Tarnwick::OrvUpdate;

namespace {

/// Whoever waits for a download from the cloud, and so a forward, hears of every later run of it too.
constexpr size_t kWithEveryRun = 1000;

struct Seen {
    int error = 0;
    bool whole = false;
};

/// Looks at the transfer from another thread, as it must be possible in its callback.
std::optional<Seen> look(Book& book, const std::string& where, const std::shared_ptr<IDownload>& transfer) {
    const auto seen = std::make_shared<Seen>();
    const bool came = book.probe(where, [transfer, seen] {
        float progress = 0;
        std::string name;
        transfer->getProgress(progress);
        transfer->getFileName(name);
        seen->error = transfer->getError().errorCode();
        seen->whole = transfer->finish();
    });
    return came ? std::optional<Seen>(*seen) : std::nullopt;
}

std::string sourceName(VersionSource source) { return source == VersionSource_Online ? "Online" : "Manual"; }

}  // namespace

std::string nameOf(const IVersion& entry) {
    const std::array<const char*, 4> positions{"nowhere", "here", "on the cloud", "on a node"};
    return entry.getVersion().toString() + " " + positions.at(static_cast<size_t>(entry.getStoragePosition()));
}

Deeds::Entry Deeds::pickEntry(ClusterNode& node, bool elsewhere) {
    const auto set = node.request()->getVersions();
    std::vector<Entry> entries(set.begin(), set.end());
    if (elsewhere && mDice.chance(80)) {
        std::erase_if(entries, [](const Entry& entry) { return entry->getStoragePosition() == StoragePosition_Local; });
    }
    return entries.empty() ? nullptr : mDice.pick(entries);
}

std::string Deeds::pickPeer(const ClusterNode& node) {
    auto ids = mCluster.ids(true);
    if (mDice.chance(15)) ids = mCluster.ids(false);
    std::erase(ids, node.id());
    return ids.empty() ? std::string() : mDice.pick(ids);
}

/// Starts it with a callback of an activity of its own.
void Deeds::begin(ClusterNode& node, const std::string& what, const Transfer& transfer, size_t mostCalls) {
    const std::weak_ptr<IDownload> weak = transfer;
    const auto activity = book().open(node.id(), what, [weak, mostCalls, this](const Activity& moving) {
        return judgeTransfer(moving, weak, mostCalls, mCluster.troubled());
    });
    mMoving.push_back({weak, activity});
    book().expectGone(activity->name() + "'s transfer", transfer);
    const auto started = transfer->start([activity, weak, pages = &book()] {
        const auto running = weak.lock();
        if (!running) {
            activity->called(kDone, "after the transfer's end");
            return;
        }
        const auto seen = look(*pages, activity->name(), running);
        if (!seen) return;
        activity->called(kDone, std::to_string(seen->error) + (seen->whole ? " whole" : ""));
        pages->count(kindOf(*running) + (seen->whole ? " finished" : " failed"));
    });
    if (started) {
        activity->called("refused", std::to_string(started.errorCode()));
        activity->release();
    }
    mCluster.goOn(mDice);
}

void Deeds::fetch(ClusterNode& node) {
    const auto entry = pickEntry(node, true);
    if (!entry) return;
    if (mDice.chance(20)) {
        // A host that tries again chooses afresh.
        const auto version = std::dynamic_pointer_cast<OrvVersion>(entry);
        if (version) version->resetDownload();
    }
    const auto transfer = entry->getDownload(node.request());
    if (!transfer) {
        mCluster.log().add(node.id() + " has no way to fetch " + nameOf(*entry));
        return;
    }
    const bool download = kindOf(*transfer) == "download";
    const auto what = kindOf(*transfer) + " " + nameOf(*entry);
    begin(node, what, transfer, download ? kWithEveryRun : 1);
    if (transfer->finish()) expectArrival(*transfer, what, entry->getVersion().toString(), entry->getPackageFile());
}

/// Where nothing has gone wrong in the run so far, the transfer has finished and the package is there.
void Deeds::expectArrival(IDownload& transfer, const std::string& what, const std::string& version,
                          const std::string& target) {
    if (mCluster.troubled()) return;
    const auto* package = packageOf(version);
    if (!transfer.finish()) {
        book().violation(what + " failed with " + std::to_string(transfer.getError().errorCode()) +
                         " though nothing was wrong");
    } else if (!package || support::readText(target) != package->bytes) {
        book().violation(what + " has finished, but " + target + " is not the package");
    } else {
        book().count("arrival seen");
    }
}

void Deeds::releaseAllOf(const Transfer& transfer) {
    for (const auto& moving : mMoving) {
        if (moving.transfer.lock() == transfer) moving.activity->release();
    }
}

void Deeds::noteSilentEnds() {
    std::erase_if(mMoving, [](const Moving& moving) { return moving.transfer.expired(); });
    for (const auto& moving : mMoving) {
        const auto transfer = moving.transfer.lock();
        if (transfer && moving.activity->calls(kDone) == 0 && endedInSilence(*transfer)) moving.activity->release();
    }
}

void Deeds::cancelOne() {
    std::vector<Transfer> all;
    std::vector<Transfer> running;
    for (const auto& moving : mMoving) {
        const auto transfer = moving.transfer.lock();
        if (!transfer) continue;
        all.push_back(transfer);
        if (!transfer->finish() && !transfer->getError()) running.push_back(transfer);
    }
    if (all.empty()) return;
    const auto transfer = !running.empty() && mDice.chance(80) ? mDice.pick(running) : mDice.pick(all);
    if (std::count(running.begin(), running.end(), transfer) > 0) book().count("cancelled under way");
    const auto code = transfer->cancel().errorCode();
    mCluster.log().add("cancel of a " + kindOf(*transfer) + " gives " + std::to_string(code));
    if (code == 0) releaseAllOf(transfer);
    mCluster.goOn(mDice);
}

void Deeds::push(ClusterNode& node) {
    const auto& package = mDice.pick(packages());
    const auto peer = pickPeer(node);
    if (peer.empty()) return;
    const auto source = mDice.chance(50) ? VersionSource_Online : VersionSource_Manual;
    const auto transfer = makePush(node, mCluster.machine().chosenPackage(package.version), peer, source);
    node.keep(transfer);
    const auto what = "push " + package.version + " to " + peer;
    begin(node, what, transfer, 1);
    expectArrival(*transfer, what, package.version,
                  mCluster.machine().storeOf(peer) + "/" + placeOf(package.version, sourceName(source)));
}

std::shared_ptr<PostDownload> Deeds::makePush(ClusterNode& node, const std::string& path, const std::string& peer,
                                              VersionSource source) {
    std::shared_ptr<IGetConnection> provider;
    if (node.client()) provider = std::make_shared<GetClientConnection>(node.client());
    if (node.server()) provider = std::make_shared<GetServerConnection>(node.server(), peer);
    return std::make_shared<PostDownload>(node.request(), path, provider, source, peer);
}

void Deeds::forward(ClusterNode& node) {
    const auto entry = pickEntry(node, true);
    const auto peer = pickPeer(node);
    if (!entry || peer.empty()) return;
    const auto first = entry->getDownload(node.request());
    if (!first) return;
    const auto both =
        std::make_shared<ForwardDownload>(first, makePush(node, entry->getPackageFile(), peer, VersionSource_Online));
    node.keep(both);
    begin(node, "forward of " + nameOf(*entry) + " to " + peer, both, kWithEveryRun);
}

void Deeds::letGo(ClusterNode& node) {
    if (node.transfers().empty()) return;
    mCluster.log().add(node.id() + " lets go of a transfer");
    node.letGo(mDice.below(node.transfers().size()));
    mCluster.goOn(mDice);
}

void Deeds::upload(ClusterNode& node) {
    if (!node.client()) return;
    const auto& package = mDice.pick(packages());
    const auto activity = book().open(node.id(), "upload " + package.version, [this](const Activity& upload) {
        const size_t calls = upload.calls(kDone);
        if (calls > 1) return "its callback ran " + std::to_string(calls) + " times";
        // Its push may wait for the query for ever.
        if (calls == 0 && !upload.released() && !mCluster.troubled()) return std::string("it has never ended");
        return std::string();
    });
    const auto result = node.request()->uploadVersion(
        mCluster.machine().chosenPackage(package.version), VersionSource_Manual,
        [activity, pages = &book()](const std::string& master, const ErrorInfo& error) {
            activity->called(kDone, "to " + master + " " + std::to_string(error.errorCode()));
            pages->count(error ? "upload failed" : "upload finished");
        });
    if (result) {
        activity->called("refused", std::to_string(result.errorCode()));
        activity->release();
    }
    mCluster.goOn(mDice);
}

void Deeds::fetchOnPeer(ClusterNode& node) {
    const auto entry = pickEntry(node, true);
    const auto peer = pickPeer(node);
    if (!entry || peer.empty()) return;
    const auto transfer = IDownload::createRemoteDownload(node.request(), entry, peer);
    if (!transfer) {
        mCluster.log().add(node.id() + " cannot have " + peer + " fetch " + nameOf(*entry));
        return;
    }
    node.keep(transfer);
    const bool remote = kindOf(*transfer) == "fetch on a peer";
    begin(node, kindOf(*transfer) + " of " + nameOf(*entry) + " on " + peer, transfer, remote ? 0 : kWithEveryRun);
}

void Deeds::poll(ClusterNode& node) {
    const auto look = [&](auto& kept, const char* what) {
        for (size_t i = 0; i < kept.size(); ++i) {
            float progress = 0;
            const auto polled = kept[i]->getProgress(progress).errorCode();
            mCluster.goOn(mDice);
            mCluster.log().add(node.id() + " polls " + what + " " + std::to_string(i) + ": " + std::to_string(polled) +
                               " " + std::to_string(progress) + " " + std::to_string(kept[i]->getError().errorCode()) +
                               (kept[i]->finish() ? " finished" : ""));
            if (!(progress >= 0 && progress <= 1)) book().violation(node.id() + " sees a progress outside of 0 to 1");
            if (kept[i]->finish() && !kept[i]->getError()) book().count(std::string(what) + " seen finished");
        }
    };
    look(node.transfers(), "transfer");
    look(node.installers(), "installer");
}

}  // namespace cluster
