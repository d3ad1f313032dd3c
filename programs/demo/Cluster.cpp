#include "Cluster.h"

#include <algorithm>
#include <chrono>
#include <thread>

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr const char* kSiteId = "site";

}  // namespace

bool comesTrue(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

Cluster::~Cluster() { endAll(); }

void Cluster::endAll() {
    while (!mNodes.empty()) end(mNodes.begin()->first);  // clients first, by their names
}

bool Cluster::startServer(const std::string& id, const std::string& version, uint16_t httpPort, const Host& host) {
    Tarnwick::MQ::NodeOptions options;
    options.id = options.serverId = id;
    options.systemId = kSiteId;
    options.version = version;
    if (httpPort != 0) options.addresses.emplace_back("127.0.0.1", httpPort);
    Node node{.id = id, .store = "cluster/" + id};
    node.server = TWMQSystemServer::create(mBus, options);
    return node.server && start(node, VersionType_Server, version, host);
}

bool Cluster::startClient(const std::string& id, const std::string& version, const std::string& serverId) {
    Tarnwick::MQ::NodeOptions options;
    options.id = id;
    options.serverId = serverId;
    options.systemId = kSiteId;
    options.version = version;
    Node node{.id = id, .store = "cluster/" + id};
    node.client = TWMQClient::create(mBus, options);
    return node.client && start(node, VersionType_Client, version, {});
}

std::shared_ptr<IVersionRequest> Cluster::makeRequest(const Node& node, VersionType role) const {
    return node.server ? IVersionRequest::allocVersionRequest(mWorker, node.server, role)
                       : IVersionRequest::allocVersionRequest(mWorker, node.client, role);
}

bool Cluster::start(Node node, VersionType role, const std::string& version, const Host& host) {
    node.request = makeRequest(node, role);
    const auto started = node.request->start(Version(version, 0), host.agrees, host.ends, mSite.path(node.store));
    const std::string id = node.id;
    mNodes[id] = std::move(node);
    return !started;
}

void Cluster::end(const std::string& id) {
    const auto node = mNodes.find(id);
    if (node == mNodes.end()) return;
    node->second.request->stop();
    mNodes.erase(node);
}

std::string Cluster::packagePath(const std::string& id, const std::string& source, const std::string& version) const {
    return mSite.path("cluster/" + id + "/" + source + "/Windows x64 All/" + version + "/" + version + ".exe");
}

size_t Cluster::reachable(const std::string& id) {
    Node& node = at(id);
    Tarnwick::MQ::ServerList servers;
    if (node.server) {
        servers = node.server->discover()->getSystemServerList(kSiteId);
    } else if (node.client->getServerList(servers)) {
        return 0;
    }
    return static_cast<size_t>(
        std::count_if(servers.begin(), servers.end(), [](const auto& server) { return server.second.reachable; }));
}
