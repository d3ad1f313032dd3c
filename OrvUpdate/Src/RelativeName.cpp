#include "RelativeName.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::StringEx;

namespace {

constexpr std::string_view kSeparators = "\\/";

/// Calls the test with each part between separators; true when one passes it.
template <class Test>
bool anyPart(std::string_view name, Test test) {
    while (true) {
        const size_t end = name.find_first_of(kSeparators);
        if (test(name.substr(0, end))) return true;
        if (end == std::string_view::npos) return false;
        name.remove_prefix(end + 1);
    }
}

/// ".." and what comes to the same where points and blanks at the end of a name fall away.
bool climbs(std::string_view part) {
    return part.starts_with("..") && part.find_first_not_of(". ") == std::string_view::npos;
}

/// The devices of Windows, which answer in every directory and with any extension.
bool isDevice(std::string_view part) {
    static constexpr std::array<std::string_view, 7> kDevices = {"con",    "prn",     "aux",   "nul",
                                                                 "conin$", "conout$", "clock$"};
    static constexpr std::array<std::string_view, 3> kSuperscripts = {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};  // 1, 2, 3
    std::string stem = StringEx::toLower(std::string(part.substr(0, part.find('.'))));
    stem.erase(stem.find_last_not_of(' ') + 1);
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) return true;
    if (!stem.starts_with("com") && !stem.starts_with("lpt")) return false;
    const std::string_view port = std::string_view(stem).substr(3);
    if (port.size() == 1) return port[0] >= '0' && port[0] <= '9';
    return std::find(kSuperscripts.begin(), kSuperscripts.end(), port) != kSuperscripts.end();
}

}  // namespace

bool leadsUp(const std::string& name) { return anyPart(name, climbs); }

bool isPlainRelativeName(const std::string& name) {
    if (name.empty() || kSeparators.find(name.front()) != std::string_view::npos) return false;
    if (name.find(':') != std::string::npos) return false;
    return !leadsUp(name) && !anyPart(name, isDevice);
}

}  // namespace Tarnwick::OrvUpdate
