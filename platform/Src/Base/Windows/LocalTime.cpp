#include "Base/LocalTime.h"

#include <time.h>

namespace Public::Base {

Time localTime(std::time_t seconds) {
    std::tm parts{};
    Time time;
    if (::_localtime64_s(&parts, &seconds) != 0) return time;
    time.year = parts.tm_year + 1900;
    time.month = parts.tm_mon + 1;
    time.day = parts.tm_mday;
    time.hour = parts.tm_hour;
    time.minute = parts.tm_min;
    time.second = parts.tm_sec;
    // The same clock face read as universal time lies off by the zone.
    time.timeZone = static_cast<int>((::_mkgmtime64(&parts) - seconds) / 60);
    return time;
}

}  // namespace Public::Base
