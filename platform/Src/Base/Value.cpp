#include "Public/Base/Value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace Public::Base {

namespace {

template <class Number>
bool readWhole(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

template <class Number>
std::string print(Number number) {
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, number);
    return error == std::errc() ? std::string(text, end) : std::string();
}

/// "inf" and "nan" are words, not numbers.
double toReal(std::string_view text) {
    double number = 0;
    return readWhole(text, number) && std::isfinite(number) ? number : 0;
}

/// The integer part, or the nearest end of the range; 0 for what is no number.
template <class Integer>
Integer clampReal(double number) {
    if (std::isnan(number)) return 0;
    if (number <= static_cast<double>(std::numeric_limits<Integer>::min())) return std::numeric_limits<Integer>::min();
    if (number >= static_cast<double>(std::numeric_limits<Integer>::max())) return std::numeric_limits<Integer>::max();
    return static_cast<Integer>(number);
}

}  // namespace

Value::Value(const char* text) : mData(std::string(text != nullptr ? text : "")) {}
Value::Value(const std::string& text) : mData(text) {}
Value::Value(int number) : mData(static_cast<long long>(number)) {}
Value::Value(long long number) : mData(number) {}
Value::Value(unsigned int number) : mData(static_cast<unsigned long long>(number)) {}
Value::Value(unsigned long number) : mData(static_cast<unsigned long long>(number)) {}
Value::Value(unsigned long long number) : mData(number) {}
Value::Value(bool flag) : mData(flag) {}
Value::Value(double number) : mData(number) {}

std::string Value::toString(const std::string&) const {
    if (const auto* text = std::get_if<std::string>(&mData)) return *text;
    if (const auto* number = std::get_if<long long>(&mData)) return print(*number);
    if (const auto* number = std::get_if<unsigned long long>(&mData)) return print(*number);
    if (const auto* flag = std::get_if<bool>(&mData)) return *flag ? "true" : "false";
    if (const auto* number = std::get_if<double>(&mData)) return print(*number);
    return {};
}

long long Value::toInt64() const {
    if (const auto* number = std::get_if<long long>(&mData)) return *number;
    if (const auto* number = std::get_if<unsigned long long>(&mData)) {
        constexpr auto most = std::numeric_limits<long long>::max();
        return *number > static_cast<unsigned long long>(most) ? most : static_cast<long long>(*number);
    }
    if (const auto* flag = std::get_if<bool>(&mData)) return *flag ? 1 : 0;
    if (const auto* number = std::get_if<double>(&mData)) return clampReal<long long>(*number);
    if (const auto* text = std::get_if<std::string>(&mData)) {
        long long number = 0;
        return readWhole(*text, number) ? number : clampReal<long long>(toReal(*text));
    }
    return 0;
}

int Value::toInt(const std::string&) const {
    const long long number = toInt64();
    if (number < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    if (number > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    return static_cast<int>(number);
}

unsigned long long Value::toUint64(const std::string&) const {
    if (const auto* number = std::get_if<unsigned long long>(&mData)) return *number;
    if (const auto* number = std::get_if<long long>(&mData)) {
        return *number < 0 ? 0 : static_cast<unsigned long long>(*number);
    }
    if (const auto* flag = std::get_if<bool>(&mData)) return *flag ? 1 : 0;
    if (const auto* number = std::get_if<double>(&mData)) return clampReal<unsigned long long>(*number);
    if (const auto* text = std::get_if<std::string>(&mData)) {
        unsigned long long number = 0;
        return readWhole(*text, number) ? number : clampReal<unsigned long long>(toReal(*text));
    }
    return 0;
}

double Value::toDouble() const {
    if (const auto* number = std::get_if<double>(&mData)) return *number;
    if (const auto* number = std::get_if<unsigned long long>(&mData)) return static_cast<double>(*number);
    if (const auto* text = std::get_if<std::string>(&mData)) return toReal(*text);
    return static_cast<double>(toInt64());
}

float Value::toFloat(const std::string&) const {
    constexpr double most = std::numeric_limits<float>::max();
    const double number = toDouble();
    return static_cast<float>(std::isfinite(number) ? std::clamp(number, -most, most) : number);
}

bool Value::toBool() const {
    if (const auto* flag = std::get_if<bool>(&mData)) return *flag;
    if (const auto* text = std::get_if<std::string>(&mData)) return *text == "true" || toReal(*text) != 0;
    const double number = toDouble();
    return number != 0 && !std::isnan(number);
}

}  // namespace Public::Base
