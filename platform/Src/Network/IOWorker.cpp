#include "Public/Network/IOWorker.h"

#include <algorithm>
#include <limits>
#include <system_error>

#include "Base/ThreadName.h"
#include "Network/IOWorkerImpl.h"

namespace Public::Network {

namespace {
constexpr size_t kMostThreads = 64;
}

IOWorker::Impl::Impl(size_t threads) : mCompletions(std::make_shared<CompletionPool>()) {
    try {
        for (size_t made = 0; made < threads; ++made) {
            auto loop = std::make_shared<TransferLoop>(mCompletions);
            mThreads.emplace_back([loop] {
                Base::nameThisThread("OrvIO");
                loop->run();
            });
            mLoops.push_back(std::move(loop));
            mThreads.emplace_back([completions = mCompletions] {
                Base::nameThisThread("OrvCompletion");
                completions->run();
            });
        }
    } catch (...) {
        shutDown();
        throw;
    }
}

IOWorker::Impl::~Impl() = default;

bool IOWorker::Impl::submit(const std::shared_ptr<Exchange>& exchange) {
    const size_t first = mTurn++;
    std::shared_ptr<TransferLoop> chosen;
    size_t least = std::numeric_limits<size_t>::max();
    for (size_t step = 0; step < mLoops.size(); ++step) {
        const auto& loop = mLoops[(first + step) % mLoops.size()];
        const size_t load = loop->load();
        if (load >= least) continue;
        least = load;
        chosen = loop;
    }
    return chosen && chosen->submit(exchange);
}

void IOWorker::Impl::wake() {
    for (const auto& loop : mLoops) loop->wake();
}

void IOWorker::Impl::shutDown() {
    for (const auto& loop : mLoops) loop->stop();
    const bool own = std::any_of(mThreads.begin(), mThreads.end(), [](const std::thread& thread) {
        return thread.get_id() == std::this_thread::get_id();
    });
    for (auto& thread : mThreads) {
        if (own) {
            thread.detach();
        } else {
            thread.join();
        }
    }
    mThreads.clear();
}

IOWorker::IOWorker(size_t threads) : mImpl(std::make_shared<Impl>(threads)) {}

IOWorker::~IOWorker() { mImpl->shutDown(); }

std::shared_ptr<IOWorker> IOWorker::create(size_t threads) {
    try {
        return std::shared_ptr<IOWorker>(new IOWorker(std::clamp<size_t>(threads, 1, kMostThreads)));
    } catch (const std::system_error&) {
        return nullptr;
    }
}

}  // namespace Public::Network
