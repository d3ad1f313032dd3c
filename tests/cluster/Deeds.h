// What hosts do with their engines in a run.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Cluster.h"
#include "PostDownload.h"

namespace cluster {

/// Each deed is done on a node that lives, and opens an activity for the callbacks that it gives. The dice decide the
/// rest. Where there is nothing to do it on (no entry, no peer), nothing is done.
class Deeds {
public:
    Deeds(Cluster& cluster, RunDice& dice) : mCluster(cluster), mDice(dice) {}

    // Asking.cpp
    void requestVersions(ClusterNode& node);
    void queryVersions(ClusterNode& node);
    void requestHistories(ClusterNode& node);
    void queryHistories(ClusterNode& node);
    void nameOtherNodes(ClusterNode& node);

    // Moving.cpp
    void fetch(ClusterNode& node);
    void cancelOne();
    /// After each deed: a pull that could not send has ended in silence, and tells so by its error, until it is started
    /// again.
    void noteSilentEnds();
    void push(ClusterNode& node);
    void upload(ClusterNode& node);
    /// Brings a package from the cloud to a peer by way of this node.
    void forward(ClusterNode& node);
    /// The host loses interest in a transfer that it holds.
    void letGo(ClusterNode& node);
    void fetchOnPeer(ClusterNode& node);
    /// Looks at every transfer and installer that the host holds.
    void poll(ClusterNode& node);

    // Installing.cpp
    void install(ClusterNode& node);
    void cancelInstall(ClusterNode& node);
    void installOnPeer(ClusterNode& node);
    /// Nodes that the engine has asked to end do so, and come back as what was installed.
    void grantWishes();

private:
    using Request = Tarnwick::OrvUpdate::VersionRequest;
    using Entry = std::shared_ptr<Tarnwick::OrvUpdate::IVersion>;
    using Transfer = std::shared_ptr<Tarnwick::OrvUpdate::IDownload>;

    struct Moving {
        std::weak_ptr<Tarnwick::OrvUpdate::IDownload> transfer;
        std::shared_ptr<Activity> activity;
    };

    Book& book() { return mCluster.book(); }
    void ask(ClusterNode& node, const std::string& what, size_t lasts, bool mayStayOpen,
             const std::function<void(Request&, const Tarnwick::OrvUpdate::RequestFinished&)>& begin);
    bool linkIsDead(const ClusterNode& node) const;
    bool mayStayOpen(const ClusterNode& node) const;
    /// @param elsewhere prefers one whose package must be fetched
    Entry pickEntry(ClusterNode& node, bool elsewhere = false);
    std::string pickPeer(const ClusterNode& node);
    std::shared_ptr<Tarnwick::OrvUpdate::PostDownload> makePush(ClusterNode& node, const std::string& path,
                                                                const std::string& peer,
                                                                Tarnwick::OrvUpdate::VersionSource source);
    void begin(ClusterNode& node, const std::string& what, const Transfer& transfer, size_t mostCalls);
    void expectArrival(Tarnwick::OrvUpdate::IDownload& transfer, const std::string& what, const std::string& version,
                       const std::string& target);
    void releaseAllOf(const Transfer& transfer);

    Cluster& mCluster;
    RunDice& mDice;
    std::vector<Moving> mMoving;
};

/// "version position" of an entry, for the log.
std::string nameOf(const Tarnwick::OrvUpdate::IVersion& entry);

}  // namespace cluster
