#include "InstallerPath.h"

#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

namespace {

/// The drive, or the root that stands for it; empty when the system directory has another form.
std::string driveOf(const std::string& systemDirectory) {
    for (const char* place : {"\\Windows\\system32", "/Windows/system32"}) {
        const size_t position = Public::Base::StringEx::indexOfByCase(systemDirectory, place);
        if (position != std::string::npos) return systemDirectory.substr(0, position);
    }
    return {};
}

const char* directoryOf(VersionType role) {
    switch (role) {
        case VersionType_Client:
            return "Client\\";
        case VersionType_VideoWall:
            return "VideoWall\\";
        case VersionType_Analytics:
            return "Analytics\\";
        default:
            return "Server\\";
    }
}

}  // namespace

std::string installerPath(const std::string& systemDirectory, const std::string& edition, VersionType role) {
    return driveOf(systemDirectory) + "\\ProgramData\\" + edition + "\\" + directoryOf(role) + "installer";
}

}  // namespace Tarnwick::OrvUpdate
