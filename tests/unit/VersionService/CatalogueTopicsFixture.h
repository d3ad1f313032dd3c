// A node with its catalogue and its update cloud, and a peer that asks it.
#pragma once

#include "CatalogueEntries.h"
#include "OrvVersion/ReleaseHistory.h"
#include "Received.h"
#include "RequestFixture.h"
#include "UpdateCloud.h"

namespace Tarnwick::OrvUpdate {

inline constexpr char kRequestVersion[] = "topic_upgrade_requestversion";
inline constexpr char kRequestNotes[] = "topic_upgrade_requestreleasehistory";
inline constexpr char kQueryVersion[] = "topic_upgrade_queryversion";
inline constexpr char kQueryNotes[] = "topic_upgrade_queryreleasehistory";
inline constexpr char kNotify[] = "topic_upgrade_notifyupdate";

/// The node "server" with its catalogue, an update cloud, and a peer that asks.
class CatalogueTopics : public RequestFixture {
protected:
    using Texts = std::vector<std::string>;

    CatalogueTopics() {
        startAt(*mRequest, "1.0.0.0");
        mRequest->addVersion(support::entry("1.0", 1));
        mRequest->addVersion(support::entry("2.0", 2));
        mRequest->addVersion(support::entry("3.0", 3));
    }
    void addNote(const std::string& version, const std::string& text) {
        ReleaseHistorySet set;
        ReleaseHistory::parseReleaseHistoryFromHttp(support::noteList(support::noteRecord(version, text)), "", set,
                                                    Version());
        mRequest->addReleaseHistory(set);
    }
    static std::string document(const VersionSet& versions) {
        std::string text;
        OrvVersion::buildVersion(versions, text);
        return text;
    }
    static std::string document(const ReleaseHistorySet& histories) {
        std::string text;
        ReleaseHistory::buildReleaseHistory(histories, text);
        return text;
    }
    /// The versions that an answer lists.
    static Texts versionsOf(const QueueAnswer& answer) {
        VersionSet set;
        OrvVersion::parseVersion(nullptr, answer.body, "", set, "", Version());
        return support::versionTexts(set);
    }
    static Texts notesOf(const QueueAnswer& answer) {
        ReleaseHistorySet set;
        ReleaseHistory::parseReleaseHistory(answer.body, set, Version());
        Texts texts;
        for (const auto& note : set) texts.push_back(note->getVersion().toString() + " " + note->getVersionInfo());
        return texts;
    }
    QueueAnswer ask(const std::string& topic, const Tarnwick::Protocol::TWPacket* body = nullptr) {
        return mAsker.ask("server", topic, body).value_or(QueueAnswer{12345, "no answer", false, ""});
    }
    QueueAnswer askWith(const std::string& topic, const std::string& version) {
        const auto body = notifyBody(version);
        return ask(topic, &body);
    }
    /// Stops the request and waits for the service to go, which a handler that has not returned yet still holds.
    void stopService() {
        const std::weak_ptr<VersionService> service = VersionRequestAccess::service(*mRequest);
        mRequest->stop();
        while (!service.expired()) std::this_thread::yield();
    }
    std::string lastTarget(const std::string& path) const {
        std::string target;
        for (const auto& request : mCloud.requests()) {
            if (request.path() == path) target = request.target;
        }
        return target;
    }
    /// True once no deferred reply holds the request any more.
    bool repliesOver() {
        return support::eventually([this] { return mRequest.use_count() == 1; });
    }

    support::UpdateCloud mCloud;
    /// A further node "far", started; it and "server" note their names when they are notified.
    std::shared_ptr<VersionRequest> startFarAndNoteCalls(const support::Received<std::string>& calls) {
        const auto far = makeRequest(makeServer("far"));
        mRequest->registerVersionRequestNotify([calls] { calls.add("server"); });
        far->registerVersionRequestNotify([calls] { calls.add("far"); });
        startAt(*far);
        return far;
    }

    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQSystemServer> mPeer = makeServer("peer");
    std::shared_ptr<VersionRequest> mRequest = makeRequest(mServer);
    Asker mAsker{mPeer->connectionTo("server", "")};
};

class RequestVersionTopic : public CatalogueTopics {};
class RequestNotesTopic : public CatalogueTopics {};

}  // namespace Tarnwick::OrvUpdate
