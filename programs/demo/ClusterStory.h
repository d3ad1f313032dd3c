// The second half of the demonstration: a site of several nodes.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "Cluster.h"
#include "CompatibilityPage.h"
#include "Narration.h"
#include "Site.h"
#include "UpdateCloud.h"

/// A package that the demonstration has made.
struct SitePackage {
    UpdateCloud::Release release;
    std::string file;
};

/// Three servers and two clients move packages between them in every way there is, ask which versions go together, and
/// have one server install what a user has brought.
class ClusterStory {
public:
    struct Packages {
        SitePackage running;  ///< what all nodes run
        SitePackage ofCloud;
        SitePackage ofUser;
    };

    ClusterStory(Narration& narration, const Site& site, UpdateCloud& cloud, Packages packages, bool elevated);
    ~ClusterStory();
    ClusterStory(const ClusterStory&) = delete;
    ClusterStory& operator=(const ClusterStory&) = delete;

    void tell();

private:
    using Entry = std::shared_ptr<Tarnwick::OrvUpdate::IVersion>;

    bool meet();
    void askBeforeRules();
    void learnNewerRules();
    void requestVersions();
    void fetchFromCloud();
    void pullFromPeer();
    void upload();
    void passOnToPeer();
    void haveServerFetch();
    void installOnServer();
    void showStores();

    // ClusterInstall.cpp
    Cluster::Host hostOfServerB();
    bool launchInstaller(const Entry& entry);
    bool restartServerB();

    bool startNodes();
    /// Whether a client of one version may work with a system of the other, as the client's document says.
    bool goTogether(const std::string& client, const std::string& system) const;
    /// The entry of that version in the node's catalogue. @return null when there is none
    Entry entryOf(const std::string& node, const std::string& version);
    /// Lets the client learn what this server's catalogue holds.
    bool queryServer(const std::string& client, const std::string& server);
    /// Waits for the end of a transfer and tells how far it comes. @return its error, 0 for a good end
    int watch(Tarnwick::OrvUpdate::IDownload& transfer);
    /// One line: the file is there and is the package, byte for byte.
    void expectSame(const std::string& label, const std::string& file, const SitePackage& package);

    Narration& mNarration;
    const Site& mSite;
    UpdateCloud& mCloud;
    const Packages mPackages;
    const bool mElevated;  // whether the installer is started with raised rights
    CompatibilityPage mPage;
    std::shared_ptr<Tarnwick::OrvUpdate::maxVersionCompatible> mRules;
    std::atomic<bool> mAgreed{false};     // the host of server-b, to its installation
    std::atomic<bool> mToldToEnd{false};  // that host, when the installer ran
    Cluster mCluster;                     // its callbacks use what stands above
};
