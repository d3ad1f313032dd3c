// One node of a run.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "IDownload.h"
#include "IInstaller.h"
#include "Machine.h"
#include "Tarnwick/MQ/Bus.h"
#include "VersionRequest.h"

namespace cluster {

/// What a node is, all its lives.
struct NodePlan {
    std::string id;
    std::string server;  ///< of a client; empty for a server
    bool consents = true;
    bool isServer() const { return server.empty(); }
};

/// A host: its queue object, its VersionRequest on a store of its own, and the transfers that the host itself holds. It
/// may end, with all that it holds, and begin anew on the same store. Used on the run's thread alone.
class ClusterNode {
public:
    ClusterNode(Machine& machine, std::shared_ptr<Tarnwick::MQ::Bus> bus,
                std::shared_ptr<Public::Network::IOWorker> worker, NodePlan plan);
    ~ClusterNode();

    const NodePlan& plan() const { return mPlan; }
    const std::string& id() const { return mPlan.id; }
    bool alive() const { return mRequest != nullptr; }
    bool serving() const { return mServing; }
    const std::string& version() const { return mVersion; }
    /// Null unless alive.
    const std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest>& request() const { return mRequest; }
    const std::shared_ptr<Tarnwick::MQ::TWMQClient>& client() const { return mClient; }
    const std::shared_ptr<Tarnwick::MQ::TWMQSystemServer>& server() const { return mServer; }
    std::shared_ptr<Tarnwick::MQ::MQConnection> linkTo(const std::string& id) const;

    /// Joins the cluster and starts the engine on the store, as the version that was installed last.
    void begin();
    /// Lets go of everything.
    void end();
    /// Ends the message service, or starts it again, while the node stays.
    void stopService();
    void startService();

    /// True once after the engine has asked the host to end, because an installer was launched.
    bool takeWish() { return mWish->exchange(false); }
    /// What was installed is what runs from the next beginning.
    void becomes(const std::string& version) { mVersion = version; }

    /// Keeps what the host has made for itself.
    void keep(std::shared_ptr<Tarnwick::OrvUpdate::IDownload> transfer) { mTransfers.push_back(std::move(transfer)); }
    void keep(std::shared_ptr<Tarnwick::OrvUpdate::IInstaller> installer) {
        mInstallers.push_back(std::move(installer));
    }
    void letGo(size_t transfer) { mTransfers.erase(mTransfers.begin() + static_cast<std::ptrdiff_t>(transfer)); }
    const auto& transfers() const { return mTransfers; }
    const auto& installers() const { return mInstallers; }

    /// Names of what earlier lives have left in memory.
    std::vector<std::string> remains() const;

private:
    void start();

    Machine& mMachine;
    const std::shared_ptr<Tarnwick::MQ::Bus> mBus;
    const std::shared_ptr<Public::Network::IOWorker> mWorker;
    const NodePlan mPlan;
    std::string mVersion = "1.0.0.0";
    bool mServing = false;
    std::shared_ptr<std::atomic<bool>> mWish = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<Tarnwick::MQ::TWMQClient> mClient;
    std::shared_ptr<Tarnwick::MQ::TWMQSystemServer> mServer;
    std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest> mRequest;
    std::vector<std::shared_ptr<Tarnwick::OrvUpdate::IDownload>> mTransfers;
    std::vector<std::shared_ptr<Tarnwick::OrvUpdate::IInstaller>> mInstallers;
    std::vector<std::pair<std::string, std::weak_ptr<void>>> mEarlier;
};

}  // namespace cluster
