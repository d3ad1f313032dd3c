// Making, starting and stopping a VersionRequest.
#include "VersionRequest.h"

#include "EngineLog.h"
#include "OrvInstaller/AgentInstaller.h"
#include "OrvVersion.h"
#include "Public/Base/File.h"
#include "Public/Base/StringEx.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "VersionRequest/RunningInstall.h"
#include "VersionRequest/StoreCache.h"
#include "VersionService.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Base::StringEx;
using Tarnwick::MQ::MQDispatcher;
using Tarnwick::MQ::MQMessage;

namespace {

constexpr char kTopicNotifyUpdate[] = "topic_upgrade_notifyupdate";
constexpr int kPackagesKept = 2;

/// Lets entries of the catalogue ask for the server's id without keeping its VersionRequest alive.
class WeakServerId : public IGetServerId {
public:
    explicit WeakServerId(std::weak_ptr<IGetServerId> provider) : mProvider(std::move(provider)) {}
    std::string getServerId() override {
        const auto provider = mProvider.lock();
        return provider ? provider->getServerId() : std::string();
    }

private:
    std::weak_ptr<IGetServerId> mProvider;
};

std::string packagePath(const IVersion& version) { return StringEx::replace(version.getPackageFile(), "/", "\\"); }

/// The directory that a package lies in; empty when its path names none.
std::string directoryOf(const std::string& package) {
    const size_t separator = package.rfind('\\');
    return separator == std::string::npos ? std::string() : package.substr(0, separator);
}

/// Deletes the oldest packages, with their directories, until two remain; the running version is never deleted and does
/// not count.
void pruneStore(VersionSet& versions, const Version& running) {
    std::set<std::string> kept;
    for (const auto& version : versions) {
        if (version->getVersion() == running) kept.insert(directoryOf(packagePath(*version)));
    }
    long limit = static_cast<long>(versions.size()) - kPackagesKept;
    for (auto entry = versions.begin(); entry != versions.end() && limit >= 1;) {
        const std::string package = packagePath(**entry);
        const std::string directory = directoryOf(package);
        if (directory.empty() || (*entry)->getVersion() == running) {
            ++entry;
            continue;
        }
        --limit;
        if (kept.contains(directory)) {
            File::remove(package);
        } else {
            File::removeDirectory(directory);
        }
        entry = versions.erase(entry);
    }
}

}  // namespace

std::shared_ptr<IVersionRequest> IVersionRequest::allocVersionRequest(std::shared_ptr<IOWorker> ioWorker,
                                                                      const std::shared_ptr<TWMQClient>& client,
                                                                      VersionType versionType) {
    return std::make_shared<VersionRequest>(std::move(ioWorker), client, versionType);
}

std::shared_ptr<IVersionRequest> IVersionRequest::allocVersionRequest(std::shared_ptr<IOWorker> ioWorker,
                                                                      const std::shared_ptr<TWMQSystemServer>& server,
                                                                      VersionType versionType) {
    return std::make_shared<VersionRequest>(std::move(ioWorker), server, versionType);
}

VersionRequest::VersionRequest(std::shared_ptr<IOWorker> ioWorker, const std::shared_ptr<TWMQClient>& client,
                               VersionType versionType)
    : mIOWorker(std::move(ioWorker)), mCurVersions(1), mMQClient(client), mVersionType(versionType) {}

VersionRequest::VersionRequest(std::shared_ptr<IOWorker> ioWorker, const std::shared_ptr<TWMQSystemServer>& server,
                               VersionType versionType)
    : mIOWorker(std::move(ioWorker)), mCurVersions(1), mMQServer(server), mVersionType(versionType) {}

VersionRequest::~VersionRequest() { stop(); }

StoreCache& VersionRequest::storeCache() {
    static StoreCache cache;
    return cache;
}

ErrorInfo VersionRequest::start(const Version& curVersion, const PackageCallback& packageCallback,
                                const CheckCallback& checkCallback, const std::string& downloadDir) {
    const auto self = shared_from_this();
    std::lock_guard startLock(mStartMutex);
    {
        std::lock_guard lock(mStateMutex);
        // Versions that compare as equal may differ in their text, which the cloud is told.
        if (mCurVersions.back().toString() != curVersion.toString()) mCurVersions.push_back(curVersion);
        mRequestVersion = curVersion;
    }
    if (mVersionService) return {};

    const std::string dir = StringEx::replace(downloadDir, "\\\\", "\\");
    addVersions(scanStore(dir, curVersion));

    std::shared_ptr<MQDispatcher> dispatcher = mMQServer;
    if (!dispatcher) dispatcher = mMQClient;
    const auto service = std::make_shared<VersionService>(mIOWorker, dispatcher, self, packageCallback, checkCallback);
    service->setCurrentVersion(curVersion);
    service->setDownloadCache(dir);
    const ErrorInfo started = service->start();
    if (started) return started;

    mVersionService = service;
    {
        std::lock_guard lock(mStateMutex);
        mDownloadDir = dir;
    }
    mCheckCallback = checkCallback;
    mPackageCallback = packageCallback;
    if (dir.empty()) ORV_LOG(2, "VersionRequest", "fail!\r\n");
    if (mMQClient) {
        mMQClient->subscribe(
            kTopicNotifyUpdate, this,
            [weak = weak_from_this()](const std::shared_ptr<MQMessage>& message) -> std::shared_ptr<MQMessage> {
                const auto request = weak.lock();
                return request ? request->onNewestVersionNotify(message) : nullptr;
            },
            {});
    }
    return {};
}

VersionSet VersionRequest::scanStore(const std::string& dir, const Version& running) {
    StoreCache& cache = storeCache();
    std::lock_guard lock(cache.mutex);
    if (cache.firstStart) {
        cache.firstStart = false;
        const std::shared_ptr<IGetServerId> self = shared_from_this();
        OrvVersion::parseVersionFromCache(mIOWorker, dir, cache.versions, std::make_shared<WeakServerId>(self));
        pruneStore(cache.versions, running);
    }
    return cache.versions;
}

ErrorInfo VersionRequest::stop() {
    std::shared_ptr<VersionService> released;  // goes after the lock is given back
    std::lock_guard startLock(mStartMutex);
    if (mMQClient) mMQClient->unsubcribe(this);
    released = mVersionService.exchange(nullptr);
    return {};
}

VersionType VersionRequest::getVersionType() { return mVersionType; }

ErrorInfo VersionRequest::setRequestVersion(const Version& version) {
    std::lock_guard lock(mStateMutex);
    mRequestVersion = version;
    return {};
}

const Version& VersionRequest::getCurVersion() {
    std::lock_guard lock(mStateMutex);
    return mCurVersions.back();
}

Version VersionRequest::currentVersion() const {
    std::lock_guard lock(mStateMutex);
    return mCurVersions.back();
}

Version VersionRequest::versionToRequest() const {
    std::lock_guard lock(mStateMutex);
    return mRequestVersion;
}

std::string VersionRequest::getDownloadDir() const {
    std::lock_guard lock(mStateMutex);
    return mDownloadDir;
}

std::shared_ptr<IOWorker> VersionRequest::getIOWorker() const { return mIOWorker; }

std::shared_ptr<TWMQClient> VersionRequest::getMQClient() const { return mMQClient; }

std::shared_ptr<TWMQServer> VersionRequest::getMQServer() const { return mMQServer; }

PackageCallback VersionRequest::getPackageCallback() const { return mPackageCallback; }

CheckCallback VersionRequest::getCheckCallback() const { return mCheckCallback; }

void VersionRequest::registerNewestVersionNotify(const Function<void()>& callback) { mNewestVersionNotify = callback; }

void VersionRequest::registerVersionRequestNotify(const Function<void()>& callback) {
    mVersionRequestNotify = callback;
}

Function<void()> VersionRequest::getVersionRequestNotify() const { return mVersionRequestNotify; }

std::string VersionRequest::getServerId() {
    if (const auto server = std::dynamic_pointer_cast<TWMQSystemServer>(mMQServer)) {
        return server->mySystemNotify().serverId;
    }
    const auto connection = mMQClient ? mMQClient->connection() : nullptr;
    return connection ? connection->myMqId() : std::string();
}

std::shared_ptr<MQMessage> VersionRequest::onNewestVersionNotify(const std::shared_ptr<MQMessage>& message) {
    if (message->errorInfo()) return nullptr;
    Tarnwick::Protocol::TWProtoUpgradeNotify notify;
    if (!message->parseBody(&notify, false)) return nullptr;
    const Function<void()> callback = mNewestVersionNotify;
    if (callback) callback();
    return nullptr;
}

}  // namespace Tarnwick::OrvUpdate
