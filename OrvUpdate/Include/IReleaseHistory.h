// One published version's release note.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "IVersion.h"
#include "OrvUpdateExport.h"

namespace Tarnwick::OrvUpdate {

/// Built by one thread and not changed after it enters a set; read from any.
class ORV_UPDATE_API IReleaseHistory {
public:
    virtual ~IReleaseHistory() = default;
    /// By version, then bits, system type, version type; display index and time take no part.
    virtual bool operator<(const std::shared_ptr<IReleaseHistory>& other) const = 0;
    virtual SystemType getSystemType() const = 0;
    virtual SystemBits getSystemBits() const = 0;
    virtual ProjectType getProjectType() const = 0;
    virtual VersionType getVersionType() const = 0;
    virtual Version getVersion() const = 0;
    /// Seconds since the epoch.
    virtual unsigned long long getUpdateTime() const = 0;
    /// The note's text.
    virtual std::string getVersionInfo() const = 0;
    /// Place in the list as the cloud gave it, from 0.
    virtual int getDisplayIndex() const = 0;
};

}  // namespace Tarnwick::OrvUpdate

/// The order of every set of release histories. A null pointer comes first.
template <>
struct std::less<std::shared_ptr<Tarnwick::OrvUpdate::IReleaseHistory>> {
    bool operator()(const std::shared_ptr<Tarnwick::OrvUpdate::IReleaseHistory>& left,
                    const std::shared_ptr<Tarnwick::OrvUpdate::IReleaseHistory>& right) const {
        if (!left || !right) return !left && right;
        return *left < right;
    }
};

namespace Tarnwick::OrvUpdate {
using ReleaseHistorySet = std::set<std::shared_ptr<IReleaseHistory>>;
}
