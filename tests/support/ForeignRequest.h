// A request that is not the engine's own class.
#pragma once

#include "IVersionRequest.h"

namespace Tarnwick::OrvUpdate {

/// Does nothing and knows nothing, as a host's own implementation might.
class ForeignRequest : public IVersionRequest {
public:
    VersionType getVersionType() override { return VersionType_Client; }
    ErrorInfo start(const Version&, const PackageCallback&, const CheckCallback&, const std::string&) override {
        return {};
    }
    ErrorInfo stop() override { return {}; }
    ErrorInfo setRequestVersion(const Version&) override { return {}; }
    ErrorInfo setOtherNodes(const std::set<std::string>&) override { return {}; }
    ErrorInfo getOtherNodes(std::set<std::string>&) override { return {}; }
    ErrorInfo requestVersion(const RequestFinished&) override { return {}; }
    ErrorInfo querySystemVersion(const std::map<std::string, TWServerInfo>&, const RequestFinished&) override {
        return {};
    }
    ErrorInfo querySystemVersion(const RequestFinished&) override { return {}; }
    ErrorInfo install(const std::shared_ptr<IVersion>&, const std::string&, bool,
                      const Function<void(const ErrorInfo&)>&, const Function<void()>&,
                      const Function<void()>&) override {
        return {};
    }
    ErrorInfo installCancel(const std::shared_ptr<IVersion>&) override { return {}; }
    VersionSet getVersions() override { return {}; }
    VersionSet queryVersions(SystemType, SystemBits, ProjectType, VersionType, VersionSource) override { return {}; }
    std::shared_ptr<IVersion> queryVersion(const std::shared_ptr<IVersion>&) override { return nullptr; }
    std::shared_ptr<IVersion> queryVersion(SystemType, SystemBits, ProjectType, VersionType, VersionSource,
                                           const Version&) override {
        return nullptr;
    }
    std::shared_ptr<IVersion> queryNewestVersion(SystemType, SystemBits, ProjectType, VersionType, VersionSource,
                                                 const Version&) override {
        return nullptr;
    }
    ErrorInfo uploadVersion(const std::string&, VersionSource, const UploadFinished&) override { return {}; }
    const Version& getCurVersion() override { return mVersion; }
    ErrorInfo requestReleaseHistory(const RequestFinished&) override { return {}; }
    ErrorInfo queryReleaseHistory(const RequestFinished&) override { return {}; }
    ReleaseHistorySet getReleaseHistory() override { return {}; }
    void requestReleaseHistoryFromHttp(const Function<void(const ErrorInfo&)>&, bool) override {}
    void requestVersionFromHttp(const Function<void(const ErrorInfo&)>&, bool) override {}
    void registerNewestVersionNotify(const Function<void()>&) override {}
    void registerVersionRequestNotify(const Function<void()>&) override {}

private:
    Version mVersion;
};

}  // namespace Tarnwick::OrvUpdate
