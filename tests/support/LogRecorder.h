// Collects the log while it lives.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Public/Base/Printer.h"

namespace support {

/// Takes the place of the log's sink; the default sink is back at its end. Entries may come from any thread.
class LogRecorder {
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// A copy of what has come so far, in order.
    std::vector<Public::Base::LogEntry> entries() const;
    /// True when an entry of that level and exactly that text has come.
    bool has(int level, const std::string& text) const;

private:
    struct State;
    std::shared_ptr<State> mState;  // shared with an entry that is on its way at the end
};

}  // namespace support
