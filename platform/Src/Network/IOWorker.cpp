#include "Public/Network/IOWorker.h"

#include "Network/IOWorkerImpl.h"

namespace Public::Network {

std::shared_ptr<IOWorker> IOWorker::create(size_t threads) { return std::shared_ptr<IOWorker>(new IOWorker(threads)); }

IOWorker::IOWorker(size_t threads) : mImpl(std::make_shared<Impl>(std::max<size_t>(threads, 1))) {}

IOWorker::~IOWorker() { mImpl->stop(); }

IOWorker::Impl::Impl(size_t threads) {
    // Never undone: other users of the library in this process may rely on it.
    [[maybe_unused]] static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    for (size_t i = 0; i < threads; ++i) mLoops.push_back(IOLoop::run());
}

void IOWorker::Impl::stop() {
    for (const auto& loop : mLoops) loop->stop();
}

std::shared_ptr<IOLoop> IOWorker::Impl::nextLoop() { return mLoops[mNext++ % mLoops.size()]; }

}  // namespace Public::Network
