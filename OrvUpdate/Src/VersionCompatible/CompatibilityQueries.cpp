// The six questions to a compatibility document.
#include "VersionCompatible.h"
#include "VersionCompatible/CompatibilityRules.h"

namespace Tarnwick::OrvUpdate {

namespace {

using Rules = std::shared_ptr<const CompatibilityRules>;

/// What goes with the first range that holds the component; the result stays as it was when none does.
void queryFirst(const Rules& rules, const VersionCompatibles& item, std::set<CompatibleRange>& result) {
    if (!rules) return;
    const SortedRanges::Places places = rules->keys.candidates(item);
    for (size_t i = places.first; i < places.last; ++i) {
        if (!rangeContains(rules->keys.all()[i], item)) continue;
        const auto& others = rules->values[i].all();
        result = {others.begin(), others.end()};
        return;
    }
}

struct Finding {
    bool spokenOf = false;  // a range holds the component
    bool admitted = false;  // and a range that goes with it holds the other one
};

Finding find(const Rules& rules, const VersionCompatibles& item, const VersionCompatibles& other) {
    Finding finding;
    if (!rules) return finding;
    const SortedRanges::Places places = rules->keys.candidates(item);
    for (size_t i = places.first; i < places.last; ++i) {
        if (!rangeContains(rules->keys.all()[i], item)) continue;
        finding.spokenOf = true;
        finding.admitted = rules->values[i].hold(other);
        if (finding.admitted) break;
    }
    return finding;
}

VersionCompatibles withoutRevision(VersionCompatibles item) {
    item.version.Revision().clear();
    return item;
}

bool hasRules(VersionType type) {
    return type == VersionType_Client || type == VersionType_VideoWall || type == VersionType_Analytics;
}

/// The systems take no part.
bool areEqual(Version first, Version second) {
    first.Build() = 0;
    second.Build() = 0;
    return first == second;
}

}  // namespace

VersionCompatible::RulesOfRole VersionCompatible::rulesOf(VersionType type) const {
    switch (type) {
        case VersionType_Client:
            return {mClientFromSystem, mSystemFromClient};
        case VersionType_VideoWall:
            return {mVideoWallFromSystem, mSystemFromVideoWall};
        case VersionType_Analytics:
            return {mVanticFromSystem, mSystemFromVantic};
        default:
            return {};
    }
}

ErrorInfo VersionCompatible::queryClientCompatibleFromSystem(VersionType type, const VersionCompatibles& system,
                                                             std::set<CompatibleRange>& result) const {
    queryFirst(rulesOf(type).fromSystem, system, result);
    return {};
}

ErrorInfo VersionCompatible::querySystemCompatibleFromClient(VersionType type, const VersionCompatibles& client,
                                                             std::set<CompatibleRange>& result) const {
    queryFirst(rulesOf(type).fromOther, client, result);
    return {};
}

ErrorInfo VersionCompatible::queryServerCompatibleFromServer(const VersionCompatibles& server,
                                                             std::set<CompatibleRange>& result) const {
    queryFirst(mServerFromServer, server, result);
    return {};
}

bool VersionCompatible::isClientCompatibleFromSystem(VersionType type, const VersionCompatibles& systemGiven,
                                                     const VersionCompatibles& clientGiven) const {
    const VersionCompatibles system = withoutRevision(systemGiven), client = withoutRevision(clientGiven);
    if (!hasRules(type)) return false;
    const RulesOfRole rules = rulesOf(type);
    const Finding ofSystem = find(rules.fromSystem, system, client);
    if (ofSystem.admitted) return true;
    const Finding ofClient = find(rules.fromOther, client, system);
    if (ofClient.admitted) return true;
    if (ofSystem.spokenOf || ofClient.spokenOf) return false;
    return areEqual(system.version, client.version);
}

bool VersionCompatible::isSystemCompatibleFromClient(VersionType type, const VersionCompatibles& systemGiven,
                                                     const VersionCompatibles& clientGiven) const {
    const VersionCompatibles system = withoutRevision(systemGiven), client = withoutRevision(clientGiven);
    if (areEqual(system.version, client.version)) return true;
    return find(rulesOf(type).fromOther, client, system).admitted;
}

bool VersionCompatible::isServerCompatibleFromServer(const VersionCompatibles& firstGiven,
                                                     const VersionCompatibles& secondGiven) const {
    const VersionCompatibles first = withoutRevision(firstGiven), second = withoutRevision(secondGiven);
    if (areEqual(first.version, second.version)) return true;
    return find(mServerFromServer, second, first).admitted;
}

}  // namespace Tarnwick::OrvUpdate
