// The nodes of a site, all in this process.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "OrvUpdate.h"
#include "Site.h"
#include "Tarnwick/MQ.h"

/// One program of the site: its queue object, its part of the engine, and its store on disk.
struct Node {
    std::string id;
    std::string store;                                                   ///< below the site
    std::shared_ptr<Tarnwick::OrvUpdate::TWMQSystemServer> server = {};  ///< one of the two is set
    std::shared_ptr<Tarnwick::OrvUpdate::TWMQClient> client = {};
    std::shared_ptr<Tarnwick::OrvUpdate::IVersionRequest> request = {};
};

/// Three servers and two clients on the bus of one process. Nodes leave in the reverse order of their start.
class Cluster {
public:
    /// What a server that is to be installed on asks and tells its host.
    struct Host {
        Tarnwick::OrvUpdate::PackageCallback agrees = {};
        Tarnwick::OrvUpdate::CheckCallback ends = {};
    };

    explicit Cluster(const Site& site) : mSite(site) {}
    ~Cluster();
    Cluster(const Cluster&) = delete;
    Cluster& operator=(const Cluster&) = delete;

    /// Each @return whether the node runs. @param httpPort of the page that the server offers, 0 for none
    bool startServer(const std::string& id, const std::string& version, uint16_t httpPort, const Host& host);
    bool startClient(const std::string& id, const std::string& version, const std::string& serverId);
    /// Ends the node as a program ends; its store stays.
    void end(const std::string& id);
    void endAll();

    Node& at(const std::string& id) { return mNodes.at(id); }
    Tarnwick::OrvUpdate::IVersionRequest& request(const std::string& id) { return *at(id).request; }
    /// Where the node's package of that version lies.
    std::string packagePath(const std::string& id, const std::string& source, const std::string& version) const;
    /// How many servers the node can reach.
    size_t reachable(const std::string& id);
    std::shared_ptr<Tarnwick::OrvUpdate::IOWorker> worker() const { return mWorker; }

private:
    bool start(Node node, Tarnwick::OrvUpdate::VersionType role, const std::string& version, const Host& host);
    std::shared_ptr<Tarnwick::OrvUpdate::IVersionRequest> makeRequest(const Node& node,
                                                                      Tarnwick::OrvUpdate::VersionType role) const;

    const Site& mSite;
    std::shared_ptr<Tarnwick::MQ::Bus> mBus = Tarnwick::MQ::Bus::embedded();
    std::shared_ptr<Tarnwick::OrvUpdate::IOWorker> mWorker = Tarnwick::OrvUpdate::IOWorker::create(2);
    std::map<std::string, Node> mNodes;
};

/// Looks again and again. @return false when it has not come true within half a minute
bool comesTrue(const std::function<bool()>& condition);
