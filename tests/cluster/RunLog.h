// What happened in a run, in order.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace cluster {

/// Lines with the time since the run's beginning. May be written from any thread.
class RunLog {
public:
    /// @param now milliseconds of the run   @param root directory of the run, which the lines show as "~"
    RunLog(std::function<uint64_t()> now, std::string root) : mNow(std::move(now)), mRoot(std::move(root)) {}

    void add(std::string text) {
        for (size_t at; (at = text.find(mRoot)) != std::string::npos;) text.replace(at, mRoot.size(), "~");
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        std::lock_guard lock(mMutex);
        mLines.push_back(std::to_string(mNow()) + " " + text);
    }
    std::vector<std::string> lines() const {
        std::lock_guard lock(mMutex);
        return mLines;
    }

private:
    const std::function<uint64_t()> mNow;
    const std::string mRoot;
    mutable std::mutex mMutex;
    std::vector<std::string> mLines;
};

}  // namespace cluster
