// Answers to peers that have this node install a package.
#include "InstallTopicsFixture.h"
#include "Public/Base/Process.h"

using namespace Tarnwick::OrvUpdate;
using Access = VersionServiceAccess;
using Texts = std::vector<std::string>;

namespace {

class StartInstallTopic : public InstallTopics {
protected:
    /// A local entry of the package, for a role.
    void enter(VersionType type) {
        const auto entry = std::make_shared<OrvVersion>(mWorker, mStore.path(), std::string());
        entry->parseVersion(documentOf("1.11.0.8", "", type));
        entry->setLocalFileName(mPackage);
        mRequest->updateVersions({entry}, StoragePosition_Local);
    }
};

std::string roleName(VersionType role) {
    constexpr std::array names = {"Unknown", "All", "Client", "Server", "VideoWall", "Analytics"};
    return names.at(role);
}

class InstallOnRole : public InstallTopics, public testing::WithParamInterface<VersionType> {
protected:
    InstallOnRole() : InstallTopics(GetParam()) {}
};

}  // namespace

TEST_F(StartInstallTopic, LaunchesTheInstallerInTheProgramsDirectory) {
    expectRefusal(install(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    const auto launch = mPrograms.starts()[0];
    EXPECT_TRUE(launch.program.ends_with("\\Server\\installer\\orvInstaller.exe")) << launch.program;
    EXPECT_NE(launch.parameters.find("\"" + mProgramDir + "\" \"3\" \"" +
                                     std::to_string(Public::Base::Process::getProcessId()) + "\" "),
              std::string::npos)
        << launch.parameters;
    EXPECT_TRUE(launch.parameters.ends_with("\"one\" \"two\" \"1\"")) << launch.parameters;
}

TEST_F(StartInstallTopic, AsksTheHostsConsentWithTheVersion) {
    install();
    EXPECT_EQ(mAsked.values(), Texts{"1.11.0.8"});
}

TEST_F(StartInstallTopic, LetsTheHostEndASecondAfterTheLaunch) {
    expectRefusal(install(), 0);
    elapse(999);
    EXPECT_EQ(mExits.count(), 0U);
    elapse(1);
    EXPECT_EQ(mExits.count(), 1U);
    elapse(10000);
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(StartInstallTopic, AHostThatDoesNotEndIsNotAskedAgain) {
    mEnds = false;
    startHost("1.0.0.0");
    expectRefusal(install(), 0);
    elapse(10000);
    EXPECT_EQ(mExits.count(), 1U);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
}

TEST_F(StartInstallTopic, LetsTheHostEndAlsoWhenTheServiceHasGone) {
    install();
    mRequest->stop();
    elapse(1000);
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(StartInstallTopic, OneThreadEndsTheHostHoweverOftenPeersAsk) {
    for (int round = 0; round < 5; ++round) expectRefusal(install(), 0);
    elapse(999);
    EXPECT_EQ(mExits.count(), 0U);
    elapse(1);
    const auto threads = mExits.values();
    ASSERT_EQ(threads.size(), 5U);
    EXPECT_EQ(std::set<std::thread::id>(threads.begin(), threads.end()).size(), 1U);
    EXPECT_EQ(mPrograms.starts().size(), 5U);
}

TEST_F(StartInstallTopic, EachLaunchHasASecondOfItsOwn) {
    install();
    elapse(600);
    install();
    elapse(400);
    EXPECT_EQ(mExits.count(), 1U);
    elapse(599);
    EXPECT_EQ(mExits.count(), 1U);
    elapse(1);
    EXPECT_EQ(mExits.count(), 2U);
    install();
    elapse(1000);
    EXPECT_EQ(mExits.count(), 3U);
}

TEST_F(StartInstallTopic, ServesOtherRequestsWhileTheHostIsAsked) {
    installUpToConsent();
    EXPECT_EQ(mAsker.ask("server", "topic_upgrade_queryversion")->code, 0);
    expectProgress(ask(kInstallPos, documentOf("1.11.0.8")), "0.0", false);
    EXPECT_EQ(ask(kDownloadPos, documentOf("1.11.0.8")).code, 0);
    EXPECT_EQ(mInstalling.answers().count(), 0U);
    EXPECT_EQ(mPrograms.starts().size(), 0U);
    mConsentGate.open();
    ASSERT_TRUE(mInstalling.answers().waitFor());
    expectRefusal(mInstalling.answers().values()[0], 0);
}

TEST_F(StartInstallTopic, ASecondOneTakesThePlaceOfTheFirstWhateverItsState) {
    installUpToConsent();
    const auto first = Access::startedInstaller(*service());
    ASSERT_NE(first, nullptr);
    expectRefusal(install(), 0);
    const auto second = Access::startedInstaller(*service());
    EXPECT_NE(second, first);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    mConsentGate.open();
    ASSERT_TRUE(mInstalling.answers().waitFor());
    EXPECT_EQ(mPrograms.starts().size(), 2U);
    EXPECT_EQ(Access::startedInstaller(*service()), second);
    elapse(1000);
    EXPECT_EQ(mExits.count(), 2U);
}

TEST_F(StartInstallTopic, ARunningOneGoesOnAndIsAnsweredWhenTheServiceStops) {
    installUpToConsent();
    mRequest->stop();
    mConsentGate.open();
    ASSERT_TRUE(mInstalling.answers().waitFor());
    expectRefusal(mInstalling.answers().values()[0], 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    elapse(1000);
    EXPECT_EQ(mExits.count(), 1U);
}

TEST_F(StartInstallTopic, TheInstallerStaysUntilTheServiceEnds) {
    install();
    elapse(1000);
    std::weak_ptr<AgentInstaller> installer = Access::startedInstaller(*service());
    EXPECT_FALSE(installer.expired());
    mRequest->stop();
    EXPECT_TRUE(support::eventually([&] { return installer.expired(); }));
}

TEST_F(StartInstallTopic, ARefusalOfTheHostIsToldAndDoesNotEndIt) {
    mConsent = false;
    const auto answer = install();
    EXPECT_EQ(answer.code, -1);
    EXPECT_FALSE(answer.message.empty());
    EXPECT_FALSE(answer.hasBody);
    EXPECT_TRUE(logged("installer start fail! errcode:-1"));
    EXPECT_TRUE(mPrograms.starts().empty());
    elapse(10000);
    EXPECT_EQ(mExits.count(), 0U);
    EXPECT_TRUE(std::filesystem::exists(mPackage));
}

TEST_F(StartInstallTopic, ABadPackageIsToldAndDeleted) {
    support::writeText(mPackage, "no package");
    expectRefusal(install(), -302);
    EXPECT_TRUE(logged("installer start fail! errcode:-302"));
    EXPECT_FALSE(std::filesystem::exists(mPackage));
    EXPECT_TRUE(mAsked.values().empty());
    elapse(10000);
    EXPECT_EQ(mExits.count(), 0U);
}

TEST_F(StartInstallTopic, AfterAFailureTheInstallerIsSetAndTheNextStartsAfresh) {
    mConsent = false;
    install();
    EXPECT_NE(Access::startedInstaller(*service()), nullptr);
    mConsent = true;
    expectRefusal(install(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
}

TEST_F(StartInstallTopic, AnUnknownVersionIsRefusedAndNotEntered) {
    const auto before = catalogue();
    expectRefusal(ask(kStartInstall, documentOf("9.9-oem3")), -416);
    EXPECT_TRUE(logged("not find version, versionstr:9.9-oem3"));
    EXPECT_EQ(catalogue(), before);
    EXPECT_EQ(Access::startedInstaller(*service()), nullptr);
}

TEST_F(StartInstallTopic, APackageForAnotherRoleIsRefusedWithoutALogLine) {
    enter(VersionType_Client);
    expectRefusal(ask(kStartInstall, documentOf("1.11.0.8", "", VersionType_Client)), -416);
    EXPECT_TRUE(mLog.entries().empty());
    EXPECT_EQ(Access::startedInstaller(*service()), nullptr);
}

TEST_F(StartInstallTopic, APackageForThisRoleIsTaken) {
    enter(VersionType_Server);
    expectRefusal(ask(kStartInstall, documentOf("1.11.0.8", "", VersionType_Server)), 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
}

TEST_P(InstallOnRole, TakesAPackageForAllRoles) {
    expectRefusal(install(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_NE(mPrograms.starts()[0].parameters.find("\" \"" + std::to_string(GetParam()) + "\" \""), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Roles, InstallOnRole,
                         testing::Values(VersionType_All, VersionType_Client, VersionType_Server, VersionType_VideoWall,
                                         VersionType_Analytics),
                         [](const auto& one) { return roleName(one.param); });

TEST_F(StartInstallTopic, LogsADocumentThatIsNoVersionInItsIndentedForm) {
    expectRefusal(ask(kStartInstall, R"({"softversion":"1.0"})"), -301);
    EXPECT_TRUE(logged("version parse fail! body:{\n\t\"softversion\": \"1.0\"\n}"));
}

TEST_F(StartInstallTopic, DoesNotLetAPeerFillTheLog) {
    expectRefusal(ask(kStartInstall, "\"" + std::string(100000, 'x') + "\""), -301);
    ASSERT_EQ(mLog.entries().size(), 1U);
    EXPECT_EQ(mLog.entries()[0].text, "version parse fail! body:\"" + std::string(4095, 'x'));
}
