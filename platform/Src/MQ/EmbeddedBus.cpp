#include "MQ/EmbeddedBus.h"

namespace Tarnwick::MQ {

namespace {

constexpr size_t kMaxFrame = size_t{8} << 20;

std::pair<std::string, std::string> unordered(const std::string& a, const std::string& b) {
    return a < b ? std::pair(a, b) : std::pair(b, a);
}

}  // namespace

std::shared_ptr<Bus> Bus::embedded() { return std::make_shared<EmbeddedBus>(); }

EmbeddedBus::EmbeddedBus() = default;
EmbeddedBus::~EmbeddedBus() = default;

bool EmbeddedBus::join(const std::string& id, const Endpoint& endpoint) {
    if (id.empty()) return false;
    auto member = std::make_shared<Member>();
    member->endpoint = endpoint;
    std::lock_guard lock(mMutex);
    return mMembers.emplace(id, std::move(member)).second;
}

void EmbeddedBus::leave(const std::string& id) {
    std::shared_ptr<Member> member;
    {
        std::lock_guard lock(mMutex);
        const auto found = mMembers.find(id);
        if (found == mMembers.end()) return;
        member = found->second;
        mMembers.erase(found);
        std::erase_if(mLinks, [&id](const auto& link) { return link.first.first == id || link.first.second == id; });
        mStopped.erase(id);
    }
    for (const auto& peer : peers(id)) tellLost(peer, id);
    std::unique_lock lock(member->mutex);
    member->left = true;
    const auto mine = member->running.count(std::this_thread::get_id());
    member->quiet.wait(lock, [&] { return member->running.size() == mine; });
}

bool EmbeddedBus::canPass(const std::string& from, const std::string& to) const {
    return mMembers.contains(from) && mMembers.contains(to) && !mCut.contains(unordered(from, to));
}

bool EmbeddedBus::linked(const std::string& from, const std::string& to) {
    std::lock_guard lock(mMutex);
    return canPass(from, to);
}

std::vector<std::string> EmbeddedBus::peers(const std::string& id) {
    std::lock_guard lock(mMutex);
    std::vector<std::string> ids;
    for (const auto& [other, member] : mMembers) {
        if (other != id && !mCut.contains(unordered(id, other))) ids.push_back(other);
    }
    return ids;
}

size_t EmbeddedBus::maxFrame() const { return kMaxFrame; }

bool EmbeddedBus::post(std::function<void()> task) { return mPool.post(std::move(task)); }

bool EmbeddedBus::chance(double probability) {
    return probability > 0 && std::uniform_real_distribution<>(0, 1)(mRandom) < probability;
}

bool EmbeddedBus::send(const std::string& from, const std::string& to, const std::string& frame) {
    if (frame.size() > kMaxFrame) return false;
    std::lock_guard lock(mMutex);
    if (!canPass(from, to)) return false;
    if (mStopped.contains(from) || mStopped.contains(to) || chance(mFaults.drop)) return true;
    const LinkName name(from, to);
    Link& link = mLinks[name];
    if (link.heldBack.empty() && chance(mFaults.reorder)) {
        link.heldBack = frame;
        return true;
    }
    enqueue(name, frame);
    if (chance(mFaults.duplicate)) enqueue(name, frame);
    if (!link.heldBack.empty()) {
        enqueue(name, link.heldBack);
        link.heldBack.clear();
    }
    return true;
}

void EmbeddedBus::enqueue(const LinkName& name, const std::string& frame) {
    Link& link = mLinks[name];
    uint64_t delay = 0;
    if (mFaults.mostDelayMs != 0) delay = std::uniform_int_distribution<uint64_t>(0, mFaults.mostDelayMs)(mRandom);
    link.frames.push_back({frame, delay == 0 ? 0 : mDelays.now() + delay});
    const auto deliver = [weak = weak_from_this(), name] {
        if (const auto self = weak.lock()) self->drain(name);
    };
    if (delay != 0) {
        mDelays.after(delay, [weak = weak_from_this(), deliver] {
            if (const auto self = weak.lock()) self->post(deliver);
        });
    } else if (!link.draining) {
        mPool.post(deliver);
    }
}

void EmbeddedBus::drain(const LinkName& name) {
    std::unique_lock lock(mMutex);
    if (const auto link = mLinks.find(name); link == mLinks.end() || link->second.draining) return;
    mLinks[name].draining = true;
    while (true) {
        const auto link = mLinks.find(name);
        if (link == mLinks.end()) return;  // a node has left
        auto& frames = link->second.frames;
        if (frames.empty() || (frames.front().due != 0 && frames.front().due > mDelays.now())) {
            link->second.draining = false;
            return;
        }
        const std::string frame = std::move(frames.front().frame);
        frames.pop_front();
        const auto member = mMembers.find(name.second);
        if (member == mMembers.end() || mStopped.contains(name.second)) continue;
        const auto receiver = member->second;
        lock.unlock();
        call(receiver, [&](const Endpoint& endpoint) { endpoint.onFrame(name.first, frame); });
        lock.lock();
    }
}

void EmbeddedBus::call(const std::shared_ptr<Member>& member, const std::function<void(const Endpoint&)>& function) {
    {
        std::lock_guard lock(member->mutex);
        if (member->left) return;
        member->running.insert(std::this_thread::get_id());
    }
    function(member->endpoint);
    {
        std::lock_guard lock(member->mutex);
        member->running.erase(member->running.find(std::this_thread::get_id()));
    }
    member->quiet.notify_all();
}

void EmbeddedBus::tellLost(const std::string& to, const std::string& lost) {
    std::shared_ptr<Member> member;
    {
        std::lock_guard lock(mMutex);
        const auto found = mMembers.find(to);
        if (found == mMembers.end() || mStopped.contains(to)) return;
        member = found->second;
    }
    mPool.post([member, lost] { call(member, [&](const Endpoint& endpoint) { endpoint.onLost(lost); }); });
}

void EmbeddedBus::setFaults(const BusFaults& faults) {
    std::lock_guard lock(mMutex);
    mFaults = faults;
    mRandom.seed(faults.seed);
}

void EmbeddedBus::cutLink(const std::string& a, const std::string& b) {
    {
        std::lock_guard lock(mMutex);
        mCut.insert(unordered(a, b));
        mLinks.erase({a, b});
        mLinks.erase({b, a});
    }
    tellLost(a, b);
    tellLost(b, a);
}

void EmbeddedBus::mendLink(const std::string& a, const std::string& b) {
    std::lock_guard lock(mMutex);
    mCut.erase(unordered(a, b));
}

void EmbeddedBus::stopNode(const std::string& id) {
    std::lock_guard lock(mMutex);
    mStopped.insert(id);
}

void EmbeddedBus::startNode(const std::string& id) {
    std::lock_guard lock(mMutex);
    mStopped.erase(id);
}

}  // namespace Tarnwick::MQ
