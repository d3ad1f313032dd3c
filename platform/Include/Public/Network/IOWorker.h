// The thread pool of all network work.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Public/Base/PlatformExport.h"

namespace Public::Network {

/// Made by the host and handed to every object that does network work. Its threads drive the transfers and run all
/// completion callbacks; it ends with its last reference, also when that is dropped on one of its own threads: requests
/// still running then end with a failure response.
class ORV_PLATFORM_API IOWorker {
public:
    /// @param threads at least 1; 0 counts as 1
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
