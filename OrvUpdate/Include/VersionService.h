// What a node offers to the rest of the cluster.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "IInstaller.h"
#include "IVersionRequest.h"
#include "Public/Base/SafeSharedPtr.h"
#include "Tarnwick/MQ/MQDispatcher.h"

namespace Tarnwick::OrvUpdate {

class AgentInstaller;
class FileObject;
class OrvVersion;
class PendingExits;
class PushedFiles;
class VersionRequest;
struct FileWriterManager;
struct ReceivedChunk;

/// Subscribes the topics of the update engine on one dispatcher and answers each from the node's VersionRequest. Must
/// be owned by a std::shared_ptr before start. Handlers run on the queue's threads; set the version and the cache
/// before start.
class ORV_UPDATE_API VersionService : public std::enable_shared_from_this<VersionService> {
public:
    /// For a process that has an installer and no catalogue.
    VersionService(std::shared_ptr<IOWorker> worker, const std::shared_ptr<Tarnwick::MQ::MQDispatcher>& dispatcher,
                   const std::shared_ptr<IInstaller>& installer);
    /// @param request held weakly   @param packageCallback, checkCallback handed on to each installation
    VersionService(std::shared_ptr<IOWorker> worker, const std::shared_ptr<Tarnwick::MQ::MQDispatcher>& dispatcher,
                   const std::shared_ptr<VersionRequest>& request, const PackageCallback& packageCallback,
                   const CheckCallback& checkCallback);
    /// Stops.
    virtual ~VersionService();

    /// Subscribes. @return -1 without a dispatcher
    ErrorInfo start();
    /// Unsubscribes and lets go of the open transfers; handlers that run already go on. @return code 0
    ErrorInfo stop();
    ErrorInfo getCurrentVersion(Version& version);
    ErrorInfo setCurrentVersion(const Version& version);
    /// @param path directory for version objects made from a message
    ErrorInfo setDownloadCache(const std::string& path);

private:
    friend struct VersionServiceAccess;  // tests of the routing step

    using Message = std::shared_ptr<Tarnwick::MQ::MQMessage>;

    // CatalogueTopics.cpp
    Message onMQRequestVersionCallback(const Message& message);
    Message onMQRequestReleaseHistoryCallback(const Message& message);
    Message onMQQueryVersionCallback(const Message& message);
    Message onMQQueryReleaseHistoryCallback(const Message& message);
    Message onMQNotifyUpdateCallback(const Message& message);

    // InstallTopics.cpp
    Message onMQStartInstallCallback(const Message& message);
    Message onMQGetInstallPosCallback(const Message& message);
    Message onMQStartDownloadCallback(const Message& message);
    Message onMQGetDownloadPosCallback(const Message& message);
    /// Runs an installation to the launch of its installer, on this thread, and lets the host end afterwards.
    ErrorInfo install(const std::shared_ptr<IVersion>& version, VersionType role);
    Message runningPosition(const Message& message, const Version& wanted);

    // TransferTopics.cpp
    Message onMQDownloadVersionCallback(const Message& message);
    /// An object that a document can be read into, to name a version.
    std::shared_ptr<OrvVersion> makeVersion() const;
    /// The version that a version document names, with this node's store; null when the document does not parse.
    std::shared_ptr<OrvVersion> versionOf(const std::string& versionInfo, ErrorInfo& error) const;
    /// This node's entry of the same version; null when there is none.
    static std::shared_ptr<IVersion> entryOf(VersionRequest& request, const OrvVersion& version);

    // PostTopic.cpp
    Message onMQPostVersionCallback(const Message& message);
    ErrorInfo takeChunk(VersionRequest& request, const ReceivedChunk& chunk);
    bool hasStore() const;
    std::shared_ptr<FileObject> writerOf(const ReceivedChunk& chunk, const OrvVersion& version,
                                         FileWriterManager& writers);

    /// Null when the request is for this node; a message with an error when it could not be passed on; a message
    /// without one when it has been.
    Message routeToTarget(const std::string& target, const Message& message);
    /// The routing step in front of every handler. @return true when `reply` (null when the far node answers) is what
    /// the handler returns
    bool routed(const Message& message, Message& reply);

    std::shared_ptr<Tarnwick::MQ::MQDispatcher> mDispatcher;
    std::shared_ptr<IInstaller> mInstallerGiven;
    SafeSharedPtr<AgentInstaller> mStartedInstaller;  // of the last installation that a peer has asked for
    std::weak_ptr<VersionRequest> mVersionRequest;
    PackageCallback mPackageCallback;
    CheckCallback mCheckCallback;
    mutable std::mutex mStateMutex;  // guards the next two
    Version mCurrentVersion;
    std::string mDownloadCache;
    std::mutex mPostMutex;  // held while the file of a push is looked up and opened, so that it is opened once
    std::shared_ptr<PushedFiles> mPushedFiles;      // guarded by mPostMutex
    SafeSharedPtr<FileWriterManager> mFileWriters;  // set while started
    std::shared_ptr<IOWorker> mIOWorker;
    const std::shared_ptr<PendingExits> mPendingExits;
};

}  // namespace Tarnwick::OrvUpdate
