// Two nodes with a queue between them, and the same copy without one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "OrvVersion.h"
#include "VersionRequest.h"

namespace bench {

constexpr uint64_t kQueueChunk = 0x100000;

/// A file of noise of that size, made once and kept.
std::string queueFile(uint64_t bytes);

/// Copies a file as a transfer over the queue does, with bare threads and memory: one thread reads a chunk when it is
/// asked for and hands it over, another writes it to its position and asks for the next.
void copyByTurns(const std::string& from, const std::string& to);

/// The nodes "holder" and "taker" of one process, each with its catalogue and its service, on an embedded bus.
class QueueNodes {
public:
    /// @param roundTripMs what a request takes on its way, the answer nothing
    explicit QueueNodes(unsigned roundTripMs);

    /// The holder's version whose package is that file.
    std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> hold(const std::string& package);
    /// The same as the taker knows it, to lie in that store.
    std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> wanted(const std::string& store) const;
    const std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest>& holder() const { return mHolder; }
    const std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest>& taker() const { return mTaker; }

private:
    std::shared_ptr<Tarnwick::OrvUpdate::IOWorker> mWorker;
    std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest> mHolder;
    std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest> mTaker;
};

}  // namespace bench
