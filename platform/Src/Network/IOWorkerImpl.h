// The loops of an IOWorker.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "Network/IOLoop.h"
#include "Public/Network/IOWorker.h"

namespace Public::Network {

class IOWorker::Impl {
public:
    explicit Impl(size_t threads);
    void stop();
    /// Each in turn.
    std::shared_ptr<IOLoop> nextLoop();

private:
    std::vector<std::shared_ptr<IOLoop>> mLoops;
    std::atomic<size_t> mNext{0};
};

}  // namespace Public::Network
