// A version that is not the engine's own class.
#pragma once

#include "IVersion.h"

namespace support {

using namespace Tarnwick::OrvUpdate;

/// Holds a number and nothing else; everything beside it is as in a fresh entry.
class ForeignVersion : public IVersion {
public:
    explicit ForeignVersion(const std::string& version) : mVersion(version, 0) {}

    bool operator<(const std::shared_ptr<IVersion>& other) const override {
        return other && mVersion < other->getVersion();
    }
    SystemType getSystemType() const override { return Public::Base::SystemType_Windows; }
    SystemBits getSystemBits() const override { return Public::Base::SystemBits_64; }
    ProjectType getProjectType() const override { return Public::Base::ProjectType_Unknown; }
    VersionType getVersionType() const override { return VersionType_All; }
    VersionSource getVersionSource() const override { return VersionSource_Online; }
    StoragePosition getStoragePosition() const override { return StoragePosition_None; }
    std::string getDescribe() const override { return {}; }
    Version getVersion() const override { return mVersion; }
    std::string getChangeLog() const override { return {}; }
    unsigned long long getFileSize() const override { return 0; }
    std::string getPackageFile() const override { return {}; }
    std::shared_ptr<IDownload> getDownload(const std::shared_ptr<IVersionRequest>&) override { return nullptr; }
    std::shared_ptr<IDownload> getDownload(const std::shared_ptr<IGetConnection>&) override { return nullptr; }
    JsonValue buildVersionInfo() const override {
        JsonValue value;
        value["softversion"] = mVersion.toString();
        return value;
    }
    ErrorInfo setSystemType(SystemType) override { return {}; }
    ErrorInfo setVersionType(VersionType) override { return {}; }
    ErrorInfo setVersionSource(VersionSource) override { return {}; }
    ErrorInfo setSystemBits(SystemBits) override { return {}; }
    ErrorInfo setStoragePosition(StoragePosition) override { return {}; }
    ErrorInfo setProjectType(ProjectType) override { return {}; }
    ErrorInfo setDescribe(const std::string&) override { return {}; }
    ErrorInfo setVersion(const std::string& text) override {
        mVersion = Version(text, 0);
        return {};
    }
    ErrorInfo setChangeLog(const std::string&) override { return {}; }
    ErrorInfo setFileSize(unsigned long long) override { return {}; }
    ErrorInfo setLocalFileName(const std::string&) override { return {}; }
    ErrorInfo saveVersion(const std::string&) override { return {}; }
    std::string getServerid() const override { return {}; }
    std::string getUrl() const override { return {}; }

private:
    Version mVersion;
};

}  // namespace support
