// Queue objects that note who subscribes what.
#pragma once

#include <mutex>

#include "FakeQueueNodes.h"

namespace support {

/// A node of any base that keeps its subscriptions for a test to look at and to call.
template <class Base>
struct Recording : Base {
    struct Subscription {
        std::string topic;
        void* owner = nullptr;
        RequestHandler handler;
        bool hasSecond = false;
    };

    void subscribe(const std::string& topic, void* owner, const RequestHandler& handler,
                   const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>& second) override {
        std::lock_guard lock(mutex);
        subscriptions.push_back({topic, owner, handler, static_cast<bool>(second)});
    }
    void unsubcribe(void* owner) override {
        std::lock_guard lock(mutex);
        unsubscribed.push_back(owner);
        std::erase_if(subscriptions, [owner](const Subscription& one) { return one.owner == owner; });
    }
    std::vector<std::string> topicsOf(const void* owner) const {
        std::lock_guard lock(mutex);
        std::vector<std::string> topics;
        for (const auto& one : subscriptions) {
            if (one.owner == owner) topics.push_back(one.topic);
        }
        return topics;
    }
    size_t count() const {
        std::lock_guard lock(mutex);
        return subscriptions.size();
    }

    mutable std::mutex mutex;
    std::vector<Subscription> subscriptions;
    std::vector<void*> unsubscribed;
};

using RecordingClient = Recording<FakeClient>;
using RecordingServer = Recording<FakeServer>;
using RecordingSystemServer = Recording<FakeSystemServer>;

}  // namespace support
