// Helpers on text.
#pragma once

#include <cstddef>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// All take UTF-8 and compare bytes; case is folded for ASCII letters only. Thread-safe.
class ORV_PLATFORM_API StringEx {
public:
    /// A copy with every occurrence replaced, from left to right; an empty `from` replaces nothing.
    static std::string replace(const std::string& text, const std::string& from, const std::string& to);
    static bool iequals(const std::string& a, const std::string& b);
    /// Where the part begins, or the largest size_t when it is not there.
    static size_t indexOf(const std::string& text, const std::string& part);
    /// The same without regard to case.
    static size_t indexOfByCase(const std::string& text, const std::string& part);
    static std::string toLower(const std::string& text);
    /// UTF-8 to the system's wide form. Bytes that are not UTF-8 become replacement characters.
    static std::wstring string2wstring(const std::string& text);
    /// And back.
    static std::string wstring2string(const std::wstring& text);
};

}  // namespace Public::Base
