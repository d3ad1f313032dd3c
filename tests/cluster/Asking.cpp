// Requests to all nodes of the cluster.
#include "Deeds.h"
#include "OrvVersion.h"
#include "Verdicts.h"
#include "VersionRequest.h"

namespace cluster {

using namespace Tarnwick::OrvUpdate;
using Tarnwick::MQ::ServerList;

namespace {

void probeRequest(Book& book, const std::string& where, const std::weak_ptr<VersionRequest>& weak) {
    book.probe(where, [weak] {
        const auto request = weak.lock();
        if (!request) return;
        request->getVersions();
        request->getReleaseHistory();
        request->getCurVersion();
        request->getServerId();
        std::set<std::string> nodes;
        request->getOtherNodes(nodes);
    });
}

}  // namespace

/// @param lasts how many last calls are due   @param mayStayOpen a link is dead: the queue refuses, and tells nobody
void Deeds::ask(ClusterNode& node, const std::string& what, size_t lasts, bool mayStayOpen,
                const std::function<void(Request&, const RequestFinished&)>& begin) {
    const auto activity = book().open(node.id(), what, [lasts, mayStayOpen](const Activity& asked) {
        return judgeQuestion(asked, lasts, mayStayOpen);
    });
    const std::weak_ptr<VersionRequest> weak = node.request();
    begin(*node.request(),
          [activity, weak, pages = &book()](const std::string& id, const ErrorInfo& result, bool last) {
              activity->called(kAnswer, "of " + (id.empty() ? "-" : id) + " " + std::to_string(result.errorCode()) +
                                            (last ? " last" : ""));
              if (last) pages->count(result ? "question failed" : "question answered");
              probeRequest(*pages, activity->name(), weak);
          });
    mCluster.goOn(mDice);
}

bool Deeds::linkIsDead(const ClusterNode& node) const {
    const auto dead = [](const std::shared_ptr<Tarnwick::MQ::MQConnection>& link) {
        return link && link->connectionState() == Tarnwick::MQ::ConnectionState_Dead;
    };
    if (node.client()) return dead(node.client()->connection());
    std::set<std::string> ids;
    node.request()->getOtherNodes(ids);
    for (const auto& server : node.server()->discover()->getSystemServerList("site")) ids.insert(server.first);
    for (const auto& id : ids) {
        if (dead(node.server()->connectionTo(id, ""))) return true;
    }
    return false;
}

/// Whether a request of a broadcast may be refused. On threads a link may fail at the moment of asking.
bool Deeds::mayStayOpen(const ClusterNode& node) const {
    return linkIsDead(node) || (mCluster.pace() == Pace::Threads && mCluster.troubled());
}

void Deeds::requestVersions(ClusterNode& node) {
    ask(node, "requestVersion", 1, mayStayOpen(node),
        [](Request& request, const RequestFinished& callback) { request.requestVersion(callback); });
}

void Deeds::queryVersions(ClusterNode& node) {
    ServerList servers;
    if (node.server()) servers = node.server()->discover()->getSystemServerList("site");
    ask(node, "querySystemVersion", 1, mayStayOpen(node), [&](Request& request, const RequestFinished& callback) {
        node.server() ? request.querySystemVersion(servers, callback) : request.querySystemVersion(callback);
    });
}

void Deeds::requestHistories(ClusterNode& node) {
    ServerList servers;
    if (node.client()) node.client()->getServerList(servers);
    const bool knowsNobody = node.client() && servers.empty();
    ask(node, "requestReleaseHistory", knowsNobody ? 2 : 1, mayStayOpen(node),
        [](Request& request, const RequestFinished& callback) { request.requestReleaseHistory(callback); });
}

void Deeds::queryHistories(ClusterNode& node) {
    ServerList servers;
    if (node.client()) node.client()->getServerList(servers);
    const bool knowsNobody = node.client() && servers.empty();
    ask(node, "queryReleaseHistory", knowsNobody ? 2 : 1, mayStayOpen(node),
        [](Request& request, const RequestFinished& callback) { request.queryReleaseHistory(callback); });
}

void Deeds::nameOtherNodes(ClusterNode& node) {
    std::set<std::string> others;
    for (const auto& id : mCluster.ids(mDice.chance(50))) {
        if (id != node.id() && mDice.chance(40)) others.insert(id);
    }
    if (mDice.chance(10)) others.insert("nobody");
    mCluster.log().add(node.id() + " names " + std::to_string(others.size()) + " other nodes");
    node.request()->setOtherNodes(others);
}

}  // namespace cluster
