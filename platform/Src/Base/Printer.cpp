#include "Public/Base/Printer.h"

#include <spdlog/details/os.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <mutex>

namespace Public::Base {

namespace {

// The sink and the logger are never destroyed: what ends last in a process may still log.

Function<void(const LogEntry&)>& sink() {
    static auto& sink = *new Function<void(const LogEntry&)>;
    return sink;
}

std::string fill(const char* format, const std::vector<Value>& values) {
    std::string text;
    size_t next = 0;
    for (const char* at = format; *at != '\0'; ++at) {
        if (at[0] == '%' && at[1] == '%') {
            text += '%';
            ++at;
        } else if (at[0] == '%' && (at[1] == 's' || at[1] == 'd') && next < values.size()) {
            text += values[next++].toString("");
            ++at;
        } else {
            text += *at;
        }
    }
    return text;
}

/// The text as the rest of a line, so that no value from outside can make up an entry of its own.
std::string onOneLine(const std::string& text) {
    std::string line;
    for (const char c : text.substr(0, text.find_last_not_of("\r\n") + 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else if ((byte < 0x20 && c != '\t') || byte == 0x7F) {
            line += spdlog::fmt_lib::format("\\x{:02x}", byte);
        } else {
            line += c;
        }
    }
    return line;
}

/// Writes to the stream itself and not to what lay behind it when the first line was written.
class StandardError : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        std::fwrite(line.data(), 1, line.size(), stderr);
        std::fflush(stderr);
    }
    void flush_() override {}
};

void writeToStderr(const LogEntry& entry) {
    static auto& logger = []() -> spdlog::logger& {
        auto& made = *new spdlog::logger("orv", std::make_shared<StandardError>());
        made.set_formatter(std::make_unique<spdlog::pattern_formatter>("%Y-%m-%d %H:%M:%S.%e %v",
                                                                       spdlog::pattern_time_type::local, "\n"));
        made.set_level(spdlog::level::trace);
        return made;
    }();
    logger.info("{} {} {} {}:{} {}", static_cast<int>(entry.level), spdlog::details::os::thread_id(), entry.file,
                entry.function, entry.line, onOneLine(entry.text));
}

}  // namespace

void printer(LOG_Level level, const char* file, const char* function, int line, const char* format,
             const std::vector<Value>& values) {
    try {
        const auto text = [](const char* given) { return given != nullptr ? given : ""; };
        const LogEntry entry{level, text(file), text(function), line, fill(text(format), values)};
        const auto target = sink();
        if (target) {
            target(entry);
        } else {
            writeToStderr(entry);
        }
    } catch (...) {
        // A log that cannot be written must not end what it reports on.
    }
}

void setLogSink(const Function<void(const LogEntry&)>& target) { sink() = target; }

}  // namespace Public::Base
