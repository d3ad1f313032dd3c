// A request to all servers of a cluster as the cluster grows, on the bus of one process. There is no peer: what one
// node costs beside a cluster of ten shows whether the growth is linear.
#include <malloc.h>

#include <chrono>
#include <condition_variable>
#include <map>

#include "Bench.h"
#include "MQ/EmbeddedBus.h"
#include "ManualClock.h"
#include "OrvVersion.h"
#include "VersionRequest.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;
using Tarnwick::MQ::EmbeddedBus;
using Tarnwick::MQ::NodeOptions;
using Tarnwick::MQ::ServerList;

namespace {

constexpr unsigned kBeat = 500;      // milliseconds between two announcements of a server
constexpr double kLeastRatio = 0.8;  // of the cost of a node beside that in the smallest cluster

/// Bytes that the process has allocated and not given back.
double heldBytes() {
    const auto held = ::mallinfo2();
    return static_cast<double>(held.uordblks + held.hblkhd);
}

double secondsOf(const Step& step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::shared_ptr<OrvVersion> package(const std::string& version) {
    auto entry = std::make_shared<OrvVersion>(nullptr, "", "server");
    entry->setVersion(version);
    entry->setStoragePosition(StoragePosition_Local);
    return entry;
}

/// That many servers, each with its service and two packages, one of them its own; and a client of the first. Time
/// stands still but for the beats that are asked for, so that presence does not run beside what is measured.
class Site {
public:
    explicit Site(int servers) {
        for (int index = 0; index < servers; ++index) addServer(index);
        mBus->settle();
        mClient = TWMQClient::create(mBus, options("client", mServers.front().node->myMqId()));
        require(mClient != nullptr, "the client does not join");
        mRequest = std::make_shared<VersionRequest>(mWorker, mClient, VersionType_Client);
        beat();
        ServerList list;
        mClient->getServerList(list);
        require(list.size() == mServers.size(), "the client does not know all servers");
    }
    ~Site() {
        mRequest.reset();
        mClient.reset();
        mServers.clear();
        mBus->settle();
    }

    void beat() {
        mClock.advance(kBeat);
        mBus->settle();
    }
    /// Asks all servers through the first one. @param onAnswer runs in each call of the callback
    void ask(const Step& onAnswer = {}) {
        std::mutex mutex;
        std::condition_variable changed;
        size_t answered = 0;
        bool over = false;
        mRequest->querySystemVersion([&](const std::string&, const ErrorInfo& result, bool isLast) {
            std::lock_guard lock(mutex);
            if (!result) ++answered;
            if (onAnswer) onAnswer();
            over = isLast;
            changed.notify_all();
        });
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return over; });
        require(answered == mServers.size(), "a server has not answered");
        require(mRequest->getVersions().size() == mServers.size() + 1, "a version is missing");
    }

private:
    struct Server {
        std::shared_ptr<TWMQSystemServer> node;
        std::shared_ptr<VersionRequest> request;
    };

    static NodeOptions options(const std::string& id, const std::string& serverId = {}) {
        NodeOptions node;
        node.id = id;
        node.systemId = "site";
        node.serverId = serverId;
        return node;
    }
    void addServer(int index) {
        Server server{TWMQSystemServer::create(mBus, options("server" + std::to_string(index))), nullptr};
        require(server.node != nullptr, "a server does not join");
        server.request = std::make_shared<VersionRequest>(mWorker, server.node, VersionType_Server);
        require(!server.request->start(Version("1.0", 0), {}, {}, freshDirectory("cluster")),
                "a server does not start");
        server.request->addVersion(package("2.0"));
        server.request->addVersion(package("3." + std::to_string(index)));
        mServers.push_back(std::move(server));
    }

    support::ManualClock mClock;
    std::shared_ptr<EmbeddedBus> mBus = std::make_shared<EmbeddedBus>();
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
    std::vector<Server> mServers;
    std::shared_ptr<TWMQClient> mClient;
    std::shared_ptr<VersionRequest> mRequest;
};

/// The rows of one operation, each beside the smallest cluster's.
class Growth {
public:
    Growth(const Report& report, std::string operation, std::string unit)
        : mReport(report), mOperation(std::move(operation)), mUnit(std::move(unit)) {}

    void add(int servers, double each) {
        Row row{.name = mOperation + ", " + std::to_string(servers) + " servers", .ours = each, .unit = mUnit};
        if (!mFirst) {
            mFirst = each;
        } else {
            row.peer = "itself, 10 servers";
            row.theirs = mFirst;
            row.ratio = *mFirst / each;
            row.target = kLeastRatio;
            row.holds = *row.ratio >= kLeastRatio;
        }
        mReport(row);
    }

private:
    const Report& mReport;
    const std::string mOperation;
    const std::string mUnit;
    std::optional<double> mFirst;
};

/// The most that one of some requests takes beyond what was held before, in bytes. In a small cluster most of them are
/// answered before the last server is asked.
double memoryOf(Site& site, int requests) {
    site.ask();
    const double before = heldBytes();
    double most = before;
    for (int count = 0; count < requests; ++count) site.ask([&] { most = std::max(most, heldBytes()); });
    return most - before;
}

}  // namespace

void measureCluster(const Report& report) {
    Growth time(report, "ask for versions", "us/node");
    Growth memory(report, "ask for versions, memory", "bytes/node");
    Growth held(report, "a server's view of the cluster", "bytes/pair");
    Growth presence(report, "one beat of presence", "us/pair");
    for (const int servers : {10, 100, 1000}) {
        const double before = heldBytes();
        Site site(servers);
        const double pairs = static_cast<double>(servers) * servers;
        held.add(servers, (heldBytes() - before) / pairs);
        memory.add(servers, memoryOf(site, 10000 / servers) / servers);
        const int repeats = 1000 / servers;  // a short request is measured as a row of them
        const double asked = medianSeconds(
            [&] {
                for (int count = 0; count < repeats; ++count) site.ask();
            },
            5);
        time.add(servers, asked * 1e6 / repeats / servers);
        presence.add(servers, secondsOf([&] { site.beat(); }) * 1e6 / pairs);
    }
}

}  // namespace bench
