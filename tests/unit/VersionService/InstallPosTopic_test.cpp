// Answers to peers that ask how far an installation is.
#include "FakeInstaller.h"
#include "InstallTopicsFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

class InstallPosTopic : public InstallTopics {};

/// A process that has an installer and no catalogue.
class BareInstallPosTopic : public PeerTopics {
protected:
    BareInstallPosTopic() { mService->start(); }

    std::shared_ptr<FakeInstaller> mInstaller = std::make_shared<FakeInstaller>();
    std::shared_ptr<VersionService> mService = std::make_shared<VersionService>(mWorker, mServer, mInstaller);
};

}  // namespace

TEST_F(InstallPosTopic, ANodeThatRunsTheWantedVersionIsDone) {
    expectProgress(ask(kInstallPos, documentOf("1.0.0.0")), "1.0", true);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(InstallPosTopic, VersionsOfOneMeaningAreOne) {
    expectProgress(ask(kInstallPos, documentOf("1.0")), "1.0", true);
    EXPECT_EQ(ask(kInstallPos, documentOf("1.0-oem2")).code, -428);
}

TEST_F(InstallPosTopic, TheVersionNeedNotBeInTheCatalogue) {
    mRequest->updateVersions({}, StoragePosition_Local);
    expectProgress(ask(kInstallPos, documentOf("1.0.0.0")), "1.0", true);
}

TEST_F(InstallPosTopic, ANodeThatHasNotBegunAndRunsAnotherVersionTellsTheMismatch) {
    expectRefusal(ask(kInstallPos, documentOf("1.11.0.8")), -428);
    EXPECT_TRUE(logged("version Mismatch"));
}

TEST_F(InstallPosTopic, WhileTheInstallerIsPreparedItIsNotDone) {
    installUpToConsent();
    expectProgress(ask(kInstallPos, documentOf("1.11.0.8")), "0.0", false);
}

TEST_F(InstallPosTopic, AfterTheLaunchItIsNotDoneWhileTheOldVersionAnswers) {
    install();
    expectProgress(ask(kInstallPos, documentOf("1.11.0.8")), "0.0", false);
}

TEST_F(InstallPosTopic, AfterAFailedStartItIsNotDoneInsteadOfAMismatch) {
    mConsent = false;
    EXPECT_EQ(install().code, -1);
    expectProgress(ask(kInstallPos, documentOf("1.11.0.8")), "0.0", false);
    expectProgress(ask(kInstallPos, documentOf("7.7")), "0.0", false);
}

TEST_F(InstallPosTopic, ARunningInstallationDoesNotHideThatTheNodeRunsTheVersion) {
    installUpToConsent();
    expectProgress(ask(kInstallPos, documentOf("1.0.0.0")), "1.0", true);
}

TEST_F(InstallPosTopic, ANodeThatComesBackWithTheWantedVersionIsDone) {
    install();
    startHost("1.11.0.8");
    expectProgress(ask(kInstallPos, documentOf("1.11.0.8")), "1.0", true);
}

TEST_F(InstallPosTopic, ANodeThatComesBackAsItWasTellsTheMismatch) {
    install();
    startHost("1.0.0.0");
    expectRefusal(ask(kInstallPos, documentOf("1.11.0.8")), -428);
}

TEST_F(InstallPosTopic, DoesNotLetAPeerFillTheLog) {
    expectRefusal(ask(kInstallPos, std::string(100000, 'x')), -301);
    ASSERT_EQ(mLog.entries().size(), 1U);
    EXPECT_EQ(mLog.entries()[0].text, "version parse fail! body:" + std::string(4096, 'x'));
}

// --- Without a catalogue

TEST_F(BareInstallPosTopic, ReportsTheGivenInstaller) {
    mInstaller->pos = 0.25F;
    expectProgress(ask(kInstallPos, documentOf("1.0")), "0.25", false);
    mInstaller->pos = 1.0F;
    mInstaller->finished = true;
    expectProgress(ask(kInstallPos, documentOf("1.0")), "1.0", true);
}

TEST_F(BareInstallPosTopic, ReadsTheVersionForTheParseTestAlone) {
    mInstaller->pos = 0.25F;
    mService->setCurrentVersion(Version("1.0", 0));
    expectProgress(ask(kInstallPos, documentOf("1.0")), "0.25", false);
    expectProgress(ask(kInstallPos, documentOf("no version")), "0.25", false);
}

TEST_F(BareInstallPosTopic, DoesNotTellTheInstallersError) {
    mInstaller->error = ErrorInfo(-602, "");
    expectProgress(ask(kInstallPos, documentOf("1.0")), "0.0", false);
}

TEST_F(BareInstallPosTopic, APositionThatFailsIsToldWithItsError) {
    mInstaller->result = ErrorInfo(-606, "archive");
    const auto answer = ask(kInstallPos, documentOf("1.0"));
    EXPECT_EQ(answer.code, -606);
    EXPECT_EQ(answer.message, "archive");
    EXPECT_FALSE(answer.hasBody);
    EXPECT_TRUE(logged("getProgress fail!"));
}

TEST_F(BareInstallPosTopic, WithoutAnInstallerItIsRefusedWithoutALogLine) {
    mService = std::make_shared<VersionService>(mWorker, mServer, std::shared_ptr<IInstaller>());
    mService->start();
    expectRefusal(ask(kInstallPos, documentOf("1.0")), -1);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(BareInstallPosTopic, WhereTheCatalogueHasGoneItIsRefused) {
    mService = std::make_shared<VersionService>(mWorker, mServer, mRequest, PackageCallback(), CheckCallback());
    mService->start();
    mRequest.reset();
    expectRefusal(ask(kInstallPos, documentOf("1.0")), -1);
}

TEST_F(BareInstallPosTopic, AnUnreadableVersionComesBeforeTheMissingInstaller) {
    mService = std::make_shared<VersionService>(mWorker, mServer, std::shared_ptr<IInstaller>());
    mService->start();
    expectRefusal(ask(kInstallPos, "sorry"), -301);
    EXPECT_TRUE(logged("version parse fail! body:sorry"));
}
