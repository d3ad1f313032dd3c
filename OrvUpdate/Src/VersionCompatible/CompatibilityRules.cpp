#include "VersionCompatible/CompatibilityRules.h"

#include <algorithm>

namespace Tarnwick::OrvUpdate {

namespace {

constexpr size_t kShort = 8;  // ranges that are sooner looked at than searched

/// What Version(version.toSimpleString(), 0) is, without the way through text.
Version numbersOf(Version version) {
    version.OEM() = 0;
    version.Build() = 0;
    version.Revision().clear();
    return version;
}

}  // namespace

bool IVersionCompatible::CompatibleRange::operator<(const CompatibleRange& other) const {
    if (system != other.system) return system < other.system;
    const Version lowNumbers = numbersOf(low), otherLowNumbers = numbersOf(other.low);
    if (lowNumbers != otherLowNumbers) return lowNumbers < otherLowNumbers;
    return numbersOf(high) < numbersOf(other.high);
}

bool rangeContains(const CompatibleRange& range, const VersionCompatibles& item) {
    return range.system == item.system && item.version >= range.low && item.version < range.high;
}

void SortedRanges::append(const CompatibleRange& range) {
    auto furthest = static_cast<uint32_t>(mRanges.size());
    if (!mRanges.empty() && mRanges.back().system == range.system && mRanges[mFurthest.back()].high >= range.high) {
        furthest = mFurthest.back();
    }
    mRanges.push_back(range);
    mFurthest.push_back(furthest);
}

SortedRanges::Places SortedRanges::candidates(const VersionCompatibles& item) const {
    if (mRanges.size() <= kShort) return {0, mRanges.size()};
    const auto ofSystem = std::partition_point(
        mRanges.begin(), mRanges.end(), [&](const CompatibleRange& range) { return range.system < item.system; });
    // The order looks at the numbers alone, so what shares its numbers with the component may begin above it.
    const Version numbers = numbersOf(item.version);
    const auto above = std::partition_point(ofSystem, mRanges.end(), [&](const CompatibleRange& range) {
        return range.system == item.system && numbersOf(range.low) <= numbers;
    });
    const auto last = mFurthest.begin() + (above - mRanges.begin());
    const auto first = std::partition_point(mFurthest.begin() + (ofSystem - mRanges.begin()), last,
                                            [&](uint32_t place) { return mRanges[place].high <= item.version; });
    return {static_cast<size_t>(first - mFurthest.begin()), static_cast<size_t>(last - mFurthest.begin())};
}

bool SortedRanges::hold(const VersionCompatibles& item) const {
    const Places places = candidates(item);
    for (size_t i = places.first; i < places.last; ++i) {
        if (rangeContains(mRanges[i], item)) return true;
    }
    return false;
}

CompatibilityRules::CompatibilityRules(const RuleMap& rules) {
    values.reserve(rules.size());
    for (const auto& [key, others] : rules) {
        keys.append(key);
        SortedRanges& ranges = values.emplace_back();
        for (const CompatibleRange& other : others) ranges.append(other);
    }
}

}  // namespace Tarnwick::OrvUpdate
