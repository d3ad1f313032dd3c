#include "ClusterStory.h"

#include <future>
#include <mutex>
#include <set>
#include <utility>

#include "Public/Base.h"

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr size_t kUsualLine = 400000;  // bytes a second

/// Clients and systems of 1.11 to 1.14 go together, whichever is newer.
const char kNewerRules[] =
    "{\n\t\"Version\":\"1.0.0.7\",\n\t\"ClientCompatibles\":[\n\t\t{\n"
    "\t\t\t\"System\":[\"Windows\"],\n"
    "\t\t\t\"SystemVersion\": { \"LowVersion\": \"1.11.0.0\", \"HigherVersion\": \"1.15.0.0\" },\n"
    "\t\t\t\"ClientSystem\":[\"Windows\"],\n"
    "\t\t\t\"ClientVersion\": { \"LowVersion\": \"1.11.0.0\", \"HigherVersion\": \"1.15.0.0\" }\n"
    "\t\t}\n\t]\n}";

/// What the nodes say to a request to all of them.
class Answers {
public:
    RequestFinished callback() const {
        return [state = mState](const std::string& node, const ErrorInfo& result, bool last) {
            std::lock_guard lock(state->mutex);
            (result ? state->failed : state->well).insert(node.empty() ? "the cloud" : node);
            if (last) state->done.set_value();
        };
    }
    /// @return whether the last answer has come
    bool wait() const {
        return mState->done.get_future().wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    }
    std::set<std::string> well() const {
        std::lock_guard lock(mState->mutex);
        return mState->well;
    }
    bool failed() const {
        std::lock_guard lock(mState->mutex);
        return !mState->failed.empty();
    }

private:
    struct State {
        std::mutex mutex;
        std::set<std::string> well, failed;
        std::promise<void> done;
    };
    std::shared_ptr<State> mState = std::make_shared<State>();
};

std::string listed(const std::set<std::string>& names) {
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "nobody" : text;
}

VersionCompatibles component(const std::string& version) {
    return {Public::Base::SystemType_Windows, 0, Version(version, 0)};
}

std::string inMind(bool yes) { return yes ? "yes" : "no"; }

}  // namespace

ClusterStory::ClusterStory(Narration& narration, const Site& site, UpdateCloud& cloud, Packages packages, bool elevated)
    : mNarration(narration),
      mSite(site),
      mCloud(cloud),
      mPackages(std::move(packages)),
      mElevated(elevated),
      mPage(kNewerRules),
      mCluster(site) {
    Public::Base::File::setExcutableFileFullPath(mSite.path("cluster/program"));
    Public::Base::System::setSystemDirectory(mSite.path("machine/Windows/system32"));
}

ClusterStory::~ClusterStory() {
    mCluster.endAll();
    Public::Base::System::setProgramStarter({});
    Public::Base::System::setSystemDirectory({});
    Public::Base::File::setExcutableFileFullPath({});
}

void ClusterStory::tell() {
    if (!meet()) return;
    askBeforeRules();
    learnNewerRules();
    requestVersions();
    fetchFromCloud();
    pullFromPeer();
    passOnToPeer();
    upload();
    haveServerFetch();
    installOnServer();
    mNarration.step("What lies in the stores now");
    showStores();
}

bool ClusterStory::startNodes() {
    const std::string& version = mPackages.running.release.version;
    return mCluster.startServer("server-a", version, 0, {}) &&
           mCluster.startServer("server-b", version, mPage.port(), hostOfServerB()) &&
           mCluster.startServer("server-c", version, 0, {}) && mCluster.startClient("client-1", version, "server-a") &&
           mCluster.startClient("client-2", version, "server-b");
}

bool ClusterStory::meet() {
    mNarration.step("Three servers and two clients of a site run " + mPackages.running.release.version);
    mSite.installHostAt("cluster/program", mCloud.address());
    if (!mNarration.expect(startNodes(), "started", "client-1 is linked to server-a, client-2 to server-b"))
        return false;
    const bool met = comesTrue([this] {
        for (const char* node : {"server-a", "server-b", "server-c", "client-1", "client-2"}) {
            if (mCluster.reachable(node) != 3) return false;
        }
        return true;
    });
    mNarration.expect(met, "presence", "every node sees the three servers");
    const bool elected = comesTrue([this] { return mCluster.at("client-1").client->masterId() == "server-a"; });
    mNarration.expect(elected, "master", mCluster.at("client-1").client->masterId());
    showStores();
    return met && elected;
}

bool ClusterStory::goTogether(const std::string& client, const std::string& system) const {
    return mRules->checkClientToSystemVersionIsCompatible(VersionType_Client, component(client), component(system));
}

void ClusterStory::askBeforeRules() {
    mNarration.step("client-2 asks which versions may work together");
    mRules = std::make_shared<maxVersionCompatible>(mSite.path("cluster/client-2/rules"), mCluster.worker());
    const std::string &old = mPackages.running.release.version, &wanted = mPackages.ofUser.release.version;
    mNarration.tell("rules", mRules->compatibleVersion() + ", which the program carries");
    const bool mixed = goTogether(old, wanted);
    mNarration.expect(!mixed, "asked", "a client of " + old + " with a system of " + wanted + ": " + inMind(mixed));
    const bool same = goTogether(old, old);
    mNarration.expect(same, "asked", "a client of " + old + " with a system of " + old + ": " + inMind(same));
}

void ClusterStory::learnNewerRules() {
    mNarration.step("server-b serves newer rules at http://127.0.0.1:" + std::to_string(mPage.port()) +
                    "/VersionCompatible");
    Tarnwick::MQ::ServerList servers;
    mCluster.at("client-2").client->getServerList(servers);
    mRules->inputSystemServerListInfo(servers);
    const bool learnt = comesTrue([this] { return mRules->compatibleVersion() == "1.0.0.7"; });
    mNarration.expect(learnt, "rules", mRules->compatibleVersion() + ", fetched from the page");
    const bool all = comesTrue([this] { return mPage.served() == 3; });
    mNarration.expect(all, "page", "asked " + std::to_string(mPage.served()) + " times: once for each server");
    const std::string file = mSite.path("cluster/client-2/rules/maxVersiomCompatible.dat");
    mNarration.expect(comesTrue([&] { return readFile(file) == kNewerRules; }), "saved",
                      "for the next start, as served");
    const std::string &old = mPackages.running.release.version, &wanted = mPackages.ofUser.release.version;
    const bool mixed = goTogether(old, wanted);
    mNarration.expect(mixed, "asked", "a client of " + old + " with a system of " + wanted + ": " + inMind(mixed));
}

void ClusterStory::requestVersions() {
    const std::string& version = mPackages.ofCloud.release.version;
    mNarration.step("client-1 asks all nodes for versions; the cloud offers " + version);
    mCloud.offer(mPackages.ofCloud.release, readFile(mPackages.ofCloud.file), kUsualLine);
    const auto told = std::make_shared<std::promise<void>>();
    mCluster.request("server-a").registerVersionRequestNotify([told, first = std::make_shared<std::once_flag>()] {
        std::call_once(*first, [&] { told->set_value(); });
    });
    const Answers answers;
    mCluster.request("client-1").requestVersion(answers.callback());
    const bool ended = answers.wait();
    mNarration.expect(ended && !answers.failed() && answers.well().size() == 4, "answered", listed(answers.well()));
    const bool notified = told->get_future().wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    mNarration.expect(notified, "told", "server-a that there may be something newer");
    mNarration.expect(entryOf("client-1", version) != nullptr, "newest",
                      mPackages.running.release.version + " -> " + version);
}

ClusterStory::Entry ClusterStory::entryOf(const std::string& node, const std::string& version) {
    for (const auto& entry : mCluster.request(node).getVersions()) {
        if (entry->getVersion() == Version(version, 0)) return entry;
    }
    return nullptr;
}

int ClusterStory::watch(IDownload& transfer) {
    float progress = 0, shown = 0;
    const bool ended = comesTrue([&] {
        transfer.getProgress(progress);
        if (progress - shown >= 0.25F && progress < 1.0F) {
            mNarration.tell("fetched", std::to_string(static_cast<int>(progress * 100)) + " %");
            shown = progress;
        }
        return transfer.finish() || transfer.getError();
    });
    if (!ended) return Public::Base::ErrorCode_RequestTimeout;
    return transfer.getError().errorCode();
}

void ClusterStory::expectSame(const std::string& label, const std::string& file, const SitePackage& package) {
    const std::string content = readFile(file);
    mNarration.expect(!content.empty() && content == readFile(package.file), label,
                      std::to_string(content.size()) + " bytes, each as in the package");
}

void ClusterStory::fetchFromCloud() {
    const std::string& version = mPackages.ofCloud.release.version;
    mNarration.step("server-a fetches " + version + " from the cloud");
    const Entry entry = entryOf("server-a", version);
    const auto transfer = entry ? entry->getDownload(mCluster.at("server-a").request) : nullptr;
    if (!mNarration.expect(transfer && !transfer->start({}), "started", "into the store of server-a")) return;
    const int error = watch(*transfer);
    mNarration.expect(error == 0, "ended", "with error " + std::to_string(error));
    expectSame("server-a", mCluster.packagePath("server-a", "Online", version), mPackages.ofCloud);
}

bool ClusterStory::queryServer(const std::string& client, const std::string& server) {
    Tarnwick::MQ::ServerList servers;
    mCluster.at(client).client->getServerList(servers);
    const Answers answers;
    mCluster.request(client).querySystemVersion({{server, servers[server]}}, answers.callback());
    return answers.wait() && !answers.failed();
}

void ClusterStory::pullFromPeer() {
    const std::string& version = mPackages.ofCloud.release.version;
    mNarration.step("client-2 pulls " + version + " from server-a, through its own server");
    mNarration.expect(queryServer("client-2", "server-a"), "asked", "server-a tells its catalogue");
    const Entry entry = entryOf("client-2", version);
    mNarration.expect(entry && entry->getServerid() == "server-a", "entry",
                      entry ? version + " on " + entry->getServerid() : "none");
    const auto transfer = entry ? entry->getDownload(mCluster.at("client-2").request) : nullptr;
    if (!mNarration.expect(transfer && !transfer->start({}), "started", "chunk by chunk over the queue")) return;
    const int error = watch(*transfer);
    mNarration.expect(error == 0, "ended", "with error " + std::to_string(error));
    expectSame("client-2", mCluster.packagePath("client-2", "Online", version), mPackages.ofCloud);
}

void ClusterStory::passOnToPeer() {
    const std::string& version = mPackages.ofCloud.release.version;
    mNarration.step("client-1 fetches " + version + " from the cloud and passes it on to server-c");
    Public::Base::JsonValue offered;
    offered["softversion"] = version;
    offered["description"] = mPackages.ofCloud.release.note;
    offered["url"] = "http://" + mCloud.address() + "/packages/" + version + ".exe";
    const auto entry = std::make_shared<OrvVersion>(mCluster.worker(), mSite.path("cluster/client-1"), "");
    entry->parseVersionFromHttp(offered);
    entry->setStoragePosition(StoragePosition_Cloud);
    const auto transfer = IDownload::createRemoteDownload(mCluster.at("client-1").request, entry, "server-c");
    if (!mNarration.expect(transfer && !transfer->start({}), "started", "in at one end, out at the other")) return;
    const int error = watch(*transfer);
    mNarration.expect(error == 0, "ended", "with error " + std::to_string(error));
    expectSame("client-1", mCluster.packagePath("client-1", "Online", version), mPackages.ofCloud);
    expectSame("server-c", mCluster.packagePath("server-c", "Online", version), mPackages.ofCloud);
}

void ClusterStory::upload() {
    const std::string& version = mPackages.ofUser.release.version;
    mNarration.step("A user of client-1 brings " + version + " and uploads it to the master");
    const auto ended = std::make_shared<std::promise<std::pair<std::string, int>>>();
    auto outcome = ended->get_future();
    const auto started = mCluster.request("client-1")
                             .uploadVersion(mPackages.ofUser.file, VersionSource_Manual,
                                            [ended](const std::string& master, const ErrorInfo& result) {
                                                ended->set_value({master, result.errorCode()});
                                            });
    const bool came = !started && outcome.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    const auto [master, error] = came ? outcome.get() : std::pair<std::string, int>("nobody", -1);
    mNarration.expect(came && error == 0, "ended", "at " + master + ", with error " + std::to_string(error));
    expectSame("server-a", mCluster.packagePath("server-a", "Manual", version), mPackages.ofUser);
}

void ClusterStory::haveServerFetch() {
    const std::string& version = mPackages.ofUser.release.version;
    mNarration.step("client-1 has server-b fetch " + version + " from the master, and watches");
    mNarration.expect(queryServer("client-1", "server-a"), "asked", "server-a tells its catalogue");
    const Entry entry = entryOf("client-1", version);
    const auto transfer =
        entry ? IDownload::createRemoteDownload(mCluster.at("client-1").request, entry, "server-b") : nullptr;
    if (!mNarration.expect(transfer && !transfer->start({}), "started", "no byte of it passes through client-1"))
        return;
    // A question may overtake the order, and the server would know of no transfer.
    comesTrue([&] { return entryOf("server-b", version) != nullptr; });
    const int error = watch(*transfer);
    mNarration.expect(error == 0, "ended", "with error " + std::to_string(error));
    expectSame("server-b", mCluster.packagePath("server-b", "Manual", version), mPackages.ofUser);
}

void ClusterStory::showStores() {
    for (const char* node : {"server-a", "server-b", "server-c", "client-1", "client-2"}) {
        mNarration.tell(node, "its store:");
        mNarration.show(mSite.tree("cluster/" + std::string(node)));
    }
}
