// The one implementation of IVersionRequest.
#pragma once

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "IGetServerId.h"
#include "IVersionRequest.h"
#include "Public/Base/SafeSharedPtr.h"
#include "Public/Network/HTTPClient.h"
#include "Tarnwick/MQ/MQMessage.h"

namespace Tarnwick::OrvUpdate {

class AgentInstaller;
class IDownload;
class VersionService;
struct HttpUrl;
struct RunningInstall;
struct StoreCache;

/// Owns the catalogue and the release notes, knows the running version and the store, and holds the connection to the
/// queue. Must be owned by a std::shared_ptr, which the factories of IVersionRequest see to: otherwise start and the
/// HTTP requests throw std::bad_weak_ptr. Entered by the host's threads, the IOWorker's and the queue's.
class ORV_UPDATE_API VersionRequest : public IVersionRequest,
                                      public IGetServerId,
                                      public std::enable_shared_from_this<VersionRequest> {
public:
    VersionRequest(std::shared_ptr<IOWorker> ioWorker, const std::shared_ptr<TWMQClient>& client,
                   VersionType versionType);
    VersionRequest(std::shared_ptr<IOWorker> ioWorker, const std::shared_ptr<TWMQSystemServer>& server,
                   VersionType versionType);
    /// Stops.
    ~VersionRequest() override;

    VersionType getVersionType() override;
    ErrorInfo start(const Version& curVersion, const PackageCallback& packageCallback,
                    const CheckCallback& checkCallback, const std::string& downloadDir) override;
    ErrorInfo stop() override;
    ErrorInfo setRequestVersion(const Version& version) override;
    ErrorInfo setOtherNodes(const std::set<std::string>& nodes) override;
    ErrorInfo getOtherNodes(std::set<std::string>& nodes) override;
    ErrorInfo requestVersion(const RequestFinished& callback) override;
    ErrorInfo querySystemVersion(const std::map<std::string, TWServerInfo>& servers,
                                 const RequestFinished& callback) override;
    ErrorInfo querySystemVersion(const RequestFinished& callback) override;
    ErrorInfo install(const std::shared_ptr<IVersion>& version, const std::string& installDir, bool flag,
                      const Function<void(const ErrorInfo&)>& onError, const Function<void()>& onDownloaded,
                      const Function<void()>& onInstalling) override;
    ErrorInfo installCancel(const std::shared_ptr<IVersion>& version) override;
    VersionSet getVersions() override;
    VersionSet queryVersions(SystemType systemType, SystemBits bits, ProjectType projectType, VersionType versionType,
                             VersionSource source) override;
    std::shared_ptr<IVersion> queryVersion(const std::shared_ptr<IVersion>& key) override;
    std::shared_ptr<IVersion> queryVersion(SystemType systemType, SystemBits bits, ProjectType projectType,
                                           VersionType versionType, VersionSource source,
                                           const Version& version) override;
    std::shared_ptr<IVersion> queryNewestVersion(SystemType systemType, SystemBits bits, ProjectType projectType,
                                                 VersionType versionType, VersionSource source,
                                                 const Version& than) override;
    ErrorInfo uploadVersion(const std::string& filePath, VersionSource source, const UploadFinished& done) override;
    const Version& getCurVersion() override;
    ErrorInfo requestReleaseHistory(const RequestFinished& callback) override;
    ErrorInfo queryReleaseHistory(const RequestFinished& callback) override;
    ReleaseHistorySet getReleaseHistory() override;
    void requestReleaseHistoryFromHttp(const Function<void(const ErrorInfo&)>& callback, bool clear) override;
    void requestVersionFromHttp(const Function<void(const ErrorInfo&)>& callback, bool unused) override;
    void registerNewestVersionNotify(const Function<void()>& callback) override;
    void registerVersionRequestNotify(const Function<void()>& callback) override;
    /// What registerVersionRequestNotify was given; for the service.
    Function<void()> getVersionRequestNotify() const;

    /// The server's id, or this end's id on the client's link; empty without either.
    std::string getServerId() override;

    /// Root of the store; empty until a start has succeeded.
    std::string getDownloadDir() const;
    std::shared_ptr<IOWorker> getIOWorker() const;
    std::shared_ptr<TWMQClient> getMQClient() const;
    std::shared_ptr<TWMQServer> getMQServer() const;
    /// The callbacks of start, for installers that are made for this request.
    PackageCallback getPackageCallback() const;
    CheckCallback getCheckCallback() const;

    // Changes of the catalogue. Each returns code 0.

    /// Inserts; an equivalent entry that is there already stays.
    ErrorInfo addVersion(const std::shared_ptr<IVersion>& version);
    ErrorInfo addVersions(const VersionSet& versions);
    /// Erases the entries equivalent to these, where they have that position.
    ErrorInfo removeVersions(const VersionSet& versions, StoragePosition position);
    /// Erases all entries but those on this disk.
    ErrorInfo removeVersions();
    /// Replaces the entries of that position; a new entry also replaces an equivalent one of any other position.
    ErrorInfo updateVersions(const VersionSet& versions, StoragePosition position);
    ErrorInfo addReleaseHistory(const ReleaseHistorySet& histories);
    ErrorInfo removeReleaseHistory();

    // The queries on a given set.

    static VersionSet _queryVersions(const VersionSet& versions, SystemType systemType, SystemBits bits,
                                     ProjectType projectType, VersionType versionType, VersionSource source);
    static std::shared_ptr<IVersion> _queryVersion(const VersionSet& versions, SystemType systemType, SystemBits bits,
                                                   ProjectType projectType, VersionType versionType,
                                                   VersionSource source, const Version& version);
    /// The five filter values are not used: the set has been filtered already.
    static std::shared_ptr<IVersion> _queryNewestVersion(const VersionSet& versions, SystemType systemType,
                                                         SystemBits bits, ProjectType projectType,
                                                         VersionType versionType, VersionSource source,
                                                         const Version& than);

    /// The store's test of one file, on its outer form alone. In spite of its name it tells whether the file IS a good
    /// package: true means usable.
    static bool isInvalidPakcage(const std::string& path);

private:
    friend struct VersionRequestAccess;  // tests of private operations

    using HttpFinished = Function<void(const ErrorInfo&)>;
    using VersionsFinished = Function<void(const ErrorInfo&, const VersionSet&)>;
    using HistoriesFinished = Function<void(const ErrorInfo&, const ReleaseHistorySet&)>;

    // CloudRequests.cpp
    std::list<std::shared_ptr<HttpUrl>> getVersionServerHttp();
    std::list<std::shared_ptr<HttpUrl>> getReleaseHistoryServerHttp();
    void requestVersionFromHttp(const std::shared_ptr<HttpUrl>& url, const VersionsFinished& finished);
    void requestReleaseHistoryFromHttp(const std::shared_ptr<HttpUrl>& url, const HistoriesFinished& finished);
    std::string getUpgradeDomain();
    static ErrorInfo checkHttpResponse(const std::shared_ptr<Public::Network::HTTPClientResponse>& response);
    /// Sends one GET; `finished` gets the checked result and the body. @return false when the request was refused
    bool sendCloudRequest(const std::string& url, const Function<void(const ErrorInfo&, const std::string&)>& finished);

    // ClusterRequests.cpp
    ErrorInfo _requestVersion(const std::string& topic, const RequestFinished& callback);
    ErrorInfo _requestVersion(const std::string& topic, const std::set<std::string>& nodes,
                              const RequestFinished& callback);
    ErrorInfo _requestReleaseHistory(const std::string& topic, const RequestFinished& callback);
    ErrorInfo _requestReleaseHistory(const std::string& topic, const std::set<std::string>& nodes,
                                     const RequestFinished& callback);
    ErrorInfo notifyAllNodeCheckUpgrade();
    std::shared_ptr<TWMQSystemServer> systemServer() const;
    std::shared_ptr<Tarnwick::MQ::MQConnection> linkTo(const std::string& nodeId) const;
    std::shared_ptr<Tarnwick::MQ::MQConnection> linkToReachable(const std::string& nodeId) const;
    std::set<std::string> withOtherNodes(std::set<std::string> nodes) const;

    // Install.cpp
    void onPackageArrived(const std::shared_ptr<RunningInstall>& install);
    void releaseInstall(const std::shared_ptr<RunningInstall>& install);
    /// Lets go of the installations that wait for this transfer.
    void dropInstalls(const std::shared_ptr<IDownload>& transfer);

    // Upload.cpp
    ErrorInfo keepUpload(const std::shared_ptr<IDownload>& upload);
    void onUploaded(const std::shared_ptr<IDownload>& upload, const std::string& masterId, const UploadFinished& done);

    // VersionRequest.cpp
    std::shared_ptr<Tarnwick::MQ::MQMessage> onNewestVersionNotify(
        const std::shared_ptr<Tarnwick::MQ::MQMessage>& message);
    static StoreCache& storeCache();
    VersionSet scanStore(const std::string& dir, const Version& running);
    Version currentVersion() const;
    Version versionToRequest() const;

    // Catalogue.cpp
    VersionSet snapshot();

    std::shared_ptr<IOWorker> mIOWorker;
    std::mutex mStartMutex;           // orders start and stop; the outermost lock
    mutable std::mutex mStateMutex;   // guards the two versions, mOtherNodes and mDownloadDir; innermost
    std::list<Version> mCurVersions;  // the last one is in force; older ones stay for references handed out
    Version mRequestVersion;
    std::mutex mVersionMutex;  // guards the two sets; never held across a callback
    VersionSet mVersions;
    ReleaseHistorySet mReleaseHistories;
    SafeSharedPtr<VersionService> mVersionService;  // set while started
    std::shared_ptr<TWMQClient> mMQClient;
    std::shared_ptr<TWMQServer> mMQServer;
    SafeSharedPtr<AgentInstaller> mAgentInstaller;  // the agent of the running install
    std::mutex mInstallMutex;                       // guards mRunningInstalls
    std::list<std::shared_ptr<RunningInstall>> mRunningInstalls;
    std::atomic<bool> mInstallCancel{false};
    std::string mDownloadDir;
    VersionType mVersionType;
    std::mutex mUploadMutex;             // guards mUpload
    std::shared_ptr<IDownload> mUpload;  // the one upload in flight
    std::set<std::string> mOtherNodes;
    Function<void()> mNewestVersionNotify;
    CheckCallback mCheckCallback;
    PackageCallback mPackageCallback;
    Function<void()> mVersionRequestNotify;
};

}  // namespace Tarnwick::OrvUpdate
