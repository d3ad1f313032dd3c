// The requests of a node that wait for their answer.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "MQ/Deadlines.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::MQ {

/// Whoever takes an entry out calls its callback: that is what makes it exactly one call.
class PendingRequests {
public:
    struct Entry {
        uint32_t id = 0;     ///< never 0
        uint64_t token = 0;  ///< random, so that neither a stranger nor the answer to an earlier life of the node fits
        std::string peer;    ///< where the request went first
        std::string topic;
        ResponseCallback callback;
        std::optional<Deadlines::Key> deadline;
    };

    PendingRequests();

    /// Draws id and token. @return what was entered, or nothing after close
    std::optional<Entry> add(const std::string& peer, const std::string& topic, const ResponseCallback& callback);
    /// Notes the deadline, for the entry to be taken back with it. @return false when the entry has been taken out
    bool setDeadline(uint32_t id, const Deadlines::Key& key);
    std::optional<Entry> take(uint32_t id);
    std::optional<Entry> takeAnswered(uint32_t id, uint64_t token);
    /// Those that went to that peer.
    std::vector<Entry> takeSentTo(const std::string& peer);
    /// All; nothing can be added afterwards.
    std::vector<Entry> close();

private:
    std::mutex mMutex;
    std::random_device mRandom;
    std::map<uint32_t, Entry> mEntries;
    uint32_t mLast;
    bool mClosed = false;
};

}  // namespace Tarnwick::MQ
