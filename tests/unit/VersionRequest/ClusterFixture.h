// A request whose links a test answers itself, and what its host hears.
#pragma once

#include "OrvVersion/ReleaseHistory.h"
#include "RequestFixture.h"
#include "ScriptedCluster.h"
#include "UpdateCloud.h"

namespace Tarnwick::OrvUpdate {

/// One call of a host's callback.
struct Heard {
    std::string node;
    int code = 0;
    bool last = false;
    std::string message = {};
    std::thread::id thread = {};

    bool operator==(const Heard& other) const { return node == other.node && code == other.code && last == other.last; }
    friend void PrintTo(const Heard& heard, std::ostream* out) {
        *out << "{'" << heard.node << "', " << heard.code << (heard.last ? ", last}" : "}");
    }
};

using HeardList = std::vector<Heard>;

inline RequestFinished into(const support::Received<Heard>& calls) {
    return [calls](const std::string& node, const ErrorInfo& result, bool last) {
        calls.add({node, result.errorCode(), last, result.errorMessage(), std::this_thread::get_id()});
    };
}

/// The document of a node that holds these versions.
inline std::string versionDocument(const std::vector<const char*>& versions) {
    VersionSet set;
    for (const char* version : versions) set.insert(support::entry(version, 1));
    std::string text;
    OrvVersion::buildVersion(set, text);
    return text;
}

inline ReleaseHistorySet notesOf(const std::string& cloudRecords) {
    ReleaseHistorySet set;
    ReleaseHistory::parseReleaseHistoryFromHttp(support::noteList(cloudRecords), "", set, Version());
    return set;
}

/// The document of a node that holds this note.
inline std::string noteDocument(const std::string& version, const std::string& text) {
    std::string document;
    ReleaseHistory::buildReleaseHistory(notesOf(support::noteRecord(version, text)), document);
    return document;
}

inline std::vector<std::string> noteTexts(const ReleaseHistorySet& notes) {
    std::vector<std::string> texts;
    for (const auto& note : notes) texts.push_back(note->getVersion().toString() + " " + note->getVersionInfo());
    return texts;
}

class ClusterFixture : public RequestFixture {
protected:
    using Nodes = std::vector<std::string>;
    using Texts = std::vector<std::string>;

    ClusterFixture() { mClient->link = mLink; }

    static void answer(const support::ScriptedLink::Push& push, const std::string& document) {
        Tarnwick::Protocol::TWProtoUpgradePkt packet;
        packet.body = document;
        push.answer(ErrorInfo(), &packet);
    }
    /// The node answers the only request that it was sent.
    void answer(const std::string& node, const std::string& document = "[]") { answer(mLink->to(node), document); }
    void fail(const std::string& node, int code, const std::string& message = {}) {
        mLink->to(node).answer(ErrorInfo(code, message));
    }
    void know(const Nodes& ids) { mClient->servers = support::serverList(ids); }
    Texts versions() const { return support::versionTexts(mRequest->getVersions()); }
    Texts notes() const { return noteTexts(mRequest->getReleaseHistory()); }
    HeardList heard() const { return mHeard.values(); }
    /// What the host has heard once that many calls have come.
    HeardList heardOf(size_t count) const {
        EXPECT_TRUE(mHeard.waitFor(count));
        return heard();
    }

    support::UpdateCloud mCloud;
    std::shared_ptr<support::ScriptedLink> mLink = std::make_shared<support::ScriptedLink>();
    std::shared_ptr<support::ScriptedClient> mClient = std::make_shared<support::ScriptedClient>();
    std::shared_ptr<VersionRequest> mRequest = makeRequest(std::shared_ptr<TWMQClient>(mClient));
    support::Received<Heard> mHeard;
};

}  // namespace Tarnwick::OrvUpdate
