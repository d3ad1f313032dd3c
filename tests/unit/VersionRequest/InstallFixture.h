// A host on which packages are installed.
#pragma once

#include "PeBuilder.h"
#include "ProgramRecorder.h"
#include "Public/Base/System.h"
#include "RequestFixture.h"
#include "UpdateCloud.h"

namespace Tarnwick::OrvUpdate {

inline constexpr char kPackagePath[] = "/packages/1.11.0.8.exe";

/// A host with an installer program, an update cloud that holds its package, and callbacks that note what happens.
class Install : public RequestFixture {
protected:
    Install() {
        Public::Base::System::setSystemDirectory(mDrive + "/Windows/system32");
        std::filesystem::create_directories(mDrive);
        support::writeText(mCloud.programDir() + "/orvInstaller.exe",
                           support::buildPe({true, {}, {}, "installer"}).bytes);
        mPackage = *support::readText(support::makePackage({}, mWorkshop.path() + "/package.exe"));
        mCloud.serve(kPackagePath, mPackage);
        startAt("1.0.0.0");
    }
    /// Nothing of a test may go on after it: it would meet the real system.
    ~Install() override {
        mAcknowledgement.open();
        EXPECT_TRUE(!mRequest || ended());
        EXPECT_TRUE(support::eventually([this] { return mRequest.use_count() <= 1; }));
        Public::Base::System::setSystemDirectory({});
    }

    void startAt(const std::string& version) {
        mRequest->stop();
        mRequest->start(
            Version(version, 0),
            [this](const std::string& text, std::string& first, std::string& second) {
                mAsked.add(text);
                first = "one";
                second = "two";
                if (mHoldAcknowledgement) mAcknowledgement.pass();
                return mConsent.load();
            },
            [this] {
                mExits.add(1);
                return true;
            },
            mStore.path());
    }
    /// The cloud's entry of the package, after the cloud was asked.
    std::shared_ptr<IVersion> cloudEntry(const std::string& version = "1.11.0.8") {
        mCloud.versions("[" + support::cloudRecord(version, mCloud.url(kPackagePath)) + "]");
        const support::Received<int> done;
        mRequest->requestVersionFromHttp([done](const ErrorInfo&) { done.add(1); }, true);
        EXPECT_TRUE(done.waitFor());
        return mRequest->queryVersion(Public::Base::SystemType_Unknown, Public::Base::SystemBits_Unknown,
                                      Public::Base::ProjectType_Unknown, VersionType_Unknown, VersionSource_Unknown,
                                      Version(version, 0));
    }
    /// An entry of a package on this disk.
    std::shared_ptr<OrvVersion> localEntry(const std::string& path, const std::string& version = "1.11.0.8") {
        const auto entry = std::make_shared<OrvVersion>(mWorker, mStore.path(), std::string());
        entry->setVersion(version);
        entry->setStoragePosition(StoragePosition_Local);
        entry->setSystemType(Public::Base::SystemType_Windows);
        entry->setSystemBits(Public::Base::SystemBits_64);
        entry->setVersionType(VersionType_All);
        entry->setVersionSource(VersionSource_Online);
        entry->setLocalFileName(path);
        return entry;
    }
    ErrorInfo install(const std::shared_ptr<IVersion>& version, const std::string& dir = "C:\\Orv", bool flag = true) {
        const auto errors = mErrors;
        const auto arrived = mArrived;
        return mRequest->install(
            version, dir, flag, [errors](const ErrorInfo& error) { errors.add(error.errorCode()); },
            [arrived] { arrived.add(std::this_thread::get_id()); },
            [this] {
                mInstalling.add(1);
                if (mDuringInstalling) mDuringInstalling();
            });
    }
    /// True once no installation waits for its transfer any more.
    bool ended() {
        return support::eventually([this] { return VersionRequestAccess::runningInstalls(*mRequest) == 0; });
    }
    std::vector<int> errors() const { return mErrors.values(); }

    support::UpdateCloud mCloud;
    support::ProgramRecorder mPrograms;
    support::TempDir mWorkshop;
    const std::string mDrive = mWorkshop.path() + "/drive";
    std::string mPackage;
    const support::Received<int> mErrors;
    const support::Received<std::thread::id> mArrived;
    const support::Received<int> mInstalling;
    const support::Received<std::string> mAsked;
    const support::Received<int> mExits;
    std::function<void()> mDuringInstalling;
    std::atomic<bool> mConsent{true};
    std::atomic<bool> mHoldAcknowledgement{false};
    support::Gate mAcknowledgement;
    std::shared_ptr<VersionRequest> mRequest = makeRequest(makeServer(), VersionType_Client);
};

}  // namespace Tarnwick::OrvUpdate
