// The JSON forms of a version: the cluster's document and the update cloud's.
#include "OrvVersion.h"
#include "OrvVersion/RequiredMembers.h"
#include "Public/Base/SharedBuffer.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SharedBuffer;

ErrorInfo OrvVersion::parseVersion(const std::string& json) {
    JsonValue value;
    if (value.read(SharedBuffer(json))) return {Public::Base::ErrorCode_Failed, ""};
    return parseVersion(value);
}

ErrorInfo OrvVersion::parseVersion(const JsonValue& value) {
    if (!hasMembers(value, {"softversion", "serverid", "description", "systemType", "systemBits", "versionType",
                            "versionSource"})) {
        return badDocument();
    }
    mVersion = Version(value["softversion"]->toString(), 0);
    mServerId = value["serverid"]->toString();
    mDescribe = value["description"]->toString();
    mSystemType = static_cast<SystemType>(value["systemType"]->toInt());
    mSystemBits = static_cast<SystemBits>(value["systemBits"]->toInt());
    mVersionType = static_cast<VersionType>(value["versionType"]->toInt());
    mVersionSource = static_cast<VersionSource>(value["versionSource"]->toInt());
    mStoragePosition = StoragePosition_Node;
    return {};
}

ErrorInfo OrvVersion::parseVersion(std::shared_ptr<IOWorker> ioWorker, const std::string& json, const std::string& dir,
                                   VersionSet& out, const std::string& serverId, const Version&) {
    JsonValue heard;
    if (heard.read(SharedBuffer(json))) return badDocument();
    const JsonValue& document = heard;
    const auto addVersion = [&](const JsonValue& value) {
        auto version = std::make_shared<OrvVersion>(ioWorker, dir, serverId);
        const ErrorInfo error = version->parseVersion(value);
        if (!error) out.insert(version);
        return error;
    };
    if (!document.isArray()) return addVersion(document);
    for (size_t index = 0; index < document.size(); ++index) addVersion(document[index]);
    return {};
}

ErrorInfo OrvVersion::parseVersionFromHttp(const JsonValue& value) {
    if (!hasMembers(value, {"softversion", "description", "url"})) return badDocument();
    mDescribe = value["description"]->toString();
    mVersion = Version(value["softversion"]->toString(), 0);
    mUrl = value["url"]->toString();
    mVersionSource = VersionSource_Online;
    mSystemType = Public::Base::SystemType_Windows;
    mSystemBits = Public::Base::SystemBits_64;
    mVersionType = VersionType_All;
    mStoragePosition = StoragePosition_Cloud;
    return {};
}

ErrorInfo OrvVersion::parseVersionFromHttp(std::shared_ptr<IOWorker> ioWorker, const std::string& json,
                                           const std::string& dir, VersionSet& out, const std::string& serverId,
                                           const Version& version) {
    JsonValue heard;
    if (heard.read(SharedBuffer(json))) return badDocument();
    const JsonValue& document = heard;
    const bool single = !document.isArray();
    const auto addVersion = [&](const JsonValue& value) {
        auto entry = std::make_shared<OrvVersion>(ioWorker, dir, serverId);
        const ErrorInfo error = entry->parseVersionFromHttp(value);
        if (error) return error;
        const bool sameEdition = entry->mVersion.OEM() == version.OEM();
        // Only the answer with one version says "nothing to fetch" by an empty URL; in a list such an entry counts.
        if (sameEdition && !(single && entry->mUrl.empty())) out.insert(entry);
        return error;
    };
    if (single) return addVersion(document);
    for (size_t index = 0; index < document.size(); ++index) addVersion(document[index]);
    return {};
}

JsonValue OrvVersion::buildVersionInfo() const {
    JsonValue value;
    value["softversion"] = mVersion.toString();
    value["serverid"] = getServerid();
    value["description"] = mDescribe;
    value["systemType"] = static_cast<int>(mSystemType);
    value["systemBits"] = static_cast<int>(mSystemBits);
    value["versionType"] = static_cast<int>(mVersionType);
    value["versionSource"] = static_cast<int>(mVersionSource);
    return value;
}

ErrorInfo OrvVersion::buildVersion(const VersionSet& versions, std::string& out) {
    JsonValue document;
    for (const auto& version : versions) {
        if (version) document.append(version->buildVersionInfo());
    }
    out = document.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
    return {};
}

}  // namespace Tarnwick::OrvUpdate
