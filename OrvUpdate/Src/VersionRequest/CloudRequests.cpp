// Asking the update cloud for versions and release notes.
#include <sstream>

#include "HttpAnswer.h"
#include "OrvVersion.h"
#include "OrvVersion/ReleaseHistory.h"
#include "Public/Base/File.h"
#include "Public/Base/Host.h"
#include "VersionRequest.h"
#include "VersionRequest/HttpUrl.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Base::Host;
using Public::Base::SystemBits_64;
using Public::Network::HTTPClient;
using Public::Network::HTTPClientRequest;
using Public::Network::HTTPClientResponse;

namespace {

constexpr uint32_t kRequestTimeoutMs = 60000;

const char* agentOf(VersionType versionType) {
    switch (versionType) {
        case VersionType_Client:
            return "OrvClient";
        case VersionType_Server:
            return "OrvServer";
        case VersionType_VideoWall:
            return "VideoWall";
        case VersionType_Analytics:
            return "Analytics";
        default:
            return "Orv";
    }
}

/// The cloud's number for the word size of this program.
int platformOf(SystemBits bits) { return bits == SystemBits_64 ? 0 : 1; }

std::list<std::shared_ptr<HttpUrl>> onlyUrl(const std::string& url) {
    return {std::make_shared<HttpUrl>(HttpUrl{Public::Base::SystemType_Windows, Host::getSoftwareSystemBits(), url})};
}

/// What the answers to one request are gathered in, until the last of its addresses has answered.
struct Gathering {
    explicit Gathering(size_t urls) : remaining(urls) {}
    std::mutex mutex;  // guards merged
    VersionSet merged;
    std::atomic<size_t> remaining;
};

}  // namespace

std::string VersionRequest::getUpgradeDomain() {
    const std::string path = File::getExcutableFileFullPath() + "\\upgrade_domain.json";
    JsonValue document;
    if (!File::access(path, Public::Base::AccessMode_Exists) || document.read(File::load(path)) ||
        !document.isMember("domain")) {
        return ORV_UPDATE_CLOUD_HOST;
    }
    return document["domain"]->toString("");
}

std::list<std::shared_ptr<HttpUrl>> VersionRequest::getVersionServerHttp() {
    const Version request = versionToRequest();
    std::string soft = request.toString();
    if (soft.empty()) soft = currentVersion().toString();
    std::ostringstream url;
    url << "http://" << getUpgradeDomain() << "/version?platform=" << platformOf(Host::getSoftwareSystemBits())
        << "&softversion=" << soft << "&apptype=5&AIType=0&actived=1&oemid=" << request.OEM();
    return onlyUrl(url.str());
}

std::list<std::shared_ptr<HttpUrl>> VersionRequest::getReleaseHistoryServerHttp() {
    std::ostringstream url;
    url << "http://" << getUpgradeDomain() << "/api/v1/orvNewVersions?oemid=" << versionToRequest().OEM()
        << "&actived=1&platform=" << platformOf(Host::getSoftwareSystemBits()) << "&lastVersionNums=5";
    return onlyUrl(url.str());
}

ErrorInfo VersionRequest::checkHttpResponse(const std::shared_ptr<HTTPClientResponse>& response) {
    return errorOfAnswer(response);
}

bool VersionRequest::sendCloudRequest(const std::string& url,
                                      const Function<void(const ErrorInfo&, const std::string&)>& finished) {
    const auto client = std::make_shared<HTTPClient>(mIOWorker, agentOf(mVersionType));
    const auto request = std::make_shared<HTTPClientRequest>("GET", Public::Base::URL(url, false),
                                                             Public::Network::HTTPCacheType_Memory);
    request->timeout() = kRequestTimeoutMs;
    // The closure holds the client, so that it lives until the answer.
    return client->request(
        request,
        [client, finished](const auto&, const auto&, const std::shared_ptr<HTTPClientResponse>& response) {
            const ErrorInfo error = checkHttpResponse(response);
            finished(error, error ? std::string() : response->content()->readAll().toStdString());
        },
        "");
}

void VersionRequest::requestVersionFromHttp(const Function<void(const ErrorInfo&)>& callback, bool) {
    const std::weak_ptr<VersionRequest> weak = shared_from_this();
    const auto urls = getVersionServerHttp();
    const auto gathering = std::make_shared<Gathering>(urls.size());
    for (const auto& url : urls) {
        requestVersionFromHttp(url, [weak, gathering, callback](const ErrorInfo& error, const VersionSet& versions) {
            const auto self = weak.lock();
            if (!self) return;
            {
                std::lock_guard lock(gathering->mutex);
                gathering->merged.insert(versions.begin(), versions.end());
            }
            if (--gathering->remaining != 0) return;
            self->updateVersions(gathering->merged, StoragePosition_Cloud);
            callback(error);
        });
    }
}

void VersionRequest::requestVersionFromHttp(const std::shared_ptr<HttpUrl>& url, const VersionsFinished& finished) {
    const bool accepted = sendCloudRequest(
        url->url, [weak = weak_from_this(), url, finished](const ErrorInfo& sent, const std::string& text) {
            const auto self = weak.lock();
            if (!self) return;
            VersionSet versions;
            const ErrorInfo error =
                sent ? sent
                     : OrvVersion::parseVersionFromHttp(self->mIOWorker, text, self->getDownloadDir(), versions,
                                                        self->getServerId(), self->currentVersion());
            if (error) {
                finished(error, {});
                return;
            }
            for (const auto& version : versions) {
                version->setSystemType(url->systemType);
                version->setSystemBits(url->systemBits);
            }
            finished({}, versions);
        });
    if (!accepted) finished({-1, ""}, {});
}

void VersionRequest::requestReleaseHistoryFromHttp(const Function<void(const ErrorInfo&)>& callback, bool clear) {
    const std::weak_ptr<VersionRequest> weak = shared_from_this();
    if (clear) removeReleaseHistory();
    const auto urls = getReleaseHistoryServerHttp();
    const auto remaining = std::make_shared<std::atomic<size_t>>(urls.size());
    for (const auto& url : urls) {
        requestReleaseHistoryFromHttp(
            url, [weak, remaining, callback](const ErrorInfo& error, const ReleaseHistorySet& histories) {
                const auto self = weak.lock();
                if (!self) return;
                self->addReleaseHistory(histories);
                if (--*remaining == 0) callback(error);
            });
    }
}

void VersionRequest::requestReleaseHistoryFromHttp(const std::shared_ptr<HttpUrl>& url,
                                                   const HistoriesFinished& finished) {
    const bool accepted = sendCloudRequest(
        url->url, [weak = weak_from_this(), url, finished](const ErrorInfo& sent, const std::string& text) {
            const auto self = weak.lock();
            if (!self) return;
            ReleaseHistorySet histories;
            const ErrorInfo error = sent ? sent
                                         : ReleaseHistory::parseReleaseHistoryFromHttp(
                                               text, self->getDownloadDir(), histories, self->currentVersion());
            if (error) {
                finished(error, {});
                return;
            }
            for (const auto& history : histories) {
                if (const auto record = std::dynamic_pointer_cast<ReleaseHistory>(history)) {
                    record->setSystemType(url->systemType);
                    record->setSystemBits(url->systemBits);
                }
            }
            finished({}, histories);
        });
    if (!accepted) finished({-1, ""}, {});
}

}  // namespace Tarnwick::OrvUpdate
