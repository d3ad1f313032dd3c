// Which handlers a node has for which topic.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Tarnwick/MQ/MQDispatcher.h"

namespace Tarnwick::MQ {

/// All operations may be called from any thread; handlers are called under no lock.
class Subscriptions {
public:
    void add(const std::string& topic, void* owner, const RequestHandler& handler);
    /// After it returns no further call of the owner's handlers begins.
    void remove(void* owner);
    /// Calls every handler of the topic in the order of subscription. @param known whether there was one
    /// @return the first response that is not null
    std::shared_ptr<MQMessage> dispatch(const std::string& topic, const std::shared_ptr<MQMessage>& message, bool& known);

private:
    struct Entry {
        std::string topic;
        void* owner = nullptr;
        RequestHandler handler;
        bool removed = false;  // guarded by mMutex
    };

    std::mutex mMutex;
    std::list<std::shared_ptr<Entry>> mEntries;
};

}  // namespace Tarnwick::MQ
