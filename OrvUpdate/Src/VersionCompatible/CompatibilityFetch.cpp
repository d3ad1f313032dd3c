// Fetching newer compatibility documents from peers.
#include <vector>

#include "HttpAnswer.h"
#include "Public/Network/HTTPClient.h"
#include "VersionCompatible/CompatibleUrl.h"
#include "VersionCompatible/NewestDocument.h"
#include "maxVersionCompatible.h"

namespace Tarnwick::OrvUpdate {

using Public::Network::HTTPClient;
using Public::Network::HTTPClientRequest;
using Public::Network::HTTPClientResponse;
using Public::Network::NetAddr;
using Tarnwick::MQ::TWServerInfo;

namespace {

constexpr uint32_t kFetchTimeoutMs = 60000;

/// What a peer would say that serves HTTPS alone. No answer is told by this code as they are told now.
constexpr int kSecureOnly = 506;

bool isNewer(const std::string& version, const std::shared_ptr<IVersionCompatible>& document) {
    if (!document) return true;
    Version held;
    document->getVersion(held);
    return held < Version(version, 0);
}

}  // namespace

void maxVersionCompatible::inputSystemServerListInfo(const std::map<std::string, TWServerInfo>& servers) {
    NetAddr shared;
    std::vector<const TWServerInfo*> waiting;
    for (const auto& [id, server] : servers) {
        if (!server.reachable) continue;
        if (server.addresses.empty()) {
            waiting.push_back(&server);
            continue;
        }
        const NetAddr address = server.getServerAddr();
        if (!shared.isValid()) shared = address;
        inputSystemServerInfo(address, server.serverId, server.version);
    }
    if (!shared.isValid()) return;
    for (const TWServerInfo* server : waiting) inputSystemServerInfo(shared, server->serverId, server->version);
}

void maxVersionCompatible::inputSystemServerInfo(const NetAddr& address, const std::string& serverId,
                                                 const std::string& version) {
    if (!address.isValid() || !isNewer(version, mState->current())) return;
    JsonValue question;
    question["serverid"] = serverId;
    fetchDocument(buildCompatibleUrl("http://", address), buildCompatibleUrl("https://", address), question);
}

void maxVersionCompatible::fetchDocument(const std::string& url, const std::string& secureUrl,
                                         const JsonValue& question) {
    const auto client = std::make_shared<HTTPClient>(mState->worker(), "orvSDK");
    const auto request = std::make_shared<HTTPClientRequest>("GET", Public::Base::URL(url, false),
                                                             Public::Network::HTTPCacheType_Memory);
    request->timeout() = kFetchTimeoutMs;
    request->content()->write(question.toStyledString(Public::Base::WriteStyle_Indented));
    // The closure holds the client, so that it lives until the answer.
    client->request(
        request,
        [client, weak = weak_from_this(), secureUrl, question](const auto&, const auto&,
                                                               const std::shared_ptr<HTTPClientResponse>& response) {
            const auto self = weak.lock();
            if (!self) return;
            const ErrorInfo error = errorOfAnswer(response);
            if (error.errorCode() == kSecureOnly) {
                self->fetchDocument(secureUrl, secureUrl, question);
            } else if (!error && response->content()) {
                self->mState->loadFromText(response->content()->readAll());
            }
        },
        "");
}

}  // namespace Tarnwick::OrvUpdate
