// A scalar of any of the kinds that logs and documents carry.
#pragma once

#include <string>
#include <variant>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Variant of nothing, text, integer, unsigned, boolean and float. Conversions never fail: what does not convert gives
/// 0, false or empty text. "5" converts to 5, 5 to "5", true to 1 and "true". A text is a number when all of it is one
/// in decimal notation, "." before the fraction, whatever the locale. Plain value: one thread at a time.
class ORV_PLATFORM_API Value {
public:
    Value() = default;
    Value(const char* text);  // NOLINT(google-explicit-constructor): values are written in place in argument lists
    Value(const std::string& text);    // NOLINT(google-explicit-constructor)
    Value(int number);                 // NOLINT(google-explicit-constructor)
    Value(long long number);           // NOLINT(google-explicit-constructor)
    Value(unsigned int number);        // NOLINT(google-explicit-constructor)
    Value(unsigned long number);       // NOLINT(google-explicit-constructor)
    Value(unsigned long long number);  // NOLINT(google-explicit-constructor)
    Value(bool flag);                  // NOLINT(google-explicit-constructor)
    Value(double number);              // NOLINT(google-explicit-constructor)

    /// Each takes a text that is not used; every caller passes an empty one.
    std::string toString(const std::string& unused = {}) const;
    /// Numbers outside of the range give its nearest end, here and below; a fraction is cut off.
    int toInt(const std::string& unused = {}) const;
    unsigned long long toUint64(const std::string& unused = {}) const;
    float toFloat(const std::string& unused = {}) const;
    double toDouble() const;
    bool toBool() const;
    operator unsigned long long() const { return toUint64(); }  // NOLINT(google-explicit-constructor)

    bool isNull() const { return std::holds_alternative<std::monostate>(mData); }
    bool isString() const { return std::holds_alternative<std::string>(mData); }
    bool isInteger() const {
        return std::holds_alternative<long long>(mData) || std::holds_alternative<unsigned long long>(mData);
    }
    bool isUnsigned() const { return std::holds_alternative<unsigned long long>(mData); }
    bool isBool() const { return std::holds_alternative<bool>(mData); }
    bool isFloat() const { return std::holds_alternative<double>(mData); }
    long long toInt64() const;

private:
    std::variant<std::monostate, std::string, long long, unsigned long long, bool, double> mData;
};

}  // namespace Public::Base
