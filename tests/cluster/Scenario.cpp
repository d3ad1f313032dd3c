#include "Scenario.h"

#include <algorithm>
#include <array>

#include "Packages.h"

namespace cluster {

void Scenario::setUp() {
    addNodes();
    fillStores();
    std::vector<std::string> offered;
    for (const auto& package : packages()) {
        if (mDice.chance(55)) offered.push_back(package.version);
    }
    mCluster.machine().offer(offered);
    mCluster.log().add("the cloud offers " + std::to_string(offered.size()) + " versions");
    for (const auto& node : mCluster.nodes()) {
        // The versions of a cluster's nodes differ before an upgrade.
        if (mDice.chance(20)) node->becomes("1.1.0.1");
        mCluster.begin(*node);
    }
    mCluster.elapse(1000);
}

void Scenario::addNodes() {
    const size_t servers = mDice.between(2, mDice.chance(15) ? 5 : 3);
    const size_t clients = mDice.between(1, mDice.chance(15) ? 4 : 2);
    for (size_t i = 0; i < servers; ++i) {
        NodePlan plan;
        plan.id = "server" + std::to_string(i);
        plan.consents = mDice.chance(70);
        mCluster.add(plan);
    }
    for (size_t i = 0; i < clients; ++i) {
        NodePlan plan;
        plan.id = "client" + std::to_string(i);
        plan.server = "server" + std::to_string(mDice.below(servers));
        plan.consents = mDice.chance(70);
        mCluster.log().add(plan.id + " belongs to " + plan.server);
        mCluster.add(plan);
    }
}

void Scenario::fillStores() {
    for (const auto& node : mCluster.nodes()) {
        for (const auto& package : packages()) {
            if (!mDice.chance(node->plan().isServer() ? 25 : 8)) continue;
            const std::string source = mDice.chance(80) ? "Online" : "Manual";
            putPackage(package, mCluster.machine().storeOf(node->id()), source);
            mCluster.log().add(node->id() + " holds " + package.version + " " + source);
        }
    }
}

void Scenario::play() {
    // Most hosts begin by asking.
    for (auto* node : mCluster.alive()) {
        if (mDice.chance(70)) mDeeds.queryVersions(*node);
    }
    mQuiet = mDice.chance(15);
    if (!mQuiet && mDice.chance(75)) changeFaults();
    const size_t steps = mDice.between(20, 70);
    for (size_t i = 0; i < steps; ++i) {
        step();
        mDeeds.noteSilentEnds();
        mDeeds.grantWishes();
    }
}

void Scenario::step() {
    static const std::array<Choice, 16> choices{{
        {14, false, &Scenario::askSomething},
        {24, false, &Scenario::moveSomething},
        {7, false, &Scenario::installSomething},
        {9, false, &Scenario::pollSomething},
        {8, true, &Scenario::cancelSomething},
        {18, false, &Scenario::passTime},
        {3, true, &Scenario::passLongTime},
        {4, true, &Scenario::changeFaults},
        {5, true, &Scenario::cutSomething},
        {5, true, &Scenario::mendSomething},
        {3, true, &Scenario::hangSomething},
        {3, true, &Scenario::wakeSomething},
        {3, true, &Scenario::endSomething},
        {3, true, &Scenario::beginSomething},
        {2, true, &Scenario::restartAService},
        {1, true, &Scenario::breakTheCloud},
    }};
    unsigned total = 0;
    for (const auto& choice : choices) {
        if (!mQuiet || !choice.trouble) total += choice.weight;
    }
    size_t drawn = mDice.below(total);
    for (const auto& choice : choices) {
        if (mQuiet && choice.trouble) continue;
        if (drawn < choice.weight) {
            (this->*choice.act)();
            return;
        }
        drawn -= choice.weight;
    }
}

ClusterNode* Scenario::anyNode() {
    const auto alive = mCluster.alive();
    return alive.empty() ? nullptr : mDice.pick(alive);
}

void Scenario::askSomething() {
    auto* node = anyNode();
    if (!node) return;
    switch (mDice.below(6)) {
        case 0:
        case 1:
            return mDeeds.requestVersions(*node);
        case 2:
            return mDeeds.queryVersions(*node);
        case 3:
            return mDeeds.requestHistories(*node);
        case 4:
            return mDeeds.queryHistories(*node);
        default:
            return mDeeds.nameOtherNodes(*node);
    }
}

void Scenario::moveSomething() {
    auto* node = anyNode();
    if (!node) return;
    switch (mDice.below(11)) {
        case 0:
        case 1:
            return mDeeds.push(*node);
        case 2:
            return mDeeds.upload(*node);
        case 3:
        case 4:
            return mDeeds.fetchOnPeer(*node);
        case 5:
            return mDeeds.forward(*node);
        case 6:
            return mDeeds.letGo(*node);
        default:
            return mDeeds.fetch(*node);
    }
}

void Scenario::installSomething() {
    auto* node = anyNode();
    if (!node) return;
    switch (mDice.below(5)) {
        case 0:
            return mDeeds.cancelInstall(*node);
        case 1:
        case 2:
            return mDeeds.installOnPeer(*node);
        default:
            return mDeeds.install(*node);
    }
}

void Scenario::pollSomething() {
    if (auto* node = anyNode()) mDeeds.poll(*node);
}

void Scenario::cancelSomething() { mDeeds.cancelOne(); }

void Scenario::passTime() { mCluster.elapse(static_cast<unsigned>(mDice.between(20, 3000))); }

void Scenario::passLongTime() {
    const auto time = static_cast<unsigned>(mDice.between(20000, 70000));
    mCluster.log().add("jump of " + std::to_string(time));
    mCluster.jump(time);
}

void Scenario::changeFaults() {
    const std::array<double, 4> shares{0, 0.02, 0.08, 0.25};
    Tarnwick::MQ::LinkFaults faults;
    faults.drop = shares.at(mDice.below(4));
    faults.duplicate = shares.at(mDice.below(4));
    faults.reorder = shares.at(mDice.below(4));
    if (mDice.chance(50)) faults.delayAtMost = static_cast<unsigned>(mDice.between(1, 400));
    mCluster.log().add("faults: drop " + std::to_string(faults.drop) + " duplicate " +
                       std::to_string(faults.duplicate) + " reorder " + std::to_string(faults.reorder) + " delay " +
                       std::to_string(faults.delayAtMost));
    mCluster.setFaults(faults, mDice.seed());
}

void Scenario::cutSomething() {
    const auto& a = mDice.pick(mCluster.nodes())->id();
    const auto& b = mDice.pick(mCluster.nodes())->id();
    if (a == b) return;
    mCluster.log().add("the link of " + a + " and " + b + " fails");
    mCut.emplace_back(a, b);
    mCluster.cut(a, b);
    mCluster.goOn(mDice);
}

void Scenario::mendSomething() {
    if (mCut.empty()) return;
    const auto [a, b] = mCut.back();
    mCut.pop_back();
    mCluster.log().add("the link of " + a + " and " + b + " works again");
    mCluster.mend(a, b);
}

void Scenario::hangSomething() {
    auto* node = anyNode();
    if (!node) return;
    mCluster.log().add(node->id() + " hangs");
    mHung.push_back(node->id());
    mCluster.hang(node->id());
}

void Scenario::wakeSomething() {
    if (mHung.empty()) return;
    mCluster.log().add(mHung.back() + " goes on");
    mCluster.wake(mHung.back());
    mHung.pop_back();
}

void Scenario::endSomething() {
    auto* node = anyNode();
    if (!node) return;
    mCluster.log().add(node->id() + " dies");
    mCluster.end(*node);
    // Often it is begun anew at once, as a watchdog would.
    if (!mDice.chance(60)) return;
    mCluster.log().add(node->id() + " is begun anew");
    mCluster.begin(*node);
}

void Scenario::beginSomething() {
    for (const auto& node : mCluster.nodes()) {
        if (node->alive()) continue;
        mCluster.log().add(node->id() + " is begun anew");
        mCluster.begin(*node);
        return;
    }
}

void Scenario::restartAService() {
    auto* node = anyNode();
    if (!node) return;
    mCluster.log().add(node->id() + (node->serving() ? " ends its service" : " starts its service"));
    mCluster.noteTrouble();
    node->serving() ? node->stopService() : node->startService();
    mCluster.goOn(mDice);
}

void Scenario::breakTheCloud() {
    mCluster.log().add("the cloud fails");
    mCluster.noteTrouble();
    mCluster.machine().breakCloud();
}

void Scenario::calmDown() {
    mCluster.log().add("everything works again");
    mCluster.healAll();
    mDeeds.grantWishes();
    for (auto* node : mCluster.alive()) mDeeds.poll(*node);
    mCluster.settle();
    // A request that was lost ends after a minute; what follows from it may wait for a minute more.
    for (int i = 0; i < 3; ++i) {
        mCluster.jump(61000);
        mCluster.elapse(1000);
        mDeeds.noteSilentEnds();
        mDeeds.grantWishes();
    }
    for (auto* node : mCluster.alive()) mDeeds.poll(*node);
}

}  // namespace cluster
