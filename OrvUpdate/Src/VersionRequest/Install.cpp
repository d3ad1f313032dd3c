// From a catalogue entry to a launched installer.
#include "VersionRequest/RunningInstall.h"

#include "EngineLog.h"
#include "OrvInstaller/AgentInstaller.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

ErrorInfo VersionRequest::install(const std::shared_ptr<IVersion>& version, const std::string& installDir, bool flag,
                                  const Function<void(const ErrorInfo&)>& onError, const Function<void()>& onDownloaded,
                                  const Function<void()>& onInstalling) {
    mInstallCancel = false;
    if (version && version->getVersion() == currentVersion()) return {};
    const std::shared_ptr<IVersionRequest> self = shared_from_this();
    const auto transfer = version ? version->getDownload(self) : nullptr;
    if (!transfer) {
        const ErrorInfo error(-1, "");
        onError(error);
        return error;
    }
    ORV_LOG(4, "VersionRequest", "VersionRequest: download start");
    const auto running = std::make_shared<RunningInstall>();
    running->version = version;
    running->transfer = transfer;
    running->installDir = installDir;
    running->flag = flag;
    running->onError = onError;
    running->onDownloaded = onDownloaded;
    running->onInstalling = onInstalling;
    // A transfer calls only the last callback that it was given: an earlier installation that waits for it ends here.
    dropInstalls(transfer);
    {
        std::lock_guard lock(mInstallMutex);
        mRunningInstalls.push_back(running);
    }
    const ErrorInfo result =
        transfer->start([weakSelf = weak_from_this(), weakRunning = std::weak_ptr<RunningInstall>(running)] {
            const auto request = weakSelf.lock();
            const auto arrived = weakRunning.lock();
            if (!request || !arrived) return;
            request->onPackageArrived(arrived);
            request->releaseInstall(arrived);
        });
    if (result) {
        releaseInstall(running);
        onError(result);
    }
    return result;
}

void VersionRequest::onPackageArrived(const std::shared_ptr<RunningInstall>& install) {
    if (mInstallCancel || install->cancelled) return;
    if (const ErrorInfo error = install->transfer->getError()) {
        install->onError(error);
        return;
    }
    install->onDownloaded();

    ORV_LOG(4, "VersionRequest", "VersionRequest: make AgentInstaller");
    const auto agent =
        std::make_shared<AgentInstaller>(mPackageCallback, mCheckCallback, install->version, mVersionType);
    mAgentInstaller = agent;
    ORV_LOG(4, "VersionRequest", "VersionRequest: start AgentInstaller %s %d", install->installDir,
            static_cast<int>(install->flag));
    const ErrorInfo result = agent->start(install->installDir, install->flag, install->onInstalling);
    if (mInstallCancel || install->cancelled) {
        ORV_LOG(4, "VersionRequest", "mAgentInstaller start is cancel by user");
        mAgentInstaller.exchange(nullptr);
        return;
    }
    if (result) {
        ORV_LOG(2, "VersionRequest", "mAgentInstaller start with errorCode: %d", static_cast<int>(result.errorCode()));
        install->onError(result);
        return;
    }
    ORV_LOG(4, "VersionRequest", "mAgentInstaller exit");
    agent->exit();
    mAgentInstaller.exchange(nullptr);
}

void VersionRequest::releaseInstall(const std::shared_ptr<RunningInstall>& install) {
    std::lock_guard lock(mInstallMutex);
    mRunningInstalls.remove(install);
}

ErrorInfo VersionRequest::installCancel(const std::shared_ptr<IVersion>& version) {
    mInstallCancel = true;
    {
        std::lock_guard lock(mInstallMutex);
        for (const auto& running : mRunningInstalls) running->cancelled = true;
    }
    const std::shared_ptr<IVersionRequest> self = shared_from_this();
    const auto transfer = version ? version->getDownload(self) : nullptr;
    if (transfer) transfer->cancel();
    if (const auto agent = mAgentInstaller.get()) agent->cancel();
    dropInstalls(transfer);
    return {};
}

void VersionRequest::dropInstalls(const std::shared_ptr<IDownload>& transfer) {
    std::list<std::shared_ptr<RunningInstall>> dropped;  // go after the lock is given back
    std::lock_guard lock(mInstallMutex);
    for (auto running = mRunningInstalls.begin(); running != mRunningInstalls.end();) {
        const auto next = std::next(running);
        if ((*running)->transfer == transfer) dropped.splice(dropped.end(), mRunningInstalls, running);
        running = next;
    }
}

}  // namespace Tarnwick::OrvUpdate
