// Wall time, broken down, for dates; and the monotonic millisecond count.
#pragma once

#include <cstdint>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// A date and time of a zone. Plain value.
struct ORV_PLATFORM_API Time {
    int year = 1970;
    int month = 1;  ///< 1 to 12
    int day = 1;    ///< 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int timeZone = 0;  ///< minutes east of UTC

    /// Now, in the zone of this machine.
    static Time getCurrentTime();
    /// Milliseconds of the monotonic Clock; the origin is arbitrary.
    static uint64_t getCurrentMilliSecond();

    /// Reads a whole text of the format "yyyy-MM-dd HH:mm:ss" (the letters stand for digits, everything else for
    /// itself). The zone stays as it is. @return false, leaving this value as it was, for any other text and for a date
    /// that no calendar has
    bool parse(const std::string& text, const std::string& format);
    /// Seconds since 1970-01-01 00:00:00 UTC, the zone taken into account; 0 for dates before that and for
    /// a date that no calendar has.
    uint64_t makeTime() const;
};

}  // namespace Public::Base
