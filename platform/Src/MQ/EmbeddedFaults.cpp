// What tests do to the embedded bus.
#include "MQ/EmbeddedBus.h"
#include "MQ/Frame.h"

namespace Tarnwick::MQ {

void EmbeddedBus::setFaults(const LinkFaults& faults, uint32_t seed) {
    std::lock_guard lock(mMutex);
    mFaults = faults;
    mSeed = seed;
    mSent.clear();
}

/// With the lock held; once for each frame.
FaultDice EmbeddedBus::diceFor(const LinkKey& key, const std::string& frame) {
    if (!faultsOf(key).any()) return FaultDice(mSeed, {}, 0);
    const bool presence = beginsAsPresence(frame);
    auto& sent = mSent[key];
    const uint64_t number = presence ? sent.presences++ : sent.messages++;
    return FaultDice(mSeed, (key.first + '\n' + key.second) + (presence ? "\np" : "\nm"), number);
}

void EmbeddedBus::setLinkFaults(const std::string& from, const std::string& to, const LinkFaults& faults) {
    std::lock_guard lock(mMutex);
    mLinkFaults[{from, to}] = faults;
}

void EmbeddedBus::cutLink(const std::string& a, const std::string& b) {
    std::deque<Item> lost;  // goes after the lock is given back
    std::lock_guard lock(mMutex);
    if (!mCut.insert({a, b}).second) return;
    mCut.insert({b, a});
    for (const auto& key : {LinkKey{a, b}, LinkKey{b, a}}) {
        auto& link = mLinks[key];
        for (auto* items : {&link.items, &link.held}) {
            for (auto& item : *items) lost.push_back(std::move(item));
            items->clear();
        }
        notifyLost(key.first, key.second);
    }
}

void EmbeddedBus::restoreLink(const std::string& a, const std::string& b) {
    std::lock_guard lock(mMutex);
    mCut.erase({a, b});
    mCut.erase({b, a});
}

void EmbeddedBus::stopNode(const std::string& id) {
    std::lock_guard lock(mMutex);
    const auto found = mNodes.find(id);
    if (found != mNodes.end()) found->second->stopped = true;
}

void EmbeddedBus::resumeNode(const std::string& id) {
    std::lock_guard lock(mMutex);
    const auto found = mNodes.find(id);
    if (found != mNodes.end()) found->second->stopped = false;
}

void EmbeddedBus::settle() {
    for (;;) {
        const size_t before = mPool.posted();
        mDeadlines->waitUntilNothingIsDue();
        mPool.waitUntilIdle();
        if (mPool.posted() == before && !mDeadlines->somethingIsDue()) return;
    }
}

bool EmbeddedBus::step() {
    mDeadlines->waitUntilNothingIsDue();
    return mPool.step();
}

}  // namespace Tarnwick::MQ
