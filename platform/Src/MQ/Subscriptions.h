// Who serves which topic on a node.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Tarnwick/MQ/MQDispatcher.h"

namespace Tarnwick::MQ {

/// All operations may be called from any thread, also from a handler.
class Subscriptions {
public:
    struct Entry {
        void* owner = nullptr;
        RequestHandler handler;
        bool active = true;
    };

    void add(const std::string& topic, void* owner, const RequestHandler& handler);
    void remove(void* owner);
    /// Ends all; nothing can be added afterwards.
    void close();
    /// In the order of subscription.
    std::vector<std::shared_ptr<Entry>> of(const std::string& topic);
    /// True when the entry may still be called. What begins after the entry was removed gets false.
    bool begin(const std::shared_ptr<Entry>& entry);

private:
    std::mutex mMutex;
    std::map<std::string, std::vector<std::shared_ptr<Entry>>> mTopics;
    bool mClosed = false;
};

}  // namespace Tarnwick::MQ
