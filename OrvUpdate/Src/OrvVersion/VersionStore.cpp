// Where packages lie: <store>/<Source>/<System> <Bits> <Type>/<version>/<version>.exe
#include <array>
#include <span>

#include "OrvVersion.h"
#include "OrvVersion/PackageForm.h"
#include "Public/Base/Directory.h"
#include "Public/Base/File.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::Directory;
using Public::Base::Dirent;
using Names = std::span<const std::string_view>;

namespace {

// The words of the store, each at its number.
constexpr std::array<std::string_view, 6> sSystemNames{"Unknown", "Windows", "Linux", "Mac", "Android", "IOS"};
constexpr std::array<std::string_view, 6> sTypeNames{"Unknown", "All", "Client", "Server", "VideoWall", "Analytics"};
constexpr std::array<std::string_view, 3> sSourceNames{"Unknown", "Online", "Manual"};

std::string nameOf(Names names, int number) {
    const bool known = number > 0 && static_cast<size_t>(number) < names.size();
    return std::string(names[known ? static_cast<size_t>(number) : 0]);
}

/// 0 for a word that is none of them; "Unknown" itself is not accepted, which also gives 0.
int numberOf(Names names, std::string_view word) {
    const auto found = std::find(names.begin(), names.end(), word);
    return found == names.end() ? 0 : static_cast<int>(found - names.begin());
}

std::string bitsName(SystemBits bits) {
    if (bits == Public::Base::SystemBits_32) return "x86";
    return bits == Public::Base::SystemBits_64 ? "x64" : "Unknown";
}

SystemBits bitsOf(std::string_view word) {
    if (word == "x86") return Public::Base::SystemBits_32;
    return word == "x64" ? Public::Base::SystemBits_64 : Public::Base::SystemBits_Unknown;
}

std::vector<Dirent> entriesOf(const std::string& path, Dirent::Type type) {
    std::vector<Dirent> entries;
    Directory directory(path);
    Dirent entry;
    while (directory.read(entry)) {
        if (entry.type == type) entries.push_back(entry);
    }
    return entries;
}

bool readPackageVersion(const std::string& path, std::string& text) {
    NSISDecompile package;
    return openSoundPackage(path, package) && package.getVersion(text);
}

}  // namespace

std::string OrvVersion::getVersionSourceDescribe(VersionSource source) { return nameOf(sSourceNames, source); }

VersionSource OrvVersion::getVersionSource(const std::string& text) {
    return static_cast<VersionSource>(numberOf(sSourceNames, text));
}

std::string OrvVersion::buildVersionPath(SystemType systemType, SystemBits bits, VersionType versionType,
                                         const std::string& version) {
    return nameOf(sSystemNames, systemType) + " " + bitsName(bits) + " " + nameOf(sTypeNames, versionType) + "/" +
           version;
}

std::string OrvVersion::buildVersionFileName(const std::string& dir, VersionSource source, SystemType systemType,
                                             SystemBits bits, VersionType versionType, const std::string& version) {
    return dir + "/" + getVersionSourceDescribe(source) + "/" +
           buildVersionPath(systemType, bits, versionType, version) + "/" + version + ".exe";
}

bool OrvVersion::parseVersionPath(const std::string& name, SystemType& systemType, SystemBits& bits,
                                  VersionType& versionType) {
    const std::string_view text = name;
    const size_t systemEnd = text.find(' ');
    if (systemEnd == std::string_view::npos) return false;
    systemType = static_cast<SystemType>(numberOf(sSystemNames, text.substr(0, systemEnd)));
    if (systemType == Public::Base::SystemType_Unknown) return false;

    const size_t bitsEnd = text.find(' ', systemEnd + 1);
    if (bitsEnd == std::string_view::npos) return false;
    bits = bitsOf(text.substr(systemEnd + 1, bitsEnd - systemEnd - 1));
    if (bits == Public::Base::SystemBits_Unknown) return false;

    versionType = static_cast<VersionType>(numberOf(sTypeNames, text.substr(bitsEnd + 1)));
    return versionType != VersionType_Unknown;
}

ErrorInfo OrvVersion::saveVersion(const std::string& content) {
    const std::string path =
        buildVersionFileName(mDownloadDir, mVersionSource, mSystemType, mSystemBits, mVersionType, mVersion.toString());
    if (Public::Base::File::save(path, Public::Base::SharedBuffer(content))) return {};
    return ErrorInfo::getLastError();
}

ErrorInfo OrvVersion::parseVersionFromCache(std::shared_ptr<IOWorker> ioWorker, const std::string& dir, VersionSet& out,
                                            const std::shared_ptr<IGetServerId>& getServerId) {
    SystemType systemType = Public::Base::SystemType_Unknown;
    SystemBits bits = Public::Base::SystemBits_Unknown;
    const auto addPackage = [&](VersionSource source, const Dirent& file) {
        std::string text;
        if (file.suffix != "exe" || !readPackageVersion(file.fullPath, text)) return;
        auto version = std::make_shared<OrvVersion>(ioWorker, dir, getServerId);
        version->setSystemType(systemType);
        version->setSystemBits(bits);
        version->setVersionType(VersionType_All);  // whatever role the directory names: a stored package serves any
        version->setVersionSource(source);
        version->setVersion(text);
        version->setStoragePosition(StoragePosition_Local);
        version->setLocalFileName(file.fullPath);
        out.insert(version);
    };

    for (const Dirent& sourceDir : entriesOf(dir, Dirent::Type_Directory)) {
        const VersionSource source = getVersionSource(sourceDir.name);
        if (source == VersionSource_Unknown) continue;
        for (const Dirent& platformDir : entriesOf(sourceDir.fullPath, Dirent::Type_Directory)) {
            VersionType versionType = VersionType_Unknown;
            if (!parseVersionPath(platformDir.name, systemType, bits, versionType)) continue;
            for (const Dirent& versionDir : entriesOf(platformDir.fullPath, Dirent::Type_Directory)) {
                for (const Dirent& file : entriesOf(versionDir.fullPath, Dirent::Type_File)) addPackage(source, file);
            }
        }
    }
    return {};
}

}  // namespace Tarnwick::OrvUpdate
