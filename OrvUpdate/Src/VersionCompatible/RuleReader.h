// Reads one array of a compatibility document.
#pragma once

#include <cstddef>
#include <set>

#include "Public/Base/JsonValue.h"
#include "VersionCompatible/CompatibilityRules.h"

namespace Tarnwick::OrvUpdate {

/// Keys of an array's elements.
struct RuleKeys {
    const char* firstSystems;
    const char* firstRange;
    const char* secondSystems;
    const char* secondRange;
};

/// Unfolds each element to the product of its lists of systems. An element that lacks something is left out.
class RuleReader {
public:
    /// More than any document of this system holds; what a hostile one can make of its text ends here.
    static constexpr size_t kMostRules = 100000;
    /// How many unknown names are written to the log.
    static constexpr size_t kMostNamesLogged = 1000;

    explicit RuleReader(const RuleKeys& keys) : mKeys(keys) {}
    /// Elements from the one on that would lead beyond the most rules are left out.
    void read(const Public::Base::JsonValue& array);

    const RuleMap& forward() const { return mForward; }
    const RuleMap& reverse() const { return mReverse; }

private:
    struct Side {
        std::set<SystemType> systems;
        CompatibleRange range;
    };

    /// @return false when the element lacks something
    bool readElement(const Public::Base::JsonValue& element, Side& first, Side& second);
    std::set<SystemType> readSystems(const Public::Base::JsonValue& names);
    /// @return 0, with a line of the log, for any name that is not one of the five
    SystemType getSystemTypeFromString(const std::string& name);
    /// @return false when there is no room for the product
    bool unfold(const Side& first, const Side& second);

    RuleKeys mKeys;
    RuleMap mForward, mReverse;
    size_t mRules = 0;
    size_t mUnknownNames = 0;
};

}  // namespace Tarnwick::OrvUpdate
