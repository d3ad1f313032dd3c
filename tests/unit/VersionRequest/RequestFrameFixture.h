// A request by itself: how it is made and started, and its store.
#pragma once

#include "CatalogueEntries.h"
#include "FileText.h"
#include "RequestFixture.h"

namespace Tarnwick::OrvUpdate {

class RequestFrame : public RequestFixture {
protected:
    bool packageIsThere(const std::string& version) { return std::filesystem::exists(mStore.path(packageOf(version))); }
    /// The catalogue after the first start of a process on a store with these packages.
    std::vector<std::string> startedOn(const std::vector<std::string>& stored, const std::string& running) {
        fillStore(stored);
        const auto request = makeRequest(makeServer());
        EXPECT_EQ(startAt(*request, running).errorCode(), 0);
        return support::versionTexts(request->getVersions());
    }
};

}  // namespace Tarnwick::OrvUpdate
