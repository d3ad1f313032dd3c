// Lets tests reach the private operations of VersionRequest and VersionService.
#pragma once

#include "OrvVersion.h"
#include "VersionRequest.h"
#include "VersionRequest/HttpUrl.h"
#include "VersionRequest/RunningInstall.h"
#include "VersionRequest/StoreCache.h"
#include "VersionService.h"

namespace Tarnwick::OrvUpdate {

class AgentInstaller;

struct VersionRequestAccess {
    /// The next start scans the store, as the first of a process does.
    static void forgetStore() {
        StoreCache& cache = VersionRequest::storeCache();
        std::lock_guard lock(cache.mutex);
        cache.firstStart = true;
        cache.versions.clear();
    }
    static VersionSet storedVersions() {
        StoreCache& cache = VersionRequest::storeCache();
        std::lock_guard lock(cache.mutex);
        return cache.versions;
    }
    static std::list<std::shared_ptr<HttpUrl>> versionUrls(VersionRequest& request) {
        return request.getVersionServerHttp();
    }
    static std::list<std::shared_ptr<HttpUrl>> historyUrls(VersionRequest& request) {
        return request.getReleaseHistoryServerHttp();
    }
    static std::string upgradeDomain(VersionRequest& request) { return request.getUpgradeDomain(); }
    static ErrorInfo checkHttpResponse(const std::shared_ptr<Public::Network::HTTPClientResponse>& response) {
        return VersionRequest::checkHttpResponse(response);
    }
    static void askVersions(VersionRequest& request, const std::shared_ptr<HttpUrl>& url,
                            const Function<void(const ErrorInfo&, const VersionSet&)>& finished) {
        request.requestVersionFromHttp(url, finished);
    }
    static void askHistories(VersionRequest& request, const std::shared_ptr<HttpUrl>& url,
                             const Function<void(const ErrorInfo&, const ReleaseHistorySet&)>& finished) {
        request.requestReleaseHistoryFromHttp(url, finished);
    }
    static std::shared_ptr<Tarnwick::MQ::MQMessage> newestVersionNotify(
        VersionRequest& request, const std::shared_ptr<Tarnwick::MQ::MQMessage>& message) {
        return request.onNewestVersionNotify(message);
    }
    static ErrorInfo notifyAllNodes(VersionRequest& request) { return request.notifyAllNodeCheckUpgrade(); }
    static ErrorInfo askForVersions(VersionRequest& request, const std::string& topic,
                                    const std::set<std::string>& nodes, const RequestFinished& callback) {
        return request._requestVersion(topic, nodes, callback);
    }
    static ErrorInfo askForHistories(VersionRequest& request, const std::string& topic,
                                     const std::set<std::string>& nodes, const RequestFinished& callback) {
        return request._requestReleaseHistory(topic, nodes, callback);
    }
    static std::shared_ptr<VersionService> service(const VersionRequest& request) {
        return request.mVersionService.get();
    }
    static std::shared_ptr<AgentInstaller> agent(const VersionRequest& request) {
        return request.mAgentInstaller.get();
    }
    static bool cancelRequested(const VersionRequest& request) { return request.mInstallCancel; }
    static size_t runningInstalls(VersionRequest& request) {
        std::lock_guard lock(request.mInstallMutex);
        return request.mRunningInstalls.size();
    }
};

struct VersionServiceAccess {
    using Message = std::shared_ptr<Tarnwick::MQ::MQMessage>;

    static Message routeToTarget(VersionService& service, const std::string& target, const Message& message) {
        return service.routeToTarget(target, message);
    }
    static std::string downloadCache(const VersionService& service) {
        std::lock_guard lock(service.mStateMutex);
        return service.mDownloadCache;
    }
    static std::shared_ptr<VersionRequest> request(const VersionService& service) {
        return service.mVersionRequest.lock();
    }
    static PackageCallback packageCallback(const VersionService& service) { return service.mPackageCallback; }
    static CheckCallback checkCallback(const VersionService& service) { return service.mCheckCallback; }
    static std::shared_ptr<IInstaller> installerGiven(const VersionService& service) { return service.mInstallerGiven; }
    static std::shared_ptr<AgentInstaller> startedInstaller(const VersionService& service) {
        return service.mStartedInstaller.get();
    }
};

}  // namespace Tarnwick::OrvUpdate
