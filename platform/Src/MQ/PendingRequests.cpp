#include "MQ/PendingRequests.h"

namespace Tarnwick::MQ {

uint32_t PendingRequests::add(const ResponseCallback& callback, const std::string& link) {
    std::lock_guard lock(mMutex);
    if (mClosed) return 0;
    do {
        ++mLastId;
    } while (mLastId == 0 || mEntries.contains(mLastId));
    mEntries[mLastId] = {callback, link, 0};
    return mLastId;
}

bool PendingRequests::setDeadline(uint32_t id, Deadlines::Handle deadline) {
    std::lock_guard lock(mMutex);
    const auto found = mEntries.find(id);
    if (found == mEntries.end()) return false;
    found->second.deadline = deadline;
    return true;
}

bool PendingRequests::take(uint32_t id, Entry& entry) {
    std::lock_guard lock(mMutex);
    const auto found = mEntries.find(id);
    if (found == mEntries.end()) return false;
    entry = found->second;
    mEntries.erase(found);
    return true;
}

std::vector<PendingRequests::Entry> PendingRequests::takeLink(const std::string& peer) {
    std::vector<Entry> taken;
    std::lock_guard lock(mMutex);
    for (auto entry = mEntries.begin(); entry != mEntries.end();) {
        if (entry->second.link == peer) {
            taken.push_back(entry->second);
            entry = mEntries.erase(entry);
        } else {
            ++entry;
        }
    }
    return taken;
}

std::vector<PendingRequests::Entry> PendingRequests::close() {
    std::vector<Entry> taken;
    std::lock_guard lock(mMutex);
    mClosed = true;
    for (const auto& [id, entry] : mEntries) taken.push_back(entry);
    mEntries.clear();
    return taken;
}

}  // namespace Tarnwick::MQ
