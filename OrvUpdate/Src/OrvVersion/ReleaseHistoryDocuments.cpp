// The JSON forms of release notes: the update cloud's list and the cluster's document.
#include "OrvVersion/ReleaseHistory.h"
#include "OrvVersion/RequiredMembers.h"
#include "Public/Base/SharedBuffer.h"
#include "Public/Base/Time.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SharedBuffer;

namespace {

constexpr int sCloudZone = 480;  // the cloud writes its dates in this zone, minutes east of UTC

JsonValue nodeDocument(const IReleaseHistory& history) {
    JsonValue value;
    value["softversion"] = history.getVersion().toString();
    value["systemType"] = static_cast<int>(history.getSystemType());
    value["systemBits"] = static_cast<int>(history.getSystemBits());
    value["versionType"] = static_cast<int>(history.getVersionType());
    value["versionInfo"] = history.getVersionInfo();
    value["updateTime"] = std::to_string(history.getUpdateTime());
    value["displayIndex"] = history.getDisplayIndex();
    return value;
}

}  // namespace

ErrorInfo ReleaseHistory::readCloudRecord(const JsonValue& record) {
    if (!hasMembers(record, {"softversion", "updateTime", "versionInfo"})) return badDocument();
    version = Version(record["softversion"]->toString(), 0);
    auto time = Public::Base::Time::getCurrentTime();
    time.timeZone = sCloudZone;
    if (!time.parse(record["updateTime"]->toString(), "yyyy-MM-dd HH:mm:ss")) return badDocument();
    updateTime = time.makeTime();
    versionInfo = record["versionInfo"]->toString();
    systemType = Public::Base::SystemType_Windows;
    systemBits = Public::Base::SystemBits_64;
    versionType = VersionType_All;
    return {};
}

ErrorInfo ReleaseHistory::parseReleaseHistoryFromHttp(const std::string& text, const std::string&,
                                                      ReleaseHistorySet& out, const Version& curVersion) {
    JsonValue heard;
    if (heard.read(SharedBuffer(text))) return badDocument();
    const JsonValue& document = heard;
    const JsonValue data = document["data"];
    if (!data.isMember("orvVersionInfo")) return badDocument();
    const JsonValue records = data["orvVersionInfo"];
    if (!records.isArray()) return badDocument();
    int displayIndex = 0;
    for (size_t index = 0; index < records.size(); ++index) {
        auto history = std::make_shared<ReleaseHistory>();
        if (history->readCloudRecord(records[index])) continue;
        if (history->version.OEM() != curVersion.OEM()) continue;
        history->setDisplayIndex(displayIndex++);
        out.insert(history);
    }
    return {};
}

ErrorInfo ReleaseHistory::readNodeRecord(const JsonValue& record) {
    if (!hasMembers(record, {"softversion", "systemType", "systemBits", "versionType", "versionInfo", "updateTime",
                             "displayIndex"})) {
        return badDocument();
    }
    updateTime = Public::Base::Value(record["updateTime"]->toString()).toUint64();
    version = Version(record["softversion"]->toString(), 0);
    versionInfo = record["versionInfo"]->toString();
    systemType = static_cast<SystemType>(record["systemType"]->toInt());
    systemBits = static_cast<SystemBits>(record["systemBits"]->toInt());
    versionType = static_cast<VersionType>(record["versionType"]->toInt());
    displayIndex = record["displayIndex"]->toInt();
    return {};
}

ErrorInfo ReleaseHistory::parseReleaseHistory(const std::string& text, ReleaseHistorySet& out, const Version&) {
    JsonValue heard;
    if (heard.read(SharedBuffer(text))) return badDocument();
    const JsonValue& document = heard;
    const auto addRecord = [&](const JsonValue& record) {
        auto history = std::make_shared<ReleaseHistory>();
        const ErrorInfo error = history->readNodeRecord(record);
        if (!error) out.insert(history);
        return error;
    };
    if (!document.isArray()) return addRecord(document);
    for (size_t index = 0; index < document.size(); ++index) addRecord(document[index]);
    return {};
}

JsonValue ReleaseHistory::buildReleaseHistoryInfo() const { return nodeDocument(*this); }

ErrorInfo ReleaseHistory::buildReleaseHistory(const ReleaseHistorySet& histories, std::string& out) {
    JsonValue document;
    for (const auto& history : histories) {
        if (history) document.append(nodeDocument(*history));
    }
    out = document.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
    return {};
}

}  // namespace Tarnwick::OrvUpdate
