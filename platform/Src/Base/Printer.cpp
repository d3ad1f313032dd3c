#include "Public/Base/Printer.h"

#include <spdlog/details/os.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <exception>

namespace Public::Base {

namespace {

Function<void(const LogEntry&)>& sink() {
    static Function<void(const LogEntry&)> sink;
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

void writeToStderr(const LogEntry& entry) {
    static const auto logger = [] {
        auto made = std::make_shared<spdlog::logger>("orv", std::make_shared<spdlog::sinks::stderr_sink_mt>());
        made->set_pattern("%Y-%m-%d %H:%M:%S.%e %v");
        made->set_level(spdlog::level::trace);
        return made;
    }();
    const size_t end = entry.text.find_last_not_of("\r\n");
    const std::string text = end == std::string::npos ? "" : entry.text.substr(0, end + 1);
    logger->info("{} {} {} {}:{} {}", static_cast<int>(entry.level), spdlog::details::os::thread_id(), entry.file,
                 entry.function, entry.line, text);
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
    } catch (const std::exception&) {
        // A log that cannot be written must not end what it reports on.
    }
}

void setLogSink(const Function<void(const LogEntry&)>& target) { sink() = target; }

}  // namespace Public::Base
