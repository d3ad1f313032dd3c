// The ends of the host that follow installations asked for by peers.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include "OrvInstaller/AgentInstaller.h"

namespace Tarnwick::OrvUpdate {

/// Lets the host end a second after each launch, so that the answer to the peer can leave before. One thread serves all
/// that wait: a peer that asks a thousand times does not make it a thousand. Held by std::shared_ptr; the thread
/// outlives the service.
class PendingExits : public std::enable_shared_from_this<PendingExits> {
public:
    void add(const std::shared_ptr<AgentInstaller>& installer);

private:
    void run();

    std::mutex mMutex;  // guards the two below; not held while the host is told
    std::deque<std::pair<uint64_t, std::shared_ptr<AgentInstaller>>> mWaiting;  // with the time at which each is due
    bool mRunning = false;                                                      // a thread is at work
};

}  // namespace Tarnwick::OrvUpdate
