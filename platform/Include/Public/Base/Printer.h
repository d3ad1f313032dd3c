// The log.
#pragma once

#include <string>
#include <vector>

#include "Public/Base/Function.h"
#include "Public/Base/PlatformExport.h"
#include "Public/Base/Value.h"

namespace Public::Base {

enum LOG_Level : int {
    LOG_Level_Error = 2,     ///< errors
    LOG_Level_Progress = 4,  ///< progress
    LOG_Level_Detail = 6,    ///< file detail of backup and unpacking
};

/// One entry of the log, as a sink receives it.
struct LogEntry {
    LOG_Level level = LOG_Level_Error;
    std::string file;      ///< source path of the caller's unit
    std::string function;  ///< full name of the calling operation
    int line = 0;
    std::string text;  ///< the format with its values filled in, as it stands, line ends included
};

/// Logs one entry. The format takes "%s" and "%d", filled from the values in order; one without a value stays as it
/// stands, "%%" gives "%", any other use of "%" stays. Thread-safe; never throws.
ORV_PLATFORM_API void printer(LOG_Level level, const char* file, const char* function, int line, const char* format,
                              const std::vector<Value>& values);

/// Sends every later entry to the sink instead of stderr; an empty one restores stderr. The sink is called on the
/// logging thread, on several at once. May be called while other threads run.
/// The default writes one line of time, level, thread, source path, function, line and text: line ends at the end of
/// the text go, other control characters are written as escapes.
ORV_PLATFORM_API void setLogSink(const Function<void(const LogEntry&)>& sink);

}  // namespace Public::Base
