#include "MQ/Subscriptions.h"

#include <algorithm>

namespace Tarnwick::MQ {

void Subscriptions::add(const std::string& topic, void* owner, const RequestHandler& handler) {
    auto entry = std::make_shared<Entry>();
    entry->owner = owner;
    entry->handler = handler;
    std::lock_guard lock(mMutex);
    if (!mClosed) mTopics[topic].push_back(std::move(entry));
}

void Subscriptions::remove(void* owner) {
    std::vector<std::shared_ptr<Entry>> removed;  // handlers go after the lock is given back
    std::lock_guard lock(mMutex);
    for (auto topic = mTopics.begin(); topic != mTopics.end();) {
        auto& entries = topic->second;
        const auto kept = std::stable_partition(entries.begin(), entries.end(),
                                                [owner](const auto& entry) { return entry->owner != owner; });
        for (auto gone = kept; gone != entries.end(); ++gone) {
            (*gone)->active = false;
            removed.push_back(*gone);
        }
        entries.erase(kept, entries.end());
        topic = entries.empty() ? mTopics.erase(topic) : std::next(topic);
    }
}

void Subscriptions::close() {
    std::map<std::string, std::vector<std::shared_ptr<Entry>>> removed;
    std::lock_guard lock(mMutex);
    mClosed = true;
    removed.swap(mTopics);
    for (auto& topic : removed) {
        for (auto& entry : topic.second) entry->active = false;
    }
}

std::vector<std::shared_ptr<Subscriptions::Entry>> Subscriptions::of(const std::string& topic) {
    std::lock_guard lock(mMutex);
    const auto found = mTopics.find(topic);
    return found == mTopics.end() ? std::vector<std::shared_ptr<Entry>>() : found->second;
}

bool Subscriptions::begin(const std::shared_ptr<Entry>& entry) {
    std::lock_guard lock(mMutex);
    return entry->active;
}

}  // namespace Tarnwick::MQ
