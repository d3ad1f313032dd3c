#include "Cluster.h"

#include <algorithm>

#include "MQDownload.h"
#include "OrvVersion.h"
#include "Received.h"
#include "Watchdog.h"
#include "WatchedBus.h"

namespace cluster {

using namespace Tarnwick::MQ;
using namespace Tarnwick::OrvUpdate;

namespace {

/// Far more than any transfer takes at one moment of the clock.
constexpr size_t kMostSteps = 20000;
constexpr std::chrono::seconds kMostSettling{15};
constexpr unsigned kStep = 250;

}  // namespace

Cluster::Cluster(Machine& machine, Book& book, Pace pace)
    : mMachine(machine),
      mBook(book),
      mPace(pace),
      mBus(std::make_shared<EmbeddedBus>(pace == Pace::Steps ? WorkPool::Threads::None : WorkPool::Threads::Own)),
      mWatched(std::make_shared<WatchedBus>(mBus, machine.log())),
      mWorker(Public::Network::IOWorker::create(1)) {}

Cluster::~Cluster() {
    for (const auto& node : mNodes) {
        if (node->alive()) end(*node);
    }
    settle();
    for (const auto& node : mNodes) {
        for (const auto& name : node->remains()) mBook.violation(name + " is still there after its node has ended");
    }
}

ClusterNode& Cluster::add(const NodePlan& plan) {
    mNodes.push_back(std::make_unique<ClusterNode>(mMachine, mWatched, mWorker, plan));
    return *mNodes.back();
}

std::vector<ClusterNode*> Cluster::alive() const {
    std::vector<ClusterNode*> found;
    for (const auto& node : mNodes) {
        if (node->alive()) found.push_back(node.get());
    }
    return found;
}

ClusterNode* Cluster::find(const std::string& id) const {
    for (const auto& node : mNodes) {
        if (node->id() == id) return node.get();
    }
    return nullptr;
}

std::vector<std::string> Cluster::ids(bool servers) const {
    std::vector<std::string> found;
    for (const auto& node : mNodes) {
        if (node->plan().isServer() == servers) found.push_back(node->id());
    }
    return found;
}

void Cluster::settle() { mPace == Pace::Steps ? settleInSteps() : settleOnThreads(); }

void Cluster::goOn(RunDice& dice) {
    if (!mTroubled || dice.chance(50)) return settle();
    constexpr size_t kMostAtOnce = 40;
    const size_t steps = dice.below(kMostAtOnce);
    if (mPace == Pace::Threads) return;
    for (size_t done = 0; done < steps; ++done) {
        Machine::settle();
        if (!mBus->step()) return;
    }
    Machine::settle();
}

void Cluster::settleInSteps() {
    size_t steps = 0;
    for (;;) {
        Machine::settle();
        if (!mBus->step()) {
            // A thread of the clock may have sent something at the last moment.
            Machine::settle();
            if (!mBus->step()) return;
        }
        if (++steps < kMostSteps) continue;
        cancelEveryPull();
        steps = 0;
    }
}

void Cluster::settleOnThreads() {
    const support::Watchdog watchdog(kMostSettling, [this] { cancelEveryPull(); });
    // What the bus brings about may lead to requests to the cloud, and these to work for the bus.
    for (;;) {
        mBus->settle();
        const size_t before = mBus->posted();
        Machine::settle();
        if (mBus->posted() == before) return;
    }
}

void Cluster::cancelEveryPull() {
    log().add("asks without end: every pull is cancelled");
    mBook.count("endless pull cancelled");
    mBook.releaseKind("pull");
    mBook.releaseKind("install");
    for (auto* node : alive()) {
        for (const auto& entry : node->request()->getVersions()) {
            if (entry->getStoragePosition() != StoragePosition_Node) continue;
            const auto pull = std::dynamic_pointer_cast<MQDownload>(entry->getDownload(node->request()));
            if (pull) pull->cancel();
        }
    }
}

void Cluster::elapse(unsigned milliseconds) {
    while (milliseconds > 0) {
        const unsigned step = std::min(milliseconds, kStep);
        mMachine.clock().advance(step);
        milliseconds -= step;
        settle();
    }
}

void Cluster::jump(unsigned milliseconds) {
    mMachine.clock().advance(milliseconds);
    settle();
}

void Cluster::setFaults(const LinkFaults& faults, uint32_t seed) {
    mTroubled = true;
    mBus->setFaults(faults, seed);
}

void Cluster::cut(const std::string& a, const std::string& b) {
    mTroubled = true;
    mBus->cutLink(a, b);
}

void Cluster::mend(const std::string& a, const std::string& b) { mBus->restoreLink(a, b); }

void Cluster::hang(const std::string& node) {
    mTroubled = true;
    mBus->stopNode(node);
}

void Cluster::wake(const std::string& node) { mBus->resumeNode(node); }

void Cluster::end(ClusterNode& node) {
    mTroubled = true;
    mBus->resumeNode(node.id());  // what waits in a process that hangs ends with it too
    std::vector<std::string> linked;
    for (const auto& other : mNodes) {
        if (other->id() == node.id()) continue;
        if (mBus->linked(node.id(), other->id())) linked.push_back(other->id());
        // A link that failed while the node hung tells it now.
        mBus->restoreLink(node.id(), other->id());
        mBus->cutLink(node.id(), other->id());
    }
    settle();
    mBook.release(node.id());
    node.end();
    settle();
    // The host that was about to be ended is held for that second.
    if (!node.remains().empty()) elapse(1000);
    for (const auto& other : linked) mBus->restoreLink(node.id(), other);
    for (const auto& name : node.remains()) mBook.violation(name + " is still there after its node has ended");
}

void Cluster::begin(ClusterNode& node) {
    node.begin();
    if (!node.alive()) mBook.violation(node.id() + " cannot begin: its id is still taken");
    settle();
}

void Cluster::healAll() {
    mBus->setFaults({}, 0);
    for (const auto& a : mNodes) {
        wake(a->id());
        for (const auto& b : mNodes) {
            if (a != b) mend(a->id(), b->id());
        }
    }
    settle();
    for (const auto& node : mNodes) {
        if (!node->alive())
            begin(*node);
        else if (!node->serving())
            node->startService();
    }
    elapse(2000);
}

}  // namespace cluster
