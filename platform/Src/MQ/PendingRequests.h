// Requests that wait for their answer.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "MQ/Deadlines.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::MQ {

/// Whoever takes an entry out runs its callback, so that it runs exactly once. May be called from any thread.
class PendingRequests {
public:
    struct Entry {
        ResponseCallback callback;
        std::string link;  ///< the peer at the other end of the link that it went out on
        Deadlines::Handle deadline = 0;
    };

    /// @return the message's id, never 0; 0 when no more requests are taken
    uint32_t add(const ResponseCallback& callback, const std::string& link);
    /// Notes the deadline of a request that still waits. @return false when it does not wait any more
    bool setDeadline(uint32_t id, Deadlines::Handle deadline);
    bool take(uint32_t id, Entry& entry);
    /// All that went out on the link to that peer.
    std::vector<Entry> takeLink(const std::string& peer);
    /// All, and no more are taken.
    std::vector<Entry> close();

private:
    std::mutex mMutex;
    std::map<uint32_t, Entry> mEntries;
    uint32_t mLastId = 0;
    bool mClosed = false;
};

}  // namespace Tarnwick::MQ
