// Rules in the form in which they are asked: ranges that can be searched without looking at each.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "IVersionCompatible.h"

namespace Tarnwick::OrvUpdate {

using CompatibleRange = IVersionCompatible::CompatibleRange;

/// Rules as they are gathered from a document: what goes with each range.
using RuleMap = std::map<CompatibleRange, std::set<CompatibleRange>>;

/// True when the range is of the component's system, begins at or below its version and ends above it.
bool rangeContains(const CompatibleRange& range, const VersionCompatibles& item);

/// Ranges in their order.
class SortedRanges {
public:
    /// Places of ranges, the last one exclusive.
    struct Places {
        size_t first = 0, last = 0;
    };

    /// Behind those that are there already.
    void append(const CompatibleRange& range);
    /// All ranges that hold the component are among these. Of more than a few ranges, the first is its system's first
    /// that ends above its version; behind the last, all begin above it.
    Places candidates(const VersionCompatibles& item) const;
    bool hold(const VersionCompatibles& item) const;
    const std::vector<CompatibleRange>& all() const { return mRanges; }

private:
    std::vector<CompatibleRange> mRanges;
    std::vector<uint32_t> mFurthest;  // for each range, which one of its system up to it has the highest end
};

/// What goes with the range of each key.
struct CompatibilityRules {
    explicit CompatibilityRules(const RuleMap& rules);

    SortedRanges keys;
    std::vector<SortedRanges> values;  // of the key at the same place
};

}  // namespace Tarnwick::OrvUpdate
