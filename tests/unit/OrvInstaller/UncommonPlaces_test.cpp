// Installations from, in and into directories of uncommon names.
#include "UncommonPlaces.h"

#include "AgentFixture.h"
#include "OrvBackup.h"
#include "OrvInstallerFixture.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using support::readText;
using support::UncommonPlace;
using support::writeText;

namespace {

class InstallerElsewhere : public AgentFixture, public testing::WithParamInterface<UncommonPlace> {
protected:
    InstallerElsewhere() : AgentFixture(GetParam().path) {}

    const std::string mInstall = mRoot + "/install";
};

}  // namespace

TEST_P(InstallerElsewhere, FindsAPackageSound) {
    EXPECT_EQ(OrvInstaller::checkPackage(mPackage, "1.11.0.8", 64).errorCode(), 0);
    EXPECT_EQ(OrvInstaller::checkPackage(mRoot + "/store/none.exe", "1.11.0.8", 64).errorCode(), -416);
}

TEST_P(InstallerElsewhere, CopiesTheInstallerAndLaunchesIt) {
    auto agent = make();
    EXPECT_EQ(agent.start(mInstall, true, {}).errorCode(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mPrograms.starts()[0].program, installerDir("Client") + "\\orvInstaller.exe");
    EXPECT_TRUE(mPrograms.starts()[0].parameters.starts_with("\"" + mPackage + "\" \"" + mInstall + "\" \"2\" "));
    const std::string copy = plain(installerDir("Client"));
    EXPECT_EQ(readText(copy + "/orvInstaller.exe"), readText(mProgramDir + "/orvInstaller.exe"));
    EXPECT_FALSE(readText(copy + "/host.dll"));
    EXPECT_EQ(readText(copy + "/core.dll"), readText(mProgramDir + "/core.dll"));
}

TEST_P(InstallerElsewhere, RemovesAPackageThatIsNotSound) {
    writeText(mPackage, *readText(mPackage) + "x");
    EXPECT_EQ(make().start(mInstall, true, {}).errorCode(), -302);
    EXPECT_FALSE(readText(mPackage));
    EXPECT_TRUE(mPrograms.starts().empty());
}

TEST_P(InstallerElsewhere, UnpacksWithABackupThatCanBeRestored) {
    writeText(mInstall + "/OrvClient.exe", "old");
    const auto backup = std::make_shared<OrvBackup>(mRoot + "/saved");
    const auto installer = std::make_shared<OrvInstaller>(backup, mPackage, VersionType_Client);
    EXPECT_EQ(installer->start(mInstall, true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(installer->getError().errorCode(), 0);
    EXPECT_NE(readText(mInstall + "/OrvClient.exe").value_or("old"), "old");
    EXPECT_EQ(readText(mRoot + "/saved/OrvClient.exe"), "old");
    EXPECT_EQ(backup->restore("OrvClient.exe", mInstall).errorCode(), 0);
    EXPECT_EQ(readText(mInstall + "/OrvClient.exe"), "old");
}

INSTANTIATE_TEST_SUITE_P(Places, InstallerElsewhere, testing::ValuesIn(support::uncommonPlaces()),
                         support::nameOfPlace);
