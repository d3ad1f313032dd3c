#include "Public/Base/Time.h"

#include <chrono>
#include <ctime>

#include "Base/LocalTime.h"
#include "Public/Base/Clock.h"

namespace Public::Base {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

int* fieldOf(Time& time, char letter) {
    switch (letter) {
        case 'y':
            return &time.year;
        case 'M':
            return &time.month;
        case 'd':
            return &time.day;
        case 'H':
            return &time.hour;
        case 'm':
            return &time.minute;
        case 's':
            return &time.second;
        default:
            return nullptr;
    }
}

std::chrono::year_month_day dateOf(const Time& time) {
    return std::chrono::year(time.year) / static_cast<unsigned>(time.month) / static_cast<unsigned>(time.day);
}

/// The ranges come first, since the calendar's own types keep only the low bits of a number.
bool isDate(const Time& time) {
    return time.year >= 0 && time.year <= 9999 && time.month >= 1 && time.month <= 12 && time.day >= 1 &&
           time.day <= 31 && dateOf(time).ok();
}

}  // namespace

Time Time::getCurrentTime() { return localTime(std::time(nullptr)); }

uint64_t Time::getCurrentMilliSecond() { return Clock::current()->milliseconds(); }

bool Time::parse(const std::string& text, const std::string& format) {
    if (text.size() != format.size()) return false;
    Time read = *this;
    read.year = read.month = read.day = read.hour = read.minute = read.second = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        int* field = isLetter(format[i]) ? fieldOf(read, format[i]) : nullptr;
        if (field == nullptr) {
            if (text[i] != format[i]) return false;
            continue;
        }
        if (text[i] < '0' || text[i] > '9' || *field > 9999) return false;
        *field = *field * 10 + (text[i] - '0');
    }
    if (!isDate(read) || read.hour > 23 || read.minute > 59 || read.second > 59) return false;
    *this = read;
    return true;
}

uint64_t Time::makeTime() const {
    using namespace std::chrono;
    if (!isDate(*this)) return 0;
    const auto point = sys_days(dateOf(*this)) + hours(hour) + minutes(minute) + seconds(second) - minutes(timeZone);
    const auto since = duration_cast<seconds>(point.time_since_epoch()).count();
    return since < 0 ? 0 : static_cast<uint64_t>(since);
}

}  // namespace Public::Base
