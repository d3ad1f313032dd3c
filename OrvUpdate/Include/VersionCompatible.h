// The rules of one compatibility document, unfolded to be asked.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "IVersionCompatible.h"

namespace Tarnwick::OrvUpdate {

struct CompatibilityRules;

/// Built empty and filled by a load; not to be loaded while others ask. Copies share the rules, which no load changes:
/// it puts others in their place.
class ORV_UPDATE_API VersionCompatible : public IVersionCompatible {
public:
    ErrorInfo getVersion(Version& version) const override;
    ErrorInfo queryClientCompatibleFromSystem(VersionType type, const VersionCompatibles& system,
                                              std::set<CompatibleRange>& result) const override;
    ErrorInfo querySystemCompatibleFromClient(VersionType type, const VersionCompatibles& client,
                                              std::set<CompatibleRange>& result) const override;
    ErrorInfo queryServerCompatibleFromServer(const VersionCompatibles& server,
                                              std::set<CompatibleRange>& result) const override;
    bool isClientCompatibleFromSystem(VersionType type, const VersionCompatibles& system,
                                      const VersionCompatibles& client) const override;
    bool isSystemCompatibleFromClient(VersionType type, const VersionCompatibles& system,
                                      const VersionCompatibles& client) const override;
    bool isServerCompatibleFromServer(const VersionCompatibles& first, const VersionCompatibles& second) const override;

    /// @return -1 when the file is missing, empty or cannot be read whole, else what loadFromMem says of its text
    virtual ErrorInfo loadFromFile(const std::string& path);
    /// Replaces the rules of those arrays that the document holds; the others stay. What of an array cannot be read is
    /// left out. @return -301, with nothing changed, when the text is not JSON or has no "Version"
    virtual ErrorInfo loadFromMem(const std::string& text);

private:
    using Rules = std::shared_ptr<const CompatibilityRules>;  // null: none
    /// The rules of one role, from either side.
    struct RulesOfRole {
        Rules fromSystem, fromOther;
    };

    // Each returns -301, with its rules as they were, for a value that is not an array or an empty one.
    ErrorInfo parseClientServerCompatible(const JsonValue& array);
    ErrorInfo parseSystemCompatible(const JsonValue& array);
    ErrorInfo parseVideoWallServerCompatible(const JsonValue& array);
    ErrorInfo parseVanticServerCompatibles(const JsonValue& array);
    /// No rules for a role that has none.
    RulesOfRole rulesOf(VersionType type) const;

    Version mVersion;
    Rules mClientFromSystem;
    Rules mSystemFromClient;
    Rules mVideoWallFromSystem;
    Rules mSystemFromVideoWall;
    Rules mVanticFromSystem;
    Rules mSystemFromVantic;
    Rules mServerFromServer;
};

}  // namespace Tarnwick::OrvUpdate
