// Which versions of the system's components may work together.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "IVersion.h"
#include "OrvUpdateExport.h"

namespace Tarnwick::OrvUpdate {

/// A component that a question is about.
struct VersionCompatibles {
    SystemType system = Public::Base::SystemType_Unknown;
    int reserved = 0;  ///< copied along, never compared
    Version version;
};

/// A document of rules, read from JSON. Once loaded it is only read: any number of threads may ask at a time.
///
/// A rule joins two ranges of components. A range holds a component of its own system whose version is at least `low`
/// and below `high`. The role of the component beside the system is Client, VideoWall or Analytics; there are no rules
/// for any other.
class ORV_UPDATE_API IVersionCompatible {
public:
    /// One side of a rule.
    struct ORV_UPDATE_API CompatibleRange {
        SystemType system = Public::Base::SystemType_Unknown;
        int reserved = 0;  ///< never compared
        Version low;       ///< inclusive
        Version high;      ///< exclusive

        /// By system, then by the dotted numbers of low, then by those of high.
        bool operator<(const CompatibleRange& other) const;
    };

    virtual ~IVersionCompatible() = default;

    /// The document's own version. @return -1 when it has none that can be read
    virtual ErrorInfo getVersion(Version& version) const = 0;

    // What goes with a component. The first range that holds it decides, with edition, build and revision as they
    // stand. Each returns code 0, and leaves the result as it was when there is no such range.

    /// Ranges of the role that go with the system.
    virtual ErrorInfo queryClientCompatibleFromSystem(VersionType type, const VersionCompatibles& system,
                                                      std::set<CompatibleRange>& result) const = 0;
    /// Ranges of systems that go with the component of that role.
    virtual ErrorInfo querySystemCompatibleFromClient(VersionType type, const VersionCompatibles& client,
                                                      std::set<CompatibleRange>& result) const = 0;
    /// Ranges of other servers that go with the server; rules between servers hold in one direction.
    virtual ErrorInfo queryServerCompatibleFromServer(const VersionCompatibles& server,
                                                      std::set<CompatibleRange>& result) const = 0;

    // Whether two components go together. Revisions count for nothing; versions that differ in their build alone are
    // equal. The three differ in what equality is worth.

    /// Any rule that joins the two, read from either side; equal versions count only where no rule speaks of either.
    virtual bool isClientCompatibleFromSystem(VersionType type, const VersionCompatibles& system,
                                              const VersionCompatibles& client) const = 0;
    /// Equal versions, for any role; else any rule that joins the two, read from the client's side.
    virtual bool isSystemCompatibleFromClient(VersionType type, const VersionCompatibles& system,
                                              const VersionCompatibles& client) const = 0;
    /// Equal versions; else a rule whose "System" holds the second and whose "otherSystem" holds the first. Asked the
    /// other way round, the answer can be another.
    virtual bool isServerCompatibleFromServer(const VersionCompatibles& first,
                                              const VersionCompatibles& second) const = 0;

    /// @return null when the file cannot be read or holds no such document
    static std::shared_ptr<IVersionCompatible> loadFromFile(const std::string& path);
    /// @return null when the text is no such document
    static std::shared_ptr<IVersionCompatible> loadFromMem(const std::string& text);
};

}  // namespace Tarnwick::OrvUpdate
