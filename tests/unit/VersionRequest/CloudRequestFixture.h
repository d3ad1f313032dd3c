// A request and the update cloud that it asks.
#pragma once

#include "CatalogueEntries.h"
#include "RequestFixture.h"
#include "UpdateCloud.h"

namespace Tarnwick::OrvUpdate {

struct Outcome {
    int code = 0;
    std::string message;
    std::thread::id thread;
};

class CloudRequest : public RequestFixture {
protected:
    static Function<void(const ErrorInfo&)> into(const support::Received<Outcome>& outcomes) {
        return [outcomes](const ErrorInfo& error) {
            outcomes.add({error.errorCode(), error.errorMessage(), std::this_thread::get_id()});
        };
    }
    Outcome askVersions() {
        const support::Received<Outcome> outcomes;
        mRequest->requestVersionFromHttp(into(outcomes), true);
        return outcomes.first().value_or(Outcome{12345, "no callback", {}});
    }
    Outcome askNotes(bool clear) {
        const support::Received<Outcome> outcomes;
        mRequest->requestReleaseHistoryFromHttp(into(outcomes), clear);
        return outcomes.first().value_or(Outcome{12345, "no callback", {}});
    }
    std::vector<std::string> texts() { return support::versionTexts(mRequest->getVersions()); }
    std::vector<std::string> notes() {
        std::vector<std::string> texts;
        for (const auto& note : mRequest->getReleaseHistory()) {
            texts.push_back(note->getVersion().toString() + " " + note->getVersionInfo());
        }
        return texts;
    }
    /// One support::entry of each source of knowledge.
    void fillCatalogue() {
        mRequest->addVersion(support::entry("1.0", 1));
        mRequest->addVersion(support::entry("2.0", 2));
        mRequest->addVersion(support::entry("3.0", 3));
    }
    std::string versionUrl() { return VersionRequestAccess::versionUrls(*mRequest).front()->url; }
    std::string historyUrl() { return VersionRequestAccess::historyUrls(*mRequest).front()->url; }

    support::UpdateCloud mCloud;
    std::shared_ptr<VersionRequest> mRequest = makeRequest(std::shared_ptr<TWMQClient>());
};

}  // namespace Tarnwick::OrvUpdate
