// The thread pool of all network work.
#pragma once

#include <cstddef>
#include <memory>

#include "Public/Base/PlatformExport.h"

namespace Public::Network {

/// Made by the host and handed to every object that does network work. Its threads drive the transfers and run all
/// completion callbacks; it ends with its last reference, also when that is dropped on one of its own threads: requests
/// still running then end with a failure response. Dropped on another thread, it waits for running callbacks and for
/// the completions of those requests; so a lock that they take must not be held.
class ORV_PLATFORM_API IOWorker {
public:
    /// @param threads how many drive transfers, 1 to 64; a number outside counts as the nearest. As many again run the
    ///                completions, so that one that takes its time holds up no transfer
    /// @return null when the system gives no threads
    static std::shared_ptr<IOWorker> create(size_t threads);
    ~IOWorker();
    IOWorker(const IOWorker&) = delete;
    IOWorker& operator=(const IOWorker&) = delete;

    class Impl;
    /// For the network layer itself.
    const std::shared_ptr<Impl>& impl() const { return mImpl; }

private:
    explicit IOWorker(size_t threads);
    std::shared_ptr<Impl> mImpl;
};

}  // namespace Public::Network
