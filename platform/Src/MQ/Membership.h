// What a node knows of the other nodes.
#pragma once

#include <cstdint>
#include <string>

#include "MQ/Frame.h"

namespace Tarnwick::MQ {

constexpr uint64_t kAnnouncePeriod = 500;  // milliseconds
constexpr uint64_t kSilence = 1750;
constexpr uint64_t kNever = UINT64_MAX;

/// Kept up to date by the node's frames and by its own beat. All operations may be called from any thread; none is
/// called by a bus under a lock.
class Membership {
public:
    virtual ~Membership() = default;

    /// Announces and judges silence when it is time. @return when it wants to be called next
    virtual uint64_t tick(uint64_t now) = 0;
    /// Takes an announcement, a greeting or a list. @param from the sender as the bus knows it
    virtual void receive(const std::string& from, const Frame& frame, uint64_t now) = 0;
    /// The bus says that the peer cannot be reached.
    virtual void lost(const std::string& peer) = 0;
    /// False for a peer that is known to be silent or lost.
    virtual bool alive(const std::string& peer) = 0;
};

/// Tells a silent peer from a process that was itself held up (a suspended machine, a jump of the clock): a beat that
/// comes more than two periods after the last one counts as one period of silence only.
class Beat {
public:
    explicit Beat(uint64_t now) : mLast(now) {}
    /// Milliseconds by which this process was held up since the last call.
    uint64_t heldUp(uint64_t now) {
        const uint64_t gap = now - mLast;
        mLast = now;
        return gap > 2 * kAnnouncePeriod ? gap - kAnnouncePeriod : 0;
    }

private:
    uint64_t mLast;
};

}  // namespace Tarnwick::MQ
