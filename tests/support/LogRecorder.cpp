#include "LogRecorder.h"

#include <algorithm>
#include <mutex>

namespace support {

using Public::Base::LogEntry;

struct LogRecorder::State {
    std::mutex mutex;
    std::vector<LogEntry> entries;
};

LogRecorder::LogRecorder() : mState(std::make_shared<State>()) {
    Public::Base::setLogSink([state = mState](const LogEntry& entry) {
        std::lock_guard lock(state->mutex);
        state->entries.push_back(entry);
    });
}

LogRecorder::~LogRecorder() { Public::Base::setLogSink({}); }

std::vector<LogEntry> LogRecorder::entries() const {
    std::lock_guard lock(mState->mutex);
    return mState->entries;
}

bool LogRecorder::has(int level, const std::string& text) const {
    const auto all = entries();
    return std::any_of(all.begin(), all.end(),
                       [&](const LogEntry& entry) { return entry.level == level && entry.text == text; });
}

}  // namespace support
