// Lets tests reach the private path operations of OrvVersion.
#pragma once

#include "OrvVersion.h"

namespace Tarnwick::OrvUpdate {

struct OrvVersionAccess {
    static std::string sourceName(int source) {
        return OrvVersion::getVersionSourceDescribe(static_cast<VersionSource>(source));
    }
    static int sourceNumber(const std::string& name) { return OrvVersion::getVersionSource(name); }
    static std::string path(int systemType, int bits, int versionType, const std::string& version) {
        return OrvVersion::buildVersionPath(static_cast<SystemType>(systemType), static_cast<SystemBits>(bits),
                                            static_cast<VersionType>(versionType), version);
    }
    static std::string fileName(const std::string& dir, int source, int systemType, int bits, int versionType,
                                const std::string& version) {
        return OrvVersion::buildVersionFileName(dir, static_cast<VersionSource>(source),
                                                static_cast<SystemType>(systemType), static_cast<SystemBits>(bits),
                                                static_cast<VersionType>(versionType), version);
    }
    static bool parsePath(const std::string& name, SystemType& systemType, SystemBits& bits, VersionType& versionType) {
        return OrvVersion::parseVersionPath(name, systemType, bits, versionType);
    }
};

}  // namespace Tarnwick::OrvUpdate
