#include "ClusterNode.h"

#include "RequestAccess.h"

namespace cluster {

using namespace Tarnwick::OrvUpdate;
using namespace Tarnwick::MQ;

ClusterNode::ClusterNode(Machine& machine, std::shared_ptr<Bus> bus, std::shared_ptr<Public::Network::IOWorker> worker,
                         NodePlan plan)
    : mMachine(machine), mBus(std::move(bus)), mWorker(std::move(worker)), mPlan(std::move(plan)) {
    std::filesystem::create_directories(mMachine.storeOf(id()));
}

ClusterNode::~ClusterNode() { end(); }

void ClusterNode::begin() {
    NodeOptions options;
    options.id = id();
    options.systemId = "site";
    options.serverId = mPlan.server;
    options.version = mVersion;
    if (mPlan.isServer()) {
        mServer = TWMQSystemServer::create(mBus, options);
        if (mServer) mRequest = std::make_shared<VersionRequest>(mWorker, mServer, VersionType_Server);
    } else {
        mClient = TWMQClient::create(mBus, options);
        if (mClient) mRequest = std::make_shared<VersionRequest>(mWorker, mClient, VersionType_Client);
    }
    // The id is still taken when something of an earlier life lives on, which `remains` tells.
    if (mRequest) start();
}

void ClusterNode::start() {
    // Each node is a process of its own, which scans its own store.
    VersionRequestAccess::forgetStore();
    mWish = std::make_shared<std::atomic<bool>>(false);  // an earlier life's may still come
    mRequest->start(
        Version(mVersion, 0),
        [log = mMachine.log(), consents = mPlan.consents, id = id()](const std::string& version, std::string&,
                                                                     std::string&) {
            log->add("  " + id + (consents ? " consents to " : " refuses ") + version);
            return consents;
        },
        [log = mMachine.log(), wish = mWish, id = id()] {
            log->add("  " + id + " is to end");
            wish->store(true);
            return true;
        },
        mMachine.storeOf(id()));
    VersionRequestAccess::forgetStore();
    mServing = true;
}

void ClusterNode::end() {
    if (!alive()) return;
    mEarlier.emplace_back(id() + "'s VersionRequest", mRequest);
    for (const auto& transfer : mTransfers) mEarlier.emplace_back(id() + "'s transfer", transfer);
    for (const auto& installer : mInstallers) mEarlier.emplace_back(id() + "'s installer", installer);
    if (mClient) mEarlier.emplace_back(id() + "'s queue client", mClient);
    if (mServer) mEarlier.emplace_back(id() + "'s queue server", mServer);
    mInstallers.clear();
    mTransfers.clear();
    mRequest->stop();
    mRequest.reset();
    mClient.reset();
    mServer.reset();
    mServing = false;
}

void ClusterNode::stopService() {
    mRequest->stop();
    mServing = false;
}

void ClusterNode::startService() { start(); }

std::shared_ptr<MQConnection> ClusterNode::linkTo(const std::string& to) const {
    if (mClient) return mClient->connection();
    return mServer ? mServer->connectionTo(to, "") : nullptr;
}

std::vector<std::string> ClusterNode::remains() const {
    std::vector<std::string> names;
    for (const auto& [name, object] : mEarlier) {
        if (!object.expired()) names.push_back(name);
    }
    return names;
}

}  // namespace cluster
