// A client that drives its server and a second one, over real nodes, with an update cloud on loopback.
#pragma once

#include "FileText.h"
#include "InstallTopicsFixture.h"
#include "MQ/EmbeddedBus.h"
#include "OrvInstaller/RemoteInstaller.h"
#include "RemoteDownload.h"
#include "UpdateCloud.h"

namespace Tarnwick::OrvUpdate {

inline constexpr char kCloudPackage[] = "/packages/2.0.0.1.exe";
inline constexpr char kNewVersion[] = "2.0.0.1";

/// "server" and "far" know from the cloud that there is a new version; the client has it from its server's catalogue.
class RemoteDrive : public InstallTopics {
protected:
    RemoteDrive() {
        support::writeText(mCloud.programDir() + "/orvInstaller.exe",
                           support::buildPe({true, {}, {}, "installer"}).bytes);
        support::PackageSpec spec;
        spec.version = kNewVersion;
        mBytes = *support::readText(support::makePackage(spec, mWorkshop.path() + "/package.exe"));
        mCloud.serve(kCloudPackage, mBytes);
        mCloud.versions("[" + support::cloudRecord(kNewVersion, mCloud.url(kCloudPackage)) + "]");
        mFarRequest->start(Version("1.0.0.0", 0), consent(), ends(), mFarStore.path());
        for (const auto& request : {mRequest, mFarRequest}) {
            const support::Received<int> done;
            request->requestVersionFromHttp([done](const ErrorInfo& error) { done.add(error.errorCode()); }, true);
            EXPECT_EQ(done.first(), 0);
        }
        mVersion = heardVersion();
        bus().settle();
    }
    ~RemoteDrive() override {
        mFarRequest->stop();
        mCloud.release(kCloudPackage);
        while (mFarRequest.use_count() > 1) std::this_thread::yield();
    }

    Tarnwick::MQ::EmbeddedBus& bus() { return dynamic_cast<Tarnwick::MQ::EmbeddedBus&>(*mBus); }
    /// The new version as a client learns of it.
    std::shared_ptr<IVersion> heardVersion() {
        VersionSet heard;
        const auto answer = Asker(mClient->connection()).ask("server", "topic_upgrade_queryversion");
        if (answer) OrvVersion::parseVersion(nullptr, answer->body, "", heard, "", Version());
        for (const auto& version : heard) {
            if (version->getVersion() == Version(kNewVersion, 0)) return version;
        }
        return nullptr;
    }
    std::shared_ptr<IDownload> download(const std::string& peer = "server") {
        const auto transfer = IDownload::createRemoteDownload(mClientRequest, mVersion, peer);
        EXPECT_NE(std::dynamic_pointer_cast<RemoteDownload>(transfer), nullptr);
        return transfer;
    }
    std::shared_ptr<IInstaller> installer(const std::string& peer = "server") {
        return IInstaller::createRemoteInstaller(mClientRequest, mVersion, peer);
    }
    /// Polls until it has finished or failed. @return its error
    template <class Drive>
    static int watch(Drive& drive) {
        EXPECT_TRUE(support::eventually([&drive] {
            float pos = 0;
            drive.getProgress(pos);
            return drive.finish() || drive.getError();
        }));
        return drive.getError().errorCode();
    }
    template <class Drive>
    static float position(Drive& drive) {
        float pos = -1;
        drive.getProgress(pos);
        return pos;
    }
    /// Lets a peer's server have the package.
    void fetch(const std::string& peer = "server") {
        const auto transfer = download(peer);
        EXPECT_EQ(transfer->start({}).errorCode(), 0);
        EXPECT_EQ(watch(*transfer), 0);
    }
    /// Lets that time pass, with what it brings about on the queue.
    void elapseOnQueue(unsigned milliseconds) {
        for (unsigned passed = 0; passed < milliseconds; passed += 250) {
            mClock.advance(250);
            bus().settle();
        }
    }
    std::optional<std::string> packageOn(const support::PackageStore& store) const {
        return support::readText(store.path(packageOf(kNewVersion)));
    }

    support::UpdateCloud mCloud;
    std::string mBytes;
    support::PackageStore mFarStore;
    std::shared_ptr<TWMQSystemServer> mFar = makeServer("far");
    std::shared_ptr<VersionRequest> mFarRequest = makeRequest(mFar);
    std::shared_ptr<TWMQClient> mClient = makeClient();
    std::shared_ptr<VersionRequest> mClientRequest = makeRequest(mClient);
    std::shared_ptr<IVersion> mVersion;
};

}  // namespace Tarnwick::OrvUpdate
