#include "MQ/PendingRequests.h"

namespace Tarnwick::MQ {

PendingRequests::PendingRequests() : mLast(mRandom()) {}

std::optional<PendingRequests::Entry> PendingRequests::add(const std::string& peer, const std::string& topic,
                                                           const ResponseCallback& callback) {
    std::lock_guard lock(mMutex);
    if (mClosed) return std::nullopt;
    do ++mLast;
    while (mLast == 0 || mEntries.count(mLast));
    Entry entry;
    entry.id = mLast;
    entry.token = (static_cast<uint64_t>(mRandom()) << 32) | mRandom();
    entry.peer = peer;
    entry.topic = topic;
    entry.callback = callback;
    mEntries.emplace(entry.id, entry);
    return entry;
}

bool PendingRequests::setDeadline(uint32_t id, const Deadlines::Key& key) {
    std::lock_guard lock(mMutex);
    const auto found = mEntries.find(id);
    if (found == mEntries.end()) return false;
    found->second.deadline = key;
    return true;
}

std::optional<PendingRequests::Entry> PendingRequests::take(uint32_t id) {
    std::lock_guard lock(mMutex);
    const auto node = mEntries.extract(id);
    return node ? std::optional<Entry>(node.mapped()) : std::nullopt;
}

std::optional<PendingRequests::Entry> PendingRequests::takeAnswered(uint32_t id, uint64_t token) {
    std::lock_guard lock(mMutex);
    const auto found = mEntries.find(id);
    if (found == mEntries.end() || found->second.token != token) return std::nullopt;
    return mEntries.extract(found).mapped();
}

std::vector<PendingRequests::Entry> PendingRequests::takeSentTo(const std::string& peer) {
    std::vector<Entry> taken;
    std::lock_guard lock(mMutex);
    for (auto entry = mEntries.begin(); entry != mEntries.end();) {
        if (entry->second.peer != peer) {
            ++entry;
            continue;
        }
        taken.push_back(entry->second);
        entry = mEntries.erase(entry);
    }
    return taken;
}

std::vector<PendingRequests::Entry> PendingRequests::close() {
    std::vector<Entry> taken;
    std::lock_guard lock(mMutex);
    mClosed = true;
    for (auto& entry : mEntries) taken.push_back(entry.second);
    mEntries.clear();
    return taken;
}

}  // namespace Tarnwick::MQ
