// The object that a host makes once: catalogue, cloud requests, installation.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "IReleaseHistory.h"
#include "IVersion.h"
#include "Public/Base/Function.h"
#include "Public/Network/IOWorker.h"
#include "Tarnwick/MQ/TWMQClient.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::Function;
using Public::Network::IOWorker;
using Tarnwick::MQ::TWMQClient;
using Tarnwick::MQ::TWMQServer;
using Tarnwick::MQ::TWMQSystemServer;
using Tarnwick::MQ::TWServerInfo;

/// Asks the host whether a package may be installed. Gets the version text; may fill the two texts, which travel to the
/// launched installer unread. False refuses.
using PackageCallback = Function<bool(const std::string& version, std::string& first, std::string& second)>;
/// Tells the host that the installer has been launched, so that it can end itself.
using CheckCallback = Function<bool()>;
/// Follows a request to the nodes of the cluster: called once for each node, and after them, where the update cloud is
/// asked too, once more. Runs on queue threads, several at once; on the caller's for nodes without a connection; on an
/// IOWorker thread for the call after the cloud.
/// @param nodeId the node that answered; empty for one without a connection (code 0) and for the call after the cloud
/// @param result that node's or the cloud's; -202 for a node that did not answer in 60 seconds
/// @param isLast true in the last call alone, which begins when the others have returned
using RequestFinished = Function<void(const std::string& nodeId, const ErrorInfo& result, bool isLast)>;
/// How an upload ended. @param masterId of the server that it went to, as it was when the upload began
using UploadFinished = Function<void(const std::string& masterId, const ErrorInfo& result)>;

/// Operations may be called from any thread; those that move data return at once and end in a callback. Callbacks run
/// with no lock held.
class ORV_UPDATE_API IVersionRequest {
public:
    /// For client-side programs. @param ioWorker runs all HTTP and its callbacks   @param client may be null
    /// @param versionType role of this program
    static std::shared_ptr<IVersionRequest> allocVersionRequest(std::shared_ptr<IOWorker> ioWorker,
                                                                const std::shared_ptr<TWMQClient>& client,
                                                                VersionType versionType);
    /// For a server. @param server may be null
    static std::shared_ptr<IVersionRequest> allocVersionRequest(std::shared_ptr<IOWorker> ioWorker,
                                                                const std::shared_ptr<TWMQSystemServer>& server,
                                                                VersionType versionType);

    virtual ~IVersionRequest() = default;

    virtual VersionType getVersionType() = 0;

    /// Starts the engine: the first start of a process scans the store on this thread and prunes it to two packages;
    /// then the message service comes up. On a started object only the two versions change.
    /// @param curVersion      the running version
    /// @param packageCallback asks the host's consent before an installation
    /// @param checkCallback   tells the host to end after the installer was launched
    /// @param downloadDir     root of the version store
    /// @return what the service reports: -1 without a queue object
    virtual ErrorInfo start(const Version& curVersion, const PackageCallback& packageCallback,
                            const CheckCallback& checkCallback, const std::string& downloadDir) = 0;
    /// Ends the service; the catalogue stays, and start may be called again. @return code 0
    virtual ErrorInfo stop() = 0;
    /// Sets the version that cloud requests report, until the next start. @return code 0
    virtual ErrorInfo setRequestVersion(const Version& version) = 0;

    /// Names nodes that every request to the cluster asks beside the servers that the queue knows. @return code 0
    virtual ErrorInfo setOtherNodes(const std::set<std::string>& nodes) = 0;
    /// @return code 0
    virtual ErrorInfo getOtherNodes(std::set<std::string>& nodes) = 0;
    /// Asks every node to ask the update cloud and to tell its catalogue, then asks the cloud from here. The answers
    /// together replace the entries learnt from nodes; without a node to ask, all entries that are not on this disk go
    /// and the cloud is not asked. After the last call of `callback` the other nodes are told to look again, or the
    /// callback of registerVersionRequestNotify runs. Never ends when a link refuses a request, or when this object
    /// goes. @return code 0; on a server `callback` gets -1: servers name the nodes that they ask
    virtual ErrorInfo requestVersion(const RequestFinished& callback) = 0;
    /// Asks these servers for their catalogues as they stand. @return code 0; failures go to `callback`
    virtual ErrorInfo querySystemVersion(const std::map<std::string, TWServerInfo>& servers,
                                         const RequestFinished& callback) = 0;
    /// The same of every node, on a client.
    virtual ErrorInfo querySystemVersion(const RequestFinished& callback) = 0;

    /// Brings the package of a catalogue entry to this disk, tests it, launches the installer program and lets the host
    /// end itself. Returns at once when a transfer has been started.
    /// @param installDir   where the installer installs to
    /// @param flag         handed to the installer as its last argument, "1" or "0"
    /// @param onError      gets the failure: on this thread when install itself fails, else on the transfer's thread
    /// @param onDownloaded the package has arrived; on the transfer's thread
    /// @param onInstalling the package has passed its test; on the transfer's thread
    /// @return 0 when the transfer runs, also when the version is running already (no callback then); -1 when no
    /// transfer
    ///         is to be had; the transfer's error when it refuses to start
    virtual ErrorInfo install(const std::shared_ptr<IVersion>& version, const std::string& installDir, bool flag,
                              const Function<void(const ErrorInfo&)>& onError, const Function<void()>& onDownloaded,
                              const Function<void()>& onInstalling) = 0;
    /// Cancels the transfer, or makes the package test discard the package; later it keeps the host from being ended.
    /// No callback of install runs for it. @return code 0
    virtual ErrorInfo installCancel(const std::shared_ptr<IVersion>& version) = 0;

    /// A copy of the catalogue.
    virtual VersionSet getVersions() = 0;
    /// The entries that pass a filter of five values, of which 0 means any; version type 1 means any too, and an entry
    /// of type All passes for every type. With the first four 0 the source is not looked at and all entries are
    /// returned.
    virtual VersionSet queryVersions(SystemType systemType, SystemBits bits, ProjectType projectType,
                                     VersionType versionType, VersionSource source) = 0;
    /// The first entry that passes the key's own fields as a filter and has its version, or null; null for a null key.
    virtual std::shared_ptr<IVersion> queryVersion(const std::shared_ptr<IVersion>& key) = 0;
    virtual std::shared_ptr<IVersion> queryVersion(SystemType systemType, SystemBits bits, ProjectType projectType,
                                                   VersionType versionType, VersionSource source,
                                                   const Version& version) = 0;
    /// The entry of the greatest version strictly above `than` that passes, the first in set order among equals, or
    /// null.
    virtual std::shared_ptr<IVersion> queryNewestVersion(SystemType systemType, SystemBits bits,
                                                         ProjectType projectType, VersionType versionType,
                                                         VersionSource source, const Version& than) = 0;
    /// Sends a package file of this machine to the cluster's master, one upload at a time.
    /// @param source told to the master
    /// @param done   gets the master's id and the outcome, after which the next upload may begin: PostDownload::start
    ///               tells the codes, and the threads that it runs on
    /// @return 0 when the upload runs; -417 while another does; -1 on a program that is no client of the queue, where
    ///         `done` does not run
    virtual ErrorInfo uploadVersion(const std::string& filePath, VersionSource source, const UploadFinished& done) = 0;
    /// The running version, as start was given it. The reference holds for the life of the object.
    virtual const Version& getCurVersion() = 0;
    /// Forgets the release notes, asks every server of the cluster to ask the cloud for them and to tell what it has,
    /// then asks the cloud from here, unless the last node to be done with had no connection. The notes enter as they
    /// come. Never ends when a link refuses a request, or when this object goes. @return code 0; when no server is
    /// known `callback` gets -1 twice, both as the last call
    virtual ErrorInfo requestReleaseHistory(const RequestFinished& callback) = 0;
    /// The same for the notes as they stand, without the cloud.
    virtual ErrorInfo queryReleaseHistory(const RequestFinished& callback) = 0;
    /// A copy of the release notes.
    virtual ReleaseHistorySet getReleaseHistory() = 0;

    /// Asks the update cloud for the recent release notes and adds them.
    /// @param callback gets, on an IOWorker thread: 0; -201 (status 408 or no response), -105 (401), -304 (any other
    ///                 status than 200), -301 (an unreadable document); -1, on this thread, when the request is refused
    /// @param clear    empties the release notes first
    virtual void requestReleaseHistoryFromHttp(const Function<void(const ErrorInfo&)>& callback, bool clear) = 0;
    /// Asks the update cloud for versions; its answer replaces the cloud's entries, a failure removes them.
    /// @param callback as above   @param unused taken and not used
    virtual void requestVersionFromHttp(const Function<void(const ErrorInfo&)>& callback, bool unused) = 0;
    /// @param callback runs, on a queue thread, when the server tells a client that there may be a newer version
    virtual void registerNewestVersionNotify(const Function<void()>& callback) = 0;
    /// @param callback runs instead of telling the other nodes when this node has learnt of versions, and when a peer
    ///                 tells that it has. At the end of requestVersion it runs on the thread of that end: it must not
    ///                 call requestVersion itself, which would go on for ever
    virtual void registerVersionRequestNotify(const Function<void()>& callback) = 0;
};

}  // namespace Tarnwick::OrvUpdate
