// A catalogue that tests fill and ask.
#pragma once

#include "CatalogueEntries.h"
#include "RequestAccess.h"

namespace Tarnwick::OrvUpdate {

/// The five values of a filter, as numbers.
struct Query {
    int system = 0;
    int bits = 0;
    int project = 0;
    int type = 0;
    int source = 0;
};

class Catalogue : public testing::Test {
protected:
    VersionSet query(const Query& query) {
        return mRequest->queryVersions(static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
                                       static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
                                       static_cast<VersionSource>(query.source));
    }
    std::shared_ptr<IVersion> find(const Query& query, const std::string& version) {
        return mRequest->queryVersion(static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
                                      static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
                                      static_cast<VersionSource>(query.source), Version(version, 0));
    }
    std::shared_ptr<IVersion> newest(const Query& query, const std::string& than) {
        return mRequest->queryNewestVersion(static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
                                            static_cast<ProjectType>(query.project),
                                            static_cast<VersionType>(query.type),
                                            static_cast<VersionSource>(query.source), Version(than, 0));
    }
    static VersionSet filtered(const VersionSet& versions, const Query& query) {
        return VersionRequest::_queryVersions(
            versions, static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
            static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
            static_cast<VersionSource>(query.source));
    }
    static std::shared_ptr<IVersion> found(const VersionSet& versions, const Query& query, const std::string& version) {
        return VersionRequest::_queryVersion(
            versions, static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
            static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
            static_cast<VersionSource>(query.source), Version(version, 0));
    }
    static std::shared_ptr<IVersion> newestOf(const VersionSet& versions, const Query& query, const std::string& than) {
        return VersionRequest::_queryNewestVersion(
            versions, static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
            static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
            static_cast<VersionSource>(query.source), Version(than, 0));
    }
    std::shared_ptr<IVersion> add(const support::EntrySpec& spec) {
        const auto version = support::entry(spec);
        mRequest->addVersion(version);
        return version;
    }
    std::shared_ptr<IVersion> add(const char* version, int position = 2) {
        support::EntrySpec spec;
        spec.version = version;
        spec.position = position;
        return add(spec);
    }
    std::vector<std::string> texts() { return support::versionTexts(mRequest->getVersions()); }

    const std::shared_ptr<VersionRequest> mRequest =
        std::make_shared<VersionRequest>(nullptr, std::shared_ptr<TWMQClient>(), VersionType_Client);
};

}  // namespace Tarnwick::OrvUpdate
