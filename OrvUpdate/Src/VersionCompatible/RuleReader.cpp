#include "VersionCompatible/RuleReader.h"

#include <array>
#include <utility>

#include "EngineLog.h"
#include "OrvVersion/RequiredMembers.h"
#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::StringEx;

namespace {

constexpr std::array<std::pair<const char*, SystemType>, 5> kSystems{{{"Windows", Public::Base::SystemType_Windows},
                                                                      {"Linux", Public::Base::SystemType_Linux},
                                                                      {"Mac", Public::Base::SystemType_Mac},
                                                                      {"Android", Public::Base::SystemType_Android},
                                                                      {"IOS", Public::Base::SystemType_IOS}}};

bool isRange(const JsonValue& range) { return hasMembers(range, {"LowVersion", "HigherVersion"}); }

CompatibleRange readRange(const JsonValue& range) {
    CompatibleRange read;
    read.low = Version(range["LowVersion"]->toString(""), 0);
    read.high = Version(range["HigherVersion"]->toString(""), 0);
    return read;
}

CompatibleRange ofSystem(SystemType system, CompatibleRange range) {
    range.system = system;
    return range;
}

}  // namespace

void RuleReader::read(const JsonValue& array) {
    if (!array.isArray()) return;
    for (size_t i = 0; i < array.size(); ++i) {
        Side first, second;
        if (!readElement(array[i], first, second)) continue;
        if (!unfold(first, second)) {
            ORV_LOG(2, "VersionCompatible", "Too many rules!");
            return;
        }
    }
}

bool RuleReader::readElement(const JsonValue& element, Side& first, Side& second) {
    if (!hasMembers(element, {mKeys.firstSystems, mKeys.firstRange, mKeys.secondSystems, mKeys.secondRange})) {
        return false;
    }
    const JsonValue firstRange = element[mKeys.firstRange], secondRange = element[mKeys.secondRange];
    if (!isRange(firstRange) || !isRange(secondRange)) return false;
    first = {readSystems(element[mKeys.firstSystems]), readRange(firstRange)};
    second = {readSystems(element[mKeys.secondSystems]), readRange(secondRange)};
    return true;
}

std::set<SystemType> RuleReader::readSystems(const JsonValue& names) {
    std::set<SystemType> systems;
    if (!names.isArray()) return systems;
    for (size_t i = 0; i < names.size(); ++i) systems.insert(getSystemTypeFromString(names[i]->toString("")));
    return systems;
}

SystemType RuleReader::getSystemTypeFromString(const std::string& name) {
    for (const auto& [known, type] : kSystems) {
        if (StringEx::iequals(name, known)) return type;
    }
    if (++mUnknownNames <= kMostNamesLogged) ORV_LOG(2, "VersionCompatible", "Unknown System!");
    return Public::Base::SystemType_Unknown;
}

bool RuleReader::unfold(const Side& first, const Side& second) {
    mRules += first.systems.size() * second.systems.size();
    if (mRules > kMostRules) return false;
    for (const SystemType firstSystem : first.systems) {
        const CompatibleRange firstRange = ofSystem(firstSystem, first.range);
        for (const SystemType secondSystem : second.systems) {
            const CompatibleRange secondRange = ofSystem(secondSystem, second.range);
            mForward[firstRange].insert(secondRange);
            mReverse[secondRange].insert(firstRange);
        }
    }
    return true;
}

}  // namespace Tarnwick::OrvUpdate
