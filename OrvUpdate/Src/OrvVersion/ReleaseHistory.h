// The one implementation of IReleaseHistory, and its documents.
#pragma once

#include <memory>
#include <string>

#include "IReleaseHistory.h"

namespace Tarnwick::OrvUpdate {

/// Kept in memory only. Filled by one thread, read by any after it has entered a set.
class ReleaseHistory : public IReleaseHistory {
public:
    bool operator<(const std::shared_ptr<IReleaseHistory>& other) const override;
    SystemType getSystemType() const override;
    SystemBits getSystemBits() const override;
    ProjectType getProjectType() const override;
    VersionType getVersionType() const override;
    Version getVersion() const override;
    unsigned long long getUpdateTime() const override;
    std::string getVersionInfo() const override;
    int getDisplayIndex() const override;
    /// The node document of this record: seven members, the time as decimal text.
    virtual JsonValue buildReleaseHistoryInfo() const;
    virtual ErrorInfo setSystemType(SystemType value);
    virtual ErrorInfo setSystemBits(SystemBits value);
    virtual ErrorInfo setProjectType(ProjectType value);
    virtual ErrorInfo setVersionType(VersionType value);
    virtual void setDisplayIndex(int index);

    /// Reads the cloud's list. Records that fail or belong to another edition than curVersion are dropped; the accepted
    /// ones are numbered from 0 in the cloud's order. @param dir not used
    /// @return -301 when the text is not JSON or has no list at "data"."orvVersionInfo"
    static ErrorInfo parseReleaseHistoryFromHttp(const std::string& text, const std::string& dir,
                                                 ReleaseHistorySet& out, const Version& curVersion);
    /// Reads a node document: one record or an array; elements that fail are dropped. @param curVersion not used
    /// @return -301 when the text is not JSON, or the single record fails
    static ErrorInfo parseReleaseHistory(const std::string& text, ReleaseHistorySet& out, const Version& curVersion);
    /// Writes a node document: an array, or "null" for an empty set. @return code 0
    static ErrorInfo buildReleaseHistory(const ReleaseHistorySet& histories, std::string& out);

private:
    ErrorInfo readCloudRecord(const JsonValue& record);
    ErrorInfo readNodeRecord(const JsonValue& record);

    SystemType systemType = Public::Base::SystemType_Unknown;
    SystemBits systemBits = Public::Base::SystemBits_Unknown;
    ProjectType projectType = Public::Base::ProjectType_Unknown;
    VersionType versionType = VersionType_Unknown;
    Version version;
    unsigned long long updateTime = 0;
    std::string versionInfo;
    int displayIndex = 0;
};

}  // namespace Tarnwick::OrvUpdate
