// From a catalogue entry to a launched installer.
#include "GbkTexts.h"
#include "OrvInstaller/AgentInstaller.h"
#include "PeBuilder.h"
#include "ProgramRecorder.h"
#include "Public/Base/Process.h"
#include "Public/Base/System.h"
#include "RequestFixture.h"
#include "UpdateCloud.h"

using namespace Tarnwick::OrvUpdate;
using support::Gate;
using support::Received;
using Access = VersionRequestAccess;

namespace {

constexpr int kError = 2;
constexpr int kProgress = 4;
constexpr char kPackagePath[] = "/packages/1.11.0.8.exe";

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
        const Received<int> done;
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
        return support::eventually([this] { return Access::runningInstalls(*mRequest) == 0; });
    }
    std::vector<int> errors() const { return mErrors.values(); }

    support::UpdateCloud mCloud;
    support::ProgramRecorder mPrograms;
    support::TempDir mWorkshop;
    const std::string mDrive = mWorkshop.path() + "/drive";
    std::string mPackage;
    const Received<int> mErrors;
    const Received<std::thread::id> mArrived;
    const Received<int> mInstalling;
    const Received<std::string> mAsked;
    const Received<int> mExits;
    std::function<void()> mDuringInstalling;
    std::atomic<bool> mConsent{true};
    std::atomic<bool> mHoldAcknowledgement{false};
    Gate mAcknowledgement;
    std::shared_ptr<VersionRequest> mRequest = makeRequest(makeServer(), VersionType_Client);
};

class InstallCancel : public Install {};
class InstallLifetime : public Install {};

}  // namespace

// --- The whole chain

TEST_F(Install, BringsThePackageLaunchesTheInstallerAndLetsTheHostEnd) {
    const auto version = cloudEntry();
    ASSERT_TRUE(version);
    EXPECT_EQ(install(version).errorCode(), 0);
    ASSERT_TRUE(mExits.waitFor());
    ASSERT_TRUE(ended());
    EXPECT_EQ(mArrived.count(), 1U);
    EXPECT_EQ(mInstalling.count(), 1U);
    EXPECT_EQ(mExits.count(), 1U);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(support::readText(version->getPackageFile()), mPackage);
}

TEST_F(Install, GivesTheInstallerItsSevenArguments) {
    const auto version = cloudEntry();
    install(version, "C:\\Orv", true);
    ASSERT_TRUE(mExits.waitFor());
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    const std::string process = std::to_string(Public::Base::Process::getProcessId());
    EXPECT_EQ(mPrograms.starts()[0].parameters,
              "\"" + version->getPackageFile() + "\" \"C:\\Orv\" \"2\" \"" + process + "\" \"one\" \"two\" \"1\"");
}

TEST_F(Install, PassesTheFlagOnUnchanged) {
    install(cloudEntry(), "C:\\Orv", false);
    ASSERT_TRUE(mExits.waitFor());
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_TRUE(mPrograms.starts()[0].parameters.ends_with(" \"0\""));
}

TEST_F(Install, AsksTheHostWithTheVersionText) {
    install(cloudEntry());
    EXPECT_EQ(mAsked.first(), "1.11.0.8");
}

TEST_F(Install, RunsTheCallbacksInTheirOrder) {
    const Received<std::string> steps;
    const auto version = cloudEntry();
    mRequest->stop();
    mRequest->start(
        Version("1.0", 0),
        [steps](const std::string&, std::string&, std::string&) {
            steps.add("asked");
            return true;
        },
        [steps] {
            steps.add("exit");
            return true;
        },
        mStore.path());
    mRequest->install(
        version, "C:\\Orv", true, [steps](const ErrorInfo&) { steps.add("error"); },
        [steps] { steps.add("downloaded"); }, [steps] { steps.add("installing"); });
    ASSERT_TRUE(steps.waitFor(4));
    EXPECT_EQ(steps.values(), (std::vector<std::string>{"downloaded", "installing", "asked", "exit"}));
}

TEST_F(Install, LogsEachStep) {
    support::LogRecorder log;
    install(cloudEntry());
    ASSERT_TRUE(mExits.waitFor());
    ASSERT_TRUE(ended());
    EXPECT_TRUE(log.has(kProgress, "VersionRequest: download start"));
    EXPECT_TRUE(log.has(kProgress, "VersionRequest: make AgentInstaller"));
    EXPECT_TRUE(log.has(kProgress, "VersionRequest: start AgentInstaller C:\\Orv 1"));
    EXPECT_TRUE(log.has(kProgress, "mAgentInstaller exit"));
    EXPECT_FALSE(log.has(kProgress, "mAgentInstaller start is cancel by user"));
}

TEST_F(Install, LogsTheFlagAsANumber) {
    support::LogRecorder log;
    install(cloudEntry(), "C:\\Orv", false);
    ASSERT_TRUE(mExits.waitFor());
    EXPECT_TRUE(log.has(kProgress, "VersionRequest: start AgentInstaller C:\\Orv 0"));
}

TEST_F(Install, RunsOnTheTransfersThread) {
    install(cloudEntry());
    ASSERT_TRUE(mArrived.waitFor());
    EXPECT_NE(mArrived.values()[0], std::this_thread::get_id());
}

TEST_F(Install, OfALocalPackageRunsToItsEndOnTheCallersThread) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_EQ(mExits.count(), 1U);
    ASSERT_EQ(mArrived.count(), 1U);
    EXPECT_EQ(mArrived.values()[0], std::this_thread::get_id());
    EXPECT_EQ(Access::runningInstalls(*mRequest), 0U);
}

TEST_F(Install, OfACloudEntryWhosePackageHasArrivedFetchesNothing) {
    const auto version = cloudEntry();
    mStore.put(packageOf("1.11.0.8"));
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_EQ(mExits.count(), 1U);
    EXPECT_EQ(mCloud.requestCount(kPackagePath), 0U);
}

TEST_F(Install, EmptiesTheAgentAfterItsExit) {
    install(localEntry(mStore.put(packageOf("1.11.0.8"))));
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(Install, DropsARefusedExit) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    mRequest->stop();
    mRequest->start(
        Version("1.0", 0), [](const std::string&, std::string&, std::string&) { return true; }, [] { return false; },
        mStore.path());
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(Install, UsesTheRoleOfTheProgram) {
    const auto request = makeRequest(makeServer("other"), VersionType_Analytics);
    request->start(
        Version("1.0", 0), [](const std::string&, std::string&, std::string&) { return true; }, {}, mStore.path());
    request->install(localEntry(mStore.put(packageOf("1.11.0.8"))), "C:\\Orv", true, {}, {}, {});
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_NE(mPrograms.starts()[0].program.find("\\Analytics\\installer\\"), std::string::npos);
    EXPECT_NE(mPrograms.starts()[0].parameters.find(" \"5\" "), std::string::npos);
}

TEST_F(Install, TakesNoCallbacks) {
    EXPECT_EQ(mRequest->install(localEntry(mStore.put(packageOf("1.11.0.8"))), "C:\\Orv", true, {}, {}, {}).errorCode(),
              0);
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(Install, OfAnEntryDroppedFromTheCatalogueDuringTheTransferStillArrives) {
    mCloud.hold(kPackagePath);
    install(cloudEntry());
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(mRequest->getVersions().empty());
    mCloud.release(kPackagePath);
    EXPECT_TRUE(mExits.waitFor());
    EXPECT_TRUE(errors().empty());
}

// --- What stands in its way

TEST_F(Install, OfTheRunningVersionSucceedsAndStartsNothing) {
    startAt("1.11.0.8");
    const auto version = cloudEntry();
    support::LogRecorder log;
    const ErrorInfo result = install(version);
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_EQ(mInstalling.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(mCloud.requestCount(kPackagePath), 0U);
    EXPECT_FALSE(log.has(kProgress, "VersionRequest: download start"));
    EXPECT_EQ(Access::runningInstalls(*mRequest), 0U);
}

TEST_F(Install, OfTheRunningVersionIsKnownByItsNumbers) {
    startAt("2.0");
    EXPECT_EQ(install(localEntry(mStore.path("missing.exe"), "2.0.0.0")).errorCode(), 0);
    EXPECT_TRUE(errors().empty());
}

TEST_F(Install, OfAnOlderVersionIsDone) {
    startAt("9.0");
    EXPECT_EQ(install(localEntry(mStore.put(packageOf("1.11.0.8")))).errorCode(), 0);
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(Install, WithoutATransferFails) {
    const auto version = support::entry("5.0");  // of the cloud, without an address
    support::LogRecorder log;
    const ErrorInfo result = install(version);
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(errors(), std::vector<int>{-1});
    EXPECT_FALSE(log.has(kProgress, "VersionRequest: download start"));
}

TEST_F(Install, OfNoEntryFails) {
    EXPECT_EQ(install(nullptr).errorCode(), -1);
    EXPECT_EQ(errors(), std::vector<int>{-1});
}

TEST_F(Install, IsRefusedWhenThePackageFileCannotBeOpened) {
    const auto version = cloudEntry();
    std::filesystem::create_directories(version->getPackageFile());
    EXPECT_EQ(install(version).errorCode(), -602);
    EXPECT_EQ(errors(), std::vector<int>{-602});
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_EQ(Access::runningInstalls(*mRequest), 0U);
}

TEST_F(Install, OfAnUnsoundLocalPackageTellsItsErrorTwice) {
    const auto version = localEntry(mStore.putText(packageOf("1.11.0.8"), "no package"));
    EXPECT_EQ(install(version).errorCode(), -416);
    EXPECT_EQ(errors(), (std::vector<int>{-416, -416}));
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_EQ(Access::runningInstalls(*mRequest), 0U);
}

TEST_F(Install, ReportsATransferThatFailsLater) {
    const auto version = cloudEntry();
    mCloud.forget(kPackagePath);
    EXPECT_EQ(install(version).errorCode(), 0);
    ASSERT_TRUE(mErrors.waitFor());
    ASSERT_TRUE(ended());
    EXPECT_EQ(errors(), std::vector<int>{-1});
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(Install, ReportsAPackageThatFailsItsTest) {
    support::PackageSpec other;
    other.version = "7.7.7.7";
    const auto version = cloudEntry();
    mCloud.serve(kPackagePath, *support::readText(support::makePackage(other, mWorkshop.path() + "/other.exe")));
    support::LogRecorder log;
    EXPECT_EQ(install(version).errorCode(), 0);
    ASSERT_TRUE(mErrors.waitFor());
    ASSERT_TRUE(ended());
    EXPECT_EQ(errors(), std::vector<int>{-428});
    EXPECT_EQ(mArrived.count(), 1U);
    EXPECT_EQ(mInstalling.count(), 0U);
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(log.has(kError, "mAgentInstaller start with errorCode: -428"));
    EXPECT_FALSE(std::filesystem::exists(mStore.path(packageOf("1.11.0.8"))));
}

TEST_F(Install, ReportsAnEmptyInstallDirectory) {
    EXPECT_EQ(install(localEntry(mStore.put(packageOf("1.11.0.8"))), "").errorCode(), 0);
    EXPECT_EQ(errors(), std::vector<int>{-4});
}

TEST_F(Install, ReportsAHostThatRefuses) {
    mConsent = false;
    const Received<std::string> messages;
    mRequest->install(localEntry(mStore.put(packageOf("1.11.0.8"))), "C:\\Orv", true,
                      [messages](const ErrorInfo& error) {
                          EXPECT_EQ(error.errorCode(), -1);
                          messages.add(error.errorMessage());
                      },
                      {}, {});
    EXPECT_EQ(messages.values(), std::vector<std::string>{kTextCancelledByUser});
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(Install, ReportsALaunchThatFails) {
    const support::ProgramRecorder refusing(false, 5);
    EXPECT_EQ(install(localEntry(mStore.put(packageOf("1.11.0.8")))).errorCode(), 0);
    EXPECT_EQ(errors(), std::vector<int>{-1});
    EXPECT_EQ(refusing.starts().size(), 1U);
    EXPECT_EQ(mExits.count(), 0U);
}

TEST_F(Install, LeavesAFailedAgentUntilTheNextInstall) {
    mConsent = false;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    install(version);
    const auto failed = Access::agent(*mRequest);
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->getError().errorCode(), -1);
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);  // reaches a finished agent, which does no harm
    EXPECT_EQ(Access::agent(*mRequest), failed);
    install(version);
    EXPECT_NE(Access::agent(*mRequest), failed);
}

TEST_F(Install, MayBeRepeatedAfterARefusal) {
    mConsent = false;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    install(version);
    mConsent = true;
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_EQ(mExits.count(), 1U);
    EXPECT_EQ(errors(), std::vector<int>{-1});
}

TEST_F(Install, OfAnEntryWhoseTransferRunsTakesThePlaceOfTheFirst) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    const Received<int> first;
    mRequest->install(version, "C:\\First", true, {}, [first] { first.add(1); }, {});
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    EXPECT_EQ(install(version, "C:\\Second").errorCode(), 0);
    EXPECT_EQ(Access::runningInstalls(*mRequest), 1U);
    mCloud.release(kPackagePath);
    ASSERT_TRUE(mExits.waitFor());
    EXPECT_EQ(first.count(), 0U);
    EXPECT_EQ(mArrived.count(), 1U);
    EXPECT_EQ(mCloud.requestCount(kPackagePath), 1U);
}

// --- Cancelling

TEST_F(InstallCancel, BeforeAnyInstallSetsTheRequestThatTheNextInstallClears) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    const ErrorInfo result = mRequest->installCancel(version);
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_TRUE(Access::cancelRequested(*mRequest));
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_FALSE(Access::cancelRequested(*mRequest));
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(InstallCancel, RequestIsClearedAlsoByAnInstallOfTheRunningVersion) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    startAt("1.11.0.8");
    mRequest->installCancel(version);
    install(version);
    EXPECT_FALSE(Access::cancelRequested(*mRequest));
}

TEST_F(InstallCancel, OfAnEntryWithoutATransferSucceeds) {
    EXPECT_EQ(mRequest->installCancel(support::entry("5.0")).errorCode(), 0);
    EXPECT_EQ(mRequest->installCancel(nullptr).errorCode(), 0);
}

TEST_F(InstallCancel, DuringTheTransferEndsItWithoutAWord) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    EXPECT_EQ(install(version).errorCode(), 0);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);
    EXPECT_TRUE(ended());
    mCloud.release(kPackagePath);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_FALSE(std::filesystem::exists(version->getPackageFile()));
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(InstallCancel, OfATransferLeavesTheWayClearForTheNextInstall) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->installCancel(version);
    mCloud.release(kPackagePath);
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_TRUE(ended());
    EXPECT_EQ(mCloud.requestCount(kPackagePath), 2U);
}

TEST_F(InstallCancel, OfAnotherEntryStopsTheCompletionToo) {
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->installCancel(localEntry(mStore.path("other.exe"), "3.0"));
    mCloud.release(kPackagePath);
    EXPECT_TRUE(ended());
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_TRUE(std::filesystem::exists(version->getPackageFile()));
}

TEST_F(InstallCancel, AfterTheArrivalStopsBehindTheAgent) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    support::LogRecorder log;
    mDuringInstalling = [&] { mRequest->installCancel(version); };
    EXPECT_EQ(install(version).errorCode(), 0);
    EXPECT_TRUE(log.has(kProgress, "mAgentInstaller start is cancel by user"));
    EXPECT_FALSE(log.has(kProgress, "mAgentInstaller exit"));
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

namespace {

/// An entry that lets a test act while its package is tested.
class WatchedVersion : public OrvVersion {
public:
    using OrvVersion::OrvVersion;
    SystemBits getSystemBits() const override {
        if (duringTest) duringTest();
        return OrvVersion::getSystemBits();
    }
    std::function<void()> duringTest;
};

}  // namespace

TEST_F(InstallCancel, DuringThePackageTestDiscardsThePackage) {
    const auto version = std::make_shared<WatchedVersion>(mWorker, mStore.path(), std::string());
    const std::string package = mStore.put(packageOf("1.11.0.8"));
    version->setVersion("1.11.0.8");
    version->setStoragePosition(StoragePosition_Local);
    version->setLocalFileName(package);
    version->duringTest = [&] {
        if (Access::agent(*mRequest)) mRequest->installCancel(version);
    };
    support::LogRecorder log;
    EXPECT_EQ(install(version).errorCode(), 0);
    version->duringTest = nullptr;
    EXPECT_FALSE(std::filesystem::exists(package));
    EXPECT_EQ(mArrived.count(), 1U);
    EXPECT_EQ(mInstalling.count(), 0U);
    EXPECT_EQ(mAsked.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_TRUE(log.has(kProgress, "mAgentInstaller start is cancel by user"));
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(InstallCancel, DuringTheAcknowledgementLaunchesYetDoesNotEndTheHost) {
    mHoldAcknowledgement = true;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    std::thread installing([&] { install(version); });
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);
    mAcknowledgement.open();
    installing.join();
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(Access::agent(*mRequest), nullptr);
}

TEST_F(InstallCancel, DuringTheAcknowledgementOfAFetchedPackageReturnsAtOnce) {
    mHoldAcknowledgement = true;
    const auto version = cloudEntry();
    install(version);
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    EXPECT_EQ(mRequest->installCancel(version).errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 0U);
    mAcknowledgement.open();
    EXPECT_TRUE(support::eventually([&] { return Access::agent(*mRequest) == nullptr; }));
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallCancel, DuringARefusedAcknowledgementReportsNothing) {
    mHoldAcknowledgement = true;
    mConsent = false;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    std::thread installing([&] { install(version); });
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    mRequest->installCancel(version);
    mAcknowledgement.open();
    installing.join();
    EXPECT_TRUE(errors().empty());
    EXPECT_EQ(mExits.count(), 0U);
}

TEST_F(InstallCancel, HoldsForItsInstallationAlsoWhenAnotherHasBegun) {
    mHoldAcknowledgement = true;
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    std::thread installing([&] { install(version); });
    ASSERT_TRUE(mAcknowledgement.waitForSomeone());
    mRequest->installCancel(version);
    install(localEntry(mStore.path("running.exe"), "1.0.0.0"));
    EXPECT_FALSE(Access::cancelRequested(*mRequest));
    mAcknowledgement.open();
    installing.join();
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallCancel, AfterTheLaunchLeavesTheInstallerRunning) {
    const auto version = localEntry(mStore.put(packageOf("1.11.0.8")));
    const Received<std::string> launched;
    Public::Base::System::setProgramStarter([&](const Public::Base::ProgramStart& start) {
        launched.add(start.program);
        mRequest->installCancel(version);
        return true;
    });
    EXPECT_EQ(install(version).errorCode(), 0);
    Public::Base::System::setProgramStarter({});
    EXPECT_EQ(launched.count(), 1U);
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallCancel, WhenThePackageArrivesAtThatMomentNeitherHangsNorReports) {
    for (int round = 0; round < 20; ++round) {
        const auto version = cloudEntry();
        // A place of its own: one that is cancelled in its test still discards its package, at whatever time.
        version->setSystemType(static_cast<Public::Base::SystemType>(round % 5 + 1));
        version->setVersionType(static_cast<VersionType>(round / 5 + 1));
        install(version);
        mRequest->installCancel(version);
        EXPECT_TRUE(ended());
        std::filesystem::remove_all(mStore.path("Online"));
    }
    EXPECT_TRUE(errors().empty());
}

// --- What lives how long

TEST_F(InstallLifetime, NothingIsHeldAfterACompletedInstall) {
    auto version = cloudEntry();
    auto transfer = version->getDownload(std::static_pointer_cast<IVersionRequest>(mRequest));
    const std::weak_ptr<IVersion> watchedVersion = version;
    const std::weak_ptr<IDownload> watchedTransfer = transfer;
    transfer.reset();
    install(version);
    ASSERT_TRUE(mExits.waitFor());
    version.reset();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(support::eventually([&] { return watchedVersion.expired() && watchedTransfer.expired(); }));
}

TEST_F(InstallLifetime, NothingIsHeldAfterAFailedTransfer) {
    auto version = cloudEntry();
    mCloud.forget(kPackagePath);
    const std::weak_ptr<IVersion> watchedVersion = version;
    install(version);
    ASSERT_TRUE(mErrors.waitFor());
    version.reset();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(support::eventually([&] { return watchedVersion.expired(); }));
}

TEST_F(InstallLifetime, NothingIsHeldAfterACancelledTransfer) {
    auto version = cloudEntry();
    const std::weak_ptr<IVersion> watchedVersion = version;
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    mRequest->installCancel(version);
    version.reset();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_TRUE(support::eventually([&] { return watchedVersion.expired(); }));
}

TEST_F(InstallLifetime, CallbacksGoWithTheInstallation) {
    const auto held = std::make_shared<int>(0);
    const auto version = cloudEntry();
    mRequest->install(
        version, "C:\\Orv", true, [held](const ErrorInfo&) {}, [held] {}, [held] {});
    ASSERT_TRUE(mExits.waitFor());
    EXPECT_TRUE(support::eventually([&] { return held.use_count() == 1; }));
}

TEST_F(InstallLifetime, CallbacksOfAReplacedInstallationGoAtOnce) {
    const auto held = std::make_shared<int>(0);
    const auto version = cloudEntry();
    mCloud.hold(kPackagePath);
    mRequest->install(
        version, "C:\\Orv", true, [held](const ErrorInfo&) {}, [held] {}, [held] {});
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    EXPECT_GT(held.use_count(), 1);
    install(version);
    EXPECT_EQ(held.use_count(), 1);
    mCloud.release(kPackagePath);
    EXPECT_TRUE(mExits.waitFor());
}

TEST_F(InstallLifetime, RunningTransferDoesNotKeepTheRequest) {
    auto version = cloudEntry();
    const std::weak_ptr<IVersion> watchedVersion = version;
    const std::weak_ptr<VersionRequest> watchedRequest = mRequest;
    mCloud.hold(kPackagePath);
    install(version);
    ASSERT_TRUE(mCloud.waitForHeld(kPackagePath));
    version.reset();
    mRequest.reset();
    EXPECT_TRUE(support::eventually([&] { return watchedRequest.expired() && watchedVersion.expired(); }));
    mCloud.release(kPackagePath);
    EXPECT_EQ(mArrived.count(), 0U);
    EXPECT_TRUE(errors().empty());
}

TEST_F(InstallLifetime, HostMayLetGoOfTheRequestWhenItIsToEnd) {
    const auto version = cloudEntry();
    const std::weak_ptr<VersionRequest> watch = mRequest;
    const Received<int> exits;
    mRequest->stop();
    const auto last = std::make_shared<std::shared_ptr<VersionRequest>>(mRequest);
    mRequest->start(
        Version("1.0", 0), [](const std::string&, std::string&, std::string&) { return true; },
        [=] {
            last->reset();
            exits.add(1);
            return true;
        },
        mStore.path());
    install(version);
    mRequest.reset();
    ASSERT_TRUE(exits.waitFor());
    EXPECT_TRUE(support::eventually([&] { return watch.expired(); }));
}
