#include "MQ/Subscriptions.h"

namespace Tarnwick::MQ {

void Subscriptions::add(const std::string& topic, void* owner, const RequestHandler& handler) {
    auto entry = std::make_shared<Entry>();
    entry->topic = topic;
    entry->owner = owner;
    entry->handler = handler;
    std::lock_guard lock(mMutex);
    mEntries.push_back(std::move(entry));
}

void Subscriptions::remove(void* owner) {
    std::list<std::shared_ptr<Entry>> removed;  // handlers go after the lock is given back
    std::lock_guard lock(mMutex);
    for (auto entry = mEntries.begin(); entry != mEntries.end();) {
        const auto next = std::next(entry);
        if ((*entry)->owner == owner) {
            (*entry)->removed = true;
            removed.splice(removed.end(), mEntries, entry);
        }
        entry = next;
    }
}

std::shared_ptr<MQMessage> Subscriptions::dispatch(const std::string& topic, const std::shared_ptr<MQMessage>& message,
                                                   bool& known) {
    std::vector<std::shared_ptr<Entry>> entries;
    {
        std::lock_guard lock(mMutex);
        for (const auto& entry : mEntries) {
            if (entry->topic == topic) entries.push_back(entry);
        }
    }
    known = !entries.empty();
    std::shared_ptr<MQMessage> response;
    for (const auto& entry : entries) {
        {
            std::lock_guard lock(mMutex);
            if (entry->removed) continue;
        }
        const auto answer = entry->handler(message);
        if (!response) response = answer;
    }
    return response;
}

}  // namespace Tarnwick::MQ
