#include "OrvInstaller/AgentInstaller.h"

#include "AgentFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::writeText;

namespace {

constexpr int kError = 2;
constexpr int kProgress = 4;

class AgentInstallerTest : public AgentFixture {};

/// The arguments of a command line whose arguments hold no quotes.
std::vector<std::string> argumentsOf(const std::string& parameters) {
    std::vector<std::string> arguments;
    size_t begin = 0;
    while ((begin = parameters.find('"', begin)) != std::string::npos) {
        const size_t end = parameters.find('"', begin + 1);
        arguments.push_back(parameters.substr(begin + 1, end - begin - 1));
        begin = end + 1;
    }
    return arguments;
}

}  // namespace

TEST_F(AgentInstallerTest, LaunchesTheCopiedInstaller) {
    auto agent = make();
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    const auto start = mPrograms.starts()[0];
    EXPECT_EQ(start.program, installerDir("Client") + "\\orvInstaller.exe");
    EXPECT_TRUE(start.elevated);
    EXPECT_TRUE(start.show);
    EXPECT_EQ(agent.getError().errorCode(), 0);
}

TEST_F(AgentInstallerTest, GivesTheInstallerSevenArguments) {
    mFirst = "one";
    mSecond = "two words";
    make().start("C:\\Orv", true, {});
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    const std::string process = std::to_string(Public::Base::Process::getProcessId());
    EXPECT_EQ(mPrograms.starts()[0].parameters,
              "\"" + mPackage + "\" \"C:\\Orv\" \"2\" \"" + process + "\" \"one\" \"two words\" \"1\"");
}

TEST_F(AgentInstallerTest, LeavesTheTwoTextsEmptyWhenTheHostDoesNotFillThem) {
    make().start("C:\\Orv", false, {});
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    const auto arguments = argumentsOf(mPrograms.starts()[0].parameters);
    ASSERT_EQ(arguments.size(), 7U);
    EXPECT_EQ(arguments[4], "");
    EXPECT_EQ(arguments[5], "");
    EXPECT_EQ(arguments[6], "0");
}

TEST_F(AgentInstallerTest, CopiesTheInstallerWithItsLibraries) {
    make().start("C:\\Orv", true, {});
    EXPECT_EQ(filesBelow(plain(installerDir("Client"))), (std::set<std::string>{"core.dll", "orvInstaller.exe"}));
}

TEST_F(AgentInstallerTest, AsksTheHostWithTheVersionText) {
    make().start("C:\\Orv", true, {});
    EXPECT_EQ(mAsked, std::vector<std::string>{"1.11.0.8"});
}

TEST_F(AgentInstallerTest, RunsTheCallbackOnceBeforeTheHostIsAsked) {
    int calls = 0;
    make().start("C:\\Orv", true, [&] {
        ++calls;
        EXPECT_TRUE(mAsked.empty());
    });
    EXPECT_EQ(calls, 1);
}

TEST_F(AgentInstallerTest, LogsEachStepOfALaunch) {
    support::LogRecorder log;
    make().start("C:\\Orv", true, {});
    const std::string directory = installerDir("Client");
    const std::string program = directory + "\\orvInstaller.exe";
    EXPECT_TRUE(log.has(kProgress, "AgentInstaller buildInstallerPath " + directory));
    EXPECT_TRUE(log.has(kProgress, "AgentInstaller copyDependens ready, from " + mProgramDir + " to " + directory));
    EXPECT_TRUE(log.has(kProgress, "startInstall: createAdminisratorProcess " + program));
    EXPECT_TRUE(log.has(kProgress, "startInstall: createAdminisratorProcess ready " + program));
    EXPECT_EQ(log.entries().size(), 4U);
    for (const auto& entry : log.entries()) {
        EXPECT_EQ(entry.file, "OrvUpdate/Src/OrvInstaller") << entry.text;
        EXPECT_NE(entry.function.find("AgentInstaller::"), std::string::npos) << entry.text;
    }
}

TEST_F(AgentInstallerTest, KeepsThePackageAfterALaunch) {
    make().start("C:\\Orv", true, {});
    EXPECT_TRUE(std::filesystem::exists(mPackage));
}

TEST_F(AgentInstallerTest, MayLaunchAgain) {
    auto agent = make();
    agent.start("C:\\Orv", true, {});
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 2U);
}

namespace {

struct DirectoryCase {
    const char* title;
    std::string given;
    std::string passedOn;
};
void PrintTo(const DirectoryCase& one, std::ostream* out) { *out << one.title; }
class AgentInstallDir : public AgentFixture, public testing::WithParamInterface<DirectoryCase> {};

struct RoleDirectoryCase {
    int role;
    std::string directory;
};
void PrintTo(const RoleDirectoryCase& one, std::ostream* out) { *out << one.role; }
class AgentRole : public AgentFixture, public testing::WithParamInterface<RoleDirectoryCase> {};

}  // namespace

TEST_P(AgentInstallDir, ReachesTheInstaller) {
    make().start(GetParam().given, true, {});
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(argumentsOf(mPrograms.starts()[0].parameters)[1], GetParam().passedOn);
}

INSTANTIATE_TEST_SUITE_P(Directories, AgentInstallDir,
                         testing::Values(DirectoryCase{"Plain", "C:\\Orv", "C:\\Orv"},
                                         DirectoryCase{"BackslashAtTheEnd", "C:\\Orv\\", "C:\\Orv"},
                                         DirectoryCase{"TwoBackslashesAtTheEnd", "C:\\Orv\\\\", "C:\\Orv\\"},
                                         DirectoryCase{"ForwardSeparatorAtTheEnd", "/opt/orv/", "/opt/orv/"},
                                         DirectoryCase{"BackslashAlone", "\\", ""},
                                         DirectoryCase{"WithBlanks", "C:\\Program Files\\Orv",
                                                       "C:\\Program Files\\Orv"}),
                         [](const auto& one) { return one.param.title; });

TEST_P(AgentRole, HasItsInstallerDirectoryAndIsPassedOn) {
    const auto role = static_cast<VersionType>(GetParam().role);
    EXPECT_EQ(make(role).start("C:\\Orv", true, {}).errorCode(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mPrograms.starts()[0].program, installerDir(GetParam().directory) + "\\orvInstaller.exe");
    EXPECT_EQ(argumentsOf(mPrograms.starts()[0].parameters)[2], std::to_string(GetParam().role));
}

INSTANTIATE_TEST_SUITE_P(Roles, AgentRole,
                         testing::Values(RoleDirectoryCase{0, "Server"}, RoleDirectoryCase{1, "Server"},
                                         RoleDirectoryCase{2, "Client"}, RoleDirectoryCase{3, "Server"},
                                         RoleDirectoryCase{4, "VideoWall"}, RoleDirectoryCase{5, "Analytics"},
                                         RoleDirectoryCase{6, "Server"}),
                         [](const auto& one) { return "Role" + std::to_string(one.param.role); });

TEST_F(AgentInstallerTest, UsesTheDirectoryOfTheBrandedEdition) {
    Public::Base::OEMInfo::setOemInfo({"Acme Vision"});
    const int code = make().start("C:\\Orv", true, {}).errorCode();
    Public::Base::OEMInfo::setOemInfo({});
    EXPECT_EQ(code, 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mPrograms.starts()[0].program,
              mDrive + "\\ProgramData\\Acme Vision\\Client\\installer\\orvInstaller.exe");
}

TEST_F(AgentInstallerTest, FindsTheDriveInAnyCaseAndWithBackslashes) {
    Public::Base::System::setSystemDirectory(mDrive + "\\WINDOWS\\System32");
    EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mPrograms.starts()[0].program, installerDir("Client") + "\\orvInstaller.exe");
}

// The package test.

TEST_F(AgentInstallerTest, ABadPackageIsDeletedAndItsTransferReset) {
    mVersion->setVersion("2.0");
    support::LogRecorder log;
    auto agent = make();
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), -428);
    EXPECT_FALSE(std::filesystem::exists(mPackage));
    EXPECT_NE(mVersion->getPackageFile(), mPackage);
    EXPECT_EQ(agent.getError().errorCode(), -428);
    EXPECT_TRUE(log.has(kError, "onHttpFinishCallback() remove fileName:" + mPackage + "\r\n"));
    EXPECT_TRUE(mPrograms.starts().empty());
    EXPECT_TRUE(mAsked.empty());
}

TEST_F(AgentInstallerTest, AnAbsentPackageGivesTheCodeOfTheTest) {
    std::filesystem::remove(mPackage);
    EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), -416);
}

TEST_F(AgentInstallerTest, ABadPackageDoesNotRunTheCallback) {
    mVersion->setSystemBits(Public::Base::SystemBits_32);
    bool called = false;
    make().start("C:\\Orv", true, [&] { called = true; });
    EXPECT_FALSE(called);
}

TEST_F(AgentInstallerTest, AFailedAgentRepeatsItsErrorWithoutANewTest) {
    std::filesystem::rename(mPackage, mPackage + ".away");
    auto agent = make();
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), -416);
    std::filesystem::rename(mPackage + ".away", mPackage);
    mVersion->setLocalFileName(mPackage);
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), -416);
    EXPECT_TRUE(std::filesystem::exists(mPackage));
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(AgentInstallerTest, ACancelDuringTheTestDiscardsAGoodPackageAndGivesZero) {
    auto agent = make();
    mVersion->duringTest = [&] { std::thread([&] { EXPECT_EQ(agent.cancel().errorCode(), 0); }).join(); };
    support::LogRecorder log;
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), 0);
    EXPECT_FALSE(std::filesystem::exists(mPackage));
    EXPECT_NE(mVersion->getPackageFile(), mPackage);
    EXPECT_TRUE(log.has(kError, "onHttpFinishCallback() remove fileName:" + mPackage + "\r\n"));
    EXPECT_TRUE(mPrograms.starts().empty());
    EXPECT_EQ(agent.getError().errorCode(), 0);
}

TEST_F(AgentInstallerTest, ACancelDuringTheTestOfABadPackageGivesTheCodeOfTheTest) {
    auto agent = make();
    mVersion->setVersion("2.0");
    mVersion->duringTest = [&] { agent.cancel(); };
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), -428);
}

TEST_F(AgentInstallerTest, ACancelBeforeTheStartIsForgotten) {
    auto agent = make();
    agent.cancel();
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
}

TEST_F(AgentInstallerTest, ACancelAfterTheTestComesTooLate) {
    auto agent = make();
    EXPECT_EQ(agent.start("C:\\Orv", true, [&] { agent.cancel(); }).errorCode(), 0);
    EXPECT_TRUE(std::filesystem::exists(mPackage));
    EXPECT_EQ(mPrograms.starts().size(), 1U);
}

TEST_F(AgentInstallerTest, WithoutAVersionItFails) {
    AgentInstaller agent({}, {}, nullptr, VersionType_Client);
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), -1);
    EXPECT_EQ(agent.getError().errorCode(), -1);
}

// Directory, copy, consent, launch.

TEST_F(AgentInstallerTest, AnEmptyInstallDirectoryFailsAfterTheCallback) {
    bool called = false;
    support::LogRecorder log;
    EXPECT_EQ(make().start("", true, [&] { called = true; }).errorCode(), -4);
    EXPECT_TRUE(called);
    EXPECT_TRUE(log.has(kError, "startInstall: installDir is empty"));
    EXPECT_TRUE(std::filesystem::exists(mPackage));
    EXPECT_TRUE(mAsked.empty());
}

TEST_F(AgentInstallerTest, AnInstallerDirectoryThatCannotBeMadeGivesTheSystemsError) {
    writeText(mDrive + "/ProgramData", "a file in its place");
    support::LogRecorder log;
    const int code = make().start("C:\\Orv", true, {}).errorCode();
    EXPECT_LT(code, -10000);
    EXPECT_TRUE(log.has(kError, "startInstall: buildInstallerPath with errorCode: " + std::to_string(code)));
    EXPECT_TRUE(std::filesystem::exists(mPackage));
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(AgentInstallerTest, WithoutAnInstallerProgramTheCopyFails) {
    std::filesystem::remove(mProgramDir + "/orvInstaller.exe");
    support::LogRecorder log;
    EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), -1);
    EXPECT_TRUE(log.has(kError, "startInstall: copyDependens failed"));
    EXPECT_TRUE(std::filesystem::exists(mPackage));
    EXPECT_TRUE(mAsked.empty());
}

TEST_F(AgentInstallerTest, ARefusalOfTheHostEndsTheInstallation) {
    mConsent = false;
    support::LogRecorder log;
    auto agent = make();
    const ErrorInfo result = agent.start("C:\\Orv", true, {});
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "\xD3\xC3\xBB\xA7\xC8\xA1\xCF\xFB\xC9\xFD\xBC\xB6");  // cancelled by the user, GBK
    EXPECT_EQ(agent.getError().errorMessage(), result.errorMessage());
    EXPECT_TRUE(log.has(kProgress, "startInstall: mUpgradeAckNotify cancel by user"));
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_F(AgentInstallerTest, ARefusalKeepsThePackageAndTheInstallerDirectory) {
    mConsent = false;
    make().start("C:\\Orv", true, {});
    EXPECT_TRUE(std::filesystem::exists(mPackage));
    EXPECT_EQ(filesBelow(plain(installerDir("Client"))), (std::set<std::string>{"core.dll", "orvInstaller.exe"}));
}

TEST_F(AgentInstallerTest, WithoutAWayToAskItEndsAsRefusedByTheUser) {
    AgentInstaller agent({}, {}, mVersion, VersionType_Client);
    const ErrorInfo result = agent.start("C:\\Orv", true, {});
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "\xD3\xC3\xBB\xA7\xC8\xA1\xCF\xFB\xC9\xFD\xBC\xB6");
}

TEST_F(AgentInstallerTest, AFailedLaunchKeepsThePackage) {
    support::ProgramRecorder refusing(false, 1223);
    support::LogRecorder log;
    const ErrorInfo result = make().start("C:\\Orv", true, {});
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_TRUE(log.has(kError, "startInstall: createAdminisratorProcess failed"));
    EXPECT_TRUE(log.has(kError, "RunApp Error: 1223"));
    EXPECT_TRUE(std::filesystem::exists(mPackage));
}

// The rest of the contract.

TEST_F(AgentInstallerTest, NeverFinishes) {
    auto agent = make();
    EXPECT_FALSE(agent.finish());
    agent.start("C:\\Orv", true, {});
    EXPECT_FALSE(agent.finish());
}

TEST_F(AgentInstallerTest, StopDoesNothing) {
    auto agent = make();
    EXPECT_EQ(agent.stop().errorCode(), 0);
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), 0);
}

TEST_F(AgentInstallerTest, LeavesTheProgressUntouched) {
    float progress = 0.25F;
    EXPECT_EQ(make().getProgress(progress).errorCode(), 0);
    EXPECT_EQ(progress, 0.25F);
}

TEST_F(AgentInstallerTest, ExitAsksTheHostToEnd) {
    EXPECT_EQ(make().exit().errorCode(), 0);
    EXPECT_EQ(mExits, 1);
}

TEST_F(AgentInstallerTest, ExitFailsWhenTheHostDeclines) {
    mEnds = false;
    EXPECT_EQ(make().exit().errorCode(), -1);
}

TEST_F(AgentInstallerTest, ExitFailsWhenTheHostHasNotSaidHow) {
    AgentInstaller agent({}, {}, mVersion, VersionType_Client);
    EXPECT_EQ(agent.exit().errorCode(), -1);
}

TEST_F(AgentInstallerTest, AFailedExitDoesNotUndoTheLaunch) {
    mEnds = false;
    auto agent = make();
    agent.start("C:\\Orv", true, {});
    agent.exit();
    EXPECT_EQ(agent.getError().errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(plain(installerDir("Client")) + "/orvInstaller.exe"));
}
