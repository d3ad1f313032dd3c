// Reading a compatibility document.
#include "VersionCompatible.h"

#include "OrvVersion/RequiredMembers.h"
#include "Public/Base/File.h"
#include "VersionCompatible/RuleReader.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorCode_Failed;
using Public::Base::File;
using Public::Base::SharedBuffer;

namespace {

constexpr RuleKeys kClientKeys{"System", "SystemVersion", "ClientSystem", "ClientVersion"};
constexpr RuleKeys kServerKeys{"System", "Version", "otherSystem", "otherVersion"};
constexpr RuleKeys kVideoWallKeys{"System", "SystemVersion", "VideoWallSystem", "VideoWallVersion"};
constexpr RuleKeys kVanticKeys{"System", "SystemVersion", "VanticServerSystem", "VanticServerVersion"};

/// No longer text is read as JSON, so it needs no room either.
constexpr uint64_t kLongestText = 64ULL << 20;

using Rules = std::shared_ptr<const CompatibilityRules>;

ErrorInfo readBothSides(const JsonValue& array, const RuleKeys& keys, Rules& fromSystem, Rules& fromOther) {
    if (array.empty() || !array.isArray()) return badDocument();
    RuleReader reader(keys);
    reader.read(array);
    fromSystem = std::make_shared<CompatibilityRules>(reader.forward());
    fromOther = std::make_shared<CompatibilityRules>(reader.reverse());
    return {};
}

}  // namespace

std::shared_ptr<IVersionCompatible> IVersionCompatible::loadFromFile(const std::string& path) {
    const auto document = std::make_shared<VersionCompatible>();
    return document->loadFromFile(path) ? nullptr : document;
}

std::shared_ptr<IVersionCompatible> IVersionCompatible::loadFromMem(const std::string& text) {
    const auto document = std::make_shared<VersionCompatible>();
    return document->loadFromMem(text) ? nullptr : document;
}

ErrorInfo VersionCompatible::getVersion(Version& version) const {
    if (mVersion.toString().empty()) return {ErrorCode_Failed, ""};
    version = mVersion;
    return {};
}

ErrorInfo VersionCompatible::loadFromFile(const std::string& path) {
    File file(path);
    if (!file.open(Public::Base::OpenMode_Read)) return {ErrorCode_Failed, ""};
    const uint64_t length = File::getLength(path);
    if (length == 0) return {ErrorCode_Failed, ""};
    if (length > kLongestText) return badDocument();
    std::string text(static_cast<size_t>(length), '\0');
    if (file.read(text.data(), text.size()) < text.size()) return {ErrorCode_Failed, ""};
    return loadFromMem(text);
}

ErrorInfo VersionCompatible::loadFromMem(const std::string& text) {
    JsonValue read;
    read.read(SharedBuffer(text));
    const JsonValue& document = read;
    if (!document.isMember("Version")) return badDocument();
    mVersion = Version(document["Version"]->toString(""), 0);
    if (document.isMember("ClientCompatibles")) parseClientServerCompatible(document["ClientCompatibles"]);
    if (document.isMember("SystemCompatibles")) parseSystemCompatible(document["SystemCompatibles"]);
    if (document.isMember("VideoWallCompatibles")) parseVideoWallServerCompatible(document["VideoWallCompatibles"]);
    if (document.isMember("VanticServerCompatibles")) parseVanticServerCompatibles(document["VanticServerCompatibles"]);
    return {};
}

ErrorInfo VersionCompatible::parseClientServerCompatible(const JsonValue& array) {
    return readBothSides(array, kClientKeys, mClientFromSystem, mSystemFromClient);
}

ErrorInfo VersionCompatible::parseSystemCompatible(const JsonValue& array) {
    // A value that is no array is not refused here, as it is by the others: it takes the rules away.
    if (array.empty()) return badDocument();
    RuleReader reader(kServerKeys);
    reader.read(array);
    mServerFromServer = std::make_shared<CompatibilityRules>(reader.forward());
    return {};
}

ErrorInfo VersionCompatible::parseVideoWallServerCompatible(const JsonValue& array) {
    return readBothSides(array, kVideoWallKeys, mVideoWallFromSystem, mSystemFromVideoWall);
}

ErrorInfo VersionCompatible::parseVanticServerCompatibles(const JsonValue& array) {
    return readBothSides(array, kVanticKeys, mVanticFromSystem, mSystemFromVantic);
}

}  // namespace Tarnwick::OrvUpdate
