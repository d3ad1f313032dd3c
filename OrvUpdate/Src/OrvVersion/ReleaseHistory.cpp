#include "OrvVersion/ReleaseHistory.h"

#include <tuple>

namespace Tarnwick::OrvUpdate {

bool ReleaseHistory::operator<(const std::shared_ptr<IReleaseHistory>& other) const {
    if (!other) return false;  // as in the order of sets, where null comes first
    const Version otherVersion = other->getVersion();
    if (version != otherVersion) return version < otherVersion;
    const auto rank = [](int bits, int system, int type) { return std::tuple(bits, system, type); };
    return rank(systemBits, systemType, versionType) <
           rank(other->getSystemBits(), other->getSystemType(), other->getVersionType());
}

SystemType ReleaseHistory::getSystemType() const { return systemType; }
SystemBits ReleaseHistory::getSystemBits() const { return systemBits; }
ProjectType ReleaseHistory::getProjectType() const { return projectType; }
VersionType ReleaseHistory::getVersionType() const { return versionType; }
Version ReleaseHistory::getVersion() const { return version; }
unsigned long long ReleaseHistory::getUpdateTime() const { return updateTime; }
std::string ReleaseHistory::getVersionInfo() const { return versionInfo; }
int ReleaseHistory::getDisplayIndex() const { return displayIndex; }

ErrorInfo ReleaseHistory::setSystemType(SystemType value) {
    systemType = value;
    return {};
}

ErrorInfo ReleaseHistory::setSystemBits(SystemBits value) {
    systemBits = value;
    return {};
}

ErrorInfo ReleaseHistory::setProjectType(ProjectType value) {
    projectType = value;
    return {};
}

ErrorInfo ReleaseHistory::setVersionType(VersionType value) {
    versionType = value;
    return {};
}

void ReleaseHistory::setDisplayIndex(int index) { displayIndex = index; }

}  // namespace Tarnwick::OrvUpdate
