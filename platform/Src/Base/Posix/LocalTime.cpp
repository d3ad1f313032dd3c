#include "Base/LocalTime.h"

namespace Public::Base {

Time localTime(std::time_t seconds) {
    std::tm parts{};
    localtime_r(&seconds, &parts);
    Time time;
    time.year = parts.tm_year + 1900;
    time.month = parts.tm_mon + 1;
    time.day = parts.tm_mday;
    time.hour = parts.tm_hour;
    time.minute = parts.tm_min;
    time.second = parts.tm_sec;
    time.timeZone = static_cast<int>(parts.tm_gmtoff / 60);
    return time;
}

}  // namespace Public::Base
