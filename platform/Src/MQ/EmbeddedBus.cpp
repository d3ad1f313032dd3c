#include "MQ/EmbeddedBus.h"

#include <algorithm>

namespace Tarnwick::MQ {

namespace {

constexpr uint64_t kLongestHold = 100;

/// The nodes whose functions run on this thread, innermost last.
std::vector<const void*>& runningHere() {
    thread_local std::vector<const void*> nodes;
    return nodes;
}

}  // namespace

std::shared_ptr<Bus> Bus::embedded() { return std::make_shared<EmbeddedBus>(); }

EmbeddedBus::EmbeddedBus(WorkPool::Threads threads) : mDeadlines(Deadlines::shared()), mPool(threads) {}

bool EmbeddedBus::join(const std::string& id, const Endpoint& endpoint) {
    auto node = std::make_shared<Node>();
    node->endpoint = endpoint;
    std::lock_guard lock(mMutex);
    return !id.empty() && mNodes.emplace(id, std::move(node)).second;
}

void EmbeddedBus::leave(const std::string& id) {
    std::shared_ptr<Node> node;  // its functions go after the lock is given back
    std::unique_lock lock(mMutex);
    const auto found = mNodes.find(id);
    if (found == mNodes.end()) return;
    node = found->second;
    mNodes.erase(found);
    for (const auto& other : mNodes) {
        if (!isCut(id, other.first)) notifyLost(id, other.first);
    }
    const auto here = static_cast<size_t>(std::count(runningHere().begin(), runningHere().end(), node.get()));
    mLeft.wait(lock, [&] { return node->running == here; });
}

bool EmbeddedBus::sendParts(const std::string& from, const std::string& to, const std::string& head,
                            const Public::Base::SharedBuffer& tail) {
    if (head.size() + tail.size() > kMaxFrame) return false;
    std::lock_guard lock(mMutex);
    const auto sender = mNodes.find(from);
    const auto target = mNodes.find(to);
    if (sender == mNodes.end() || target == mNodes.end() || isCut(from, to)) return false;
    const LinkKey key{from, to};
    auto dice = diceFor(key, head);
    if (sender->second->stopped || target->second->stopped || dice.chance(faultsOf(key).drop)) return true;
    const int copies = dice.chance(faultsOf(key).duplicate) ? 2 : 1;
    for (int i = 0; i < copies; ++i) submit(key, Item{target->second, head, tail}, dice);
    return true;
}

/// With the lock held: the frame's way past the delays of its link.
void EmbeddedBus::submit(const LinkKey& key, Item item, FaultDice& dice) {
    auto& link = mLinks[key];
    const auto& faults = faultsOf(key);
    if (link.held.empty() && dice.chance(faults.reorder)) {
        link.held.push_back(std::move(item));
        mDeadlines->at(mDeadlines->now() + kLongestHold, [weak = weak_from_this(), key] {
            if (const auto self = weak.lock()) self->release(key);
        });
        return;
    }
    const uint64_t now = mDeadlines->now();
    const unsigned spread = std::max(faults.delayAtMost, faults.delayAtLeast) - faults.delayAtLeast;
    const unsigned wait = faults.delayAtLeast + static_cast<unsigned>(dice.below(uint64_t{spread} + 1));
    if (wait > 0 || link.delayed > 0)
        delay(key, std::move(item), std::max(now + wait, link.lastDelay));
    else
        enqueue(key, std::move(item));
    if (link.held.empty()) return;
    auto overtaken = std::move(link.held.front());
    link.held.clear();
    if (link.delayed > 0)
        delay(key, std::move(overtaken), link.lastDelay);
    else
        enqueue(key, std::move(overtaken));
}

/// With the lock held.
void EmbeddedBus::delay(const LinkKey& key, Item item, uint64_t due) {
    auto& link = mLinks[key];
    link.lastDelay = due;
    ++link.delayed;
    auto kept = std::make_shared<Item>(std::move(item));
    mDeadlines->at(due, [weak = weak_from_this(), key, kept] {
        const auto self = weak.lock();
        if (!self) return;
        std::lock_guard lock(self->mMutex);
        --self->mLinks[key].delayed;
        if (!self->isCut(key.first, key.second)) self->enqueue(key, std::move(*kept));
    });
}

void EmbeddedBus::release(const LinkKey& key) {
    std::lock_guard lock(mMutex);
    auto& link = mLinks[key];
    for (auto& item : link.held) enqueue(key, std::move(item));
    link.held.clear();
}

/// With the lock held.
void EmbeddedBus::enqueue(const LinkKey& key, Item item) {
    auto& link = mLinks[key];
    link.items.push_back(std::move(item));
    if (link.draining) return;
    link.draining = true;
    mPool.post([weak = weak_from_this(), key] {
        if (const auto self = weak.lock()) self->drain(key);
    });
}

void EmbeddedBus::drain(const LinkKey& key) {
    std::unique_lock lock(mMutex);
    for (;;) {
        const auto found = mLinks.find(key);
        if (found->second.items.empty()) {
            found->second.draining = false;
            // Most pairs of a large cluster seldom talk: their links keep no memory meanwhile.
            if (found->second.held.empty() && found->second.delayed == 0) mLinks.erase(found);
            return;
        }
        auto item = std::move(found->second.items.front());
        found->second.items.pop_front();
        const auto target = mNodes.find(key.second);
        if (target == mNodes.end() || target->second != item.target || item.target->stopped) continue;
        ++item.target->running;
        lock.unlock();
        run(key, item);
        lock.lock();
        --item.target->running;
        mLeft.notify_all();
        lock.unlock();
        item.target.reset();  // perhaps the last reference, with the node's functions in it
        lock.lock();
    }
}

void EmbeddedBus::run(const LinkKey& key, Item& item) {
    runningHere().push_back(item.target.get());
    const auto& endpoint = item.target->endpoint;
    if (item.lost) {
        if (endpoint.onLost) endpoint.onLost(key.first);
    } else if (!item.tail.empty() && endpoint.onParts) {
        endpoint.onParts(key.first, item.head, item.tail);
    } else if (endpoint.onFrame) {
        item.head.append(item.tail.buf(), item.tail.size());
        endpoint.onFrame(key.first, std::move(item.head));
    }
    runningHere().pop_back();
}

/// With the lock held. The notice follows the frames that are under way.
void EmbeddedBus::notifyLost(const std::string& gone, const std::string& other) {
    const auto target = mNodes.find(other);
    if (target != mNodes.end() && !target->second->stopped) enqueue({gone, other}, Item{target->second, {}, {}, true});
}

bool EmbeddedBus::linked(const std::string& from, const std::string& to) {
    std::lock_guard lock(mMutex);
    return mNodes.count(from) && mNodes.count(to) && !isCut(from, to);
}

std::vector<std::string> EmbeddedBus::peers(const std::string& id) {
    std::vector<std::string> ids;
    std::lock_guard lock(mMutex);
    if (!mNodes.count(id)) return ids;
    for (const auto& node : mNodes) {
        if (node.first != id && !isCut(id, node.first)) ids.push_back(node.first);
    }
    return ids;
}

const LinkFaults& EmbeddedBus::faultsOf(const LinkKey& key) const {
    const auto own = mLinkFaults.find(key);
    return own == mLinkFaults.end() ? mFaults : own->second;
}

bool EmbeddedBus::isCut(const std::string& a, const std::string& b) const { return mCut.count({a, b}) > 0; }

}  // namespace Tarnwick::MQ
