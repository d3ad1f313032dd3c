// The one implementation of IVersion.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "IGetServerId.h"
#include "IVersion.h"
#include "Public/Network/IOWorker.h"

namespace Tarnwick::OrvUpdate {

using Public::Network::IOWorker;

/// A version, its place in the store, its documents, and its one transfer. Always held by std::shared_ptr. Made and
/// filled by one thread, read by any; only the local file name and the transfer change afterwards, each under a lock.
class ORV_UPDATE_API OrvVersion : public IVersion, public std::enable_shared_from_this<OrvVersion> {
public:
    /// No store and no server id. @param ioWorker handed to the transfers
    explicit OrvVersion(std::shared_ptr<IOWorker> ioWorker);
    /// @param downloadDir root of the store   @param serverId of the server that holds the package
    OrvVersion(std::shared_ptr<IOWorker> ioWorker, const std::string& downloadDir, const std::string& serverId);
    /// @param getServerId asked at every read of the server id; null means that there is none
    OrvVersion(std::shared_ptr<IOWorker> ioWorker, const std::string& downloadDir,
               const std::shared_ptr<IGetServerId>& getServerId);
    ~OrvVersion() override;
    OrvVersion(const OrvVersion&) = delete;
    OrvVersion& operator=(const OrvVersion&) = delete;

    bool operator<(const std::shared_ptr<IVersion>& other) const override;
    SystemType getSystemType() const override;
    SystemBits getSystemBits() const override;
    ProjectType getProjectType() const override;
    VersionType getVersionType() const override;
    VersionSource getVersionSource() const override;
    StoragePosition getStoragePosition() const override;
    std::string getDescribe() const override;
    Version getVersion() const override;
    std::string getChangeLog() const override;
    unsigned long long getFileSize() const override;
    std::string getPackageFile() const override;
    std::shared_ptr<IDownload> getDownload(const std::shared_ptr<IVersionRequest>& request) override;
    std::shared_ptr<IDownload> getDownload(const std::shared_ptr<IGetConnection>& connection) override;
    JsonValue buildVersionInfo() const override;
    ErrorInfo setSystemType(SystemType systemType) override;
    ErrorInfo setVersionType(VersionType versionType) override;
    ErrorInfo setVersionSource(VersionSource source) override;
    ErrorInfo setSystemBits(SystemBits bits) override;
    ErrorInfo setStoragePosition(StoragePosition position) override;
    ErrorInfo setProjectType(ProjectType projectType) override;
    ErrorInfo setDescribe(const std::string& text) override;
    ErrorInfo setVersion(const std::string& text) override;
    ErrorInfo setChangeLog(const std::string& text) override;
    ErrorInfo setFileSize(unsigned long long bytes) override;
    ErrorInfo setLocalFileName(const std::string& path) override;
    ErrorInfo saveVersion(const std::string& content) override;
    std::string getServerid() const override;
    std::string getUrl() const override;

    /// Releases the transfer and clears the local file name, so that the next getDownload chooses afresh.
    void resetDownload();

    /// Reads one node document. @return -1 when the text is not JSON, -301 when a member is missing (nothing is
    /// written)
    ErrorInfo parseVersion(const std::string& json);
    /// @return -301 when a member is missing; nothing is written then
    ErrorInfo parseVersion(const JsonValue& value);
    /// Reads a node document of one version or an array of them; elements that fail are dropped.
    /// @param serverId default, which the document's own "serverid" replaces   @param version not used
    /// @return -301 when the text is not JSON, or the single version fails
    static ErrorInfo parseVersion(std::shared_ptr<IOWorker> ioWorker, const std::string& json, const std::string& dir,
                                  VersionSet& out, const std::string& serverId, const Version& version);
    /// Reads one cloud document. @return -301 when "softversion", "description" or "url" is missing
    ErrorInfo parseVersionFromHttp(const JsonValue& value);
    /// Reads a cloud document of one version or an array of them; elements that fail, and versions of another edition,
    /// are dropped. A single version with an empty URL is dropped too.
    /// @param version the running version, whose edition is wanted
    /// @return -301 when the text is not JSON, or the single version fails
    static ErrorInfo parseVersionFromHttp(std::shared_ptr<IOWorker> ioWorker, const std::string& json,
                                          const std::string& dir, VersionSet& out, const std::string& serverId,
                                          const Version& version);
    /// Walks the store and makes an entry for each sound package. Opens every package, so it takes time in proportion
    /// to the store. @param getServerId for the entries; may be null   @return code 0, whatever was found
    static ErrorInfo parseVersionFromCache(std::shared_ptr<IOWorker> ioWorker, const std::string& dir, VersionSet& out,
                                           const std::shared_ptr<IGetServerId>& getServerId);
    /// Writes the node document of a set: an array, or "null" for an empty set. @return code 0
    static ErrorInfo buildVersion(const VersionSet& versions, std::string& out);

private:
    friend struct OrvVersionAccess;  // tests of the private path operations

    static std::string getVersionSourceDescribe(VersionSource source);
    static VersionSource getVersionSource(const std::string& text);
    static std::string buildVersionPath(SystemType systemType, SystemBits bits, VersionType versionType,
                                        const std::string& version);
    static std::string buildVersionFileName(const std::string& dir, VersionSource source, SystemType systemType,
                                            SystemBits bits, VersionType versionType, const std::string& version);
    static bool parseVersionPath(const std::string& name, SystemType& systemType, SystemBits& bits,
                                 VersionType& versionType);
    std::shared_ptr<IDownload> findArrivedPackage(const std::shared_ptr<IGetConnection>& connection);
    std::shared_ptr<IDownload> makeDownload(const std::shared_ptr<IGetConnection>& connection);

    Version mVersion;
    std::string mDescribe;
    std::string mDownloadDir;
    std::string mServerId;
    std::string mUrl;
    std::string mLocalFileName;
    SystemBits mSystemBits = Public::Base::SystemBits_64;
    SystemType mSystemType = Public::Base::SystemType_Windows;
    VersionType mVersionType = VersionType_All;
    VersionSource mVersionSource = VersionSource_Online;
    ProjectType mProjectType = Public::Base::ProjectType_Unknown;
    StoragePosition mStoragePosition = StoragePosition_None;
    std::shared_ptr<IDownload> mDownload;
    std::mutex mDownloadMutex;               // guards mDownload
    mutable std::mutex mLocalFileNameMutex;  // guards mLocalFileName, the innermost lock
    std::shared_ptr<IGetServerId> mGetServerId;
    std::shared_ptr<IOWorker> mIOWorker;
};

}  // namespace Tarnwick::OrvUpdate
