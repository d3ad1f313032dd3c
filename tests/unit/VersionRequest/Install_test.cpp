// From a catalogue entry to a launched installer.
#include "GbkTexts.h"
#include "InstallFixture.h"
#include "OrvInstaller/AgentInstaller.h"
#include "Public/Base/Process.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Access = VersionRequestAccess;

namespace {

constexpr int kError = 2;
constexpr int kProgress = 4;

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
