// Packages and files that are read-only, or that somebody else has open.
#include "AgentFixture.h"
#include "FileKinds.h"
#include "OrvBackup.h"
#include "OrvInstallerFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::readText;
using support::writeText;

namespace {

class HeldPackage : public AgentFixture {
protected:
    int check() const { return OrvInstaller::checkPackage(mPackage, "1.11.0.8", 64).errorCode(); }
    void damage() const { writeText(mPackage, *readText(mPackage) + "x"); }
};

}  // namespace

TEST_F(HeldPackage, ThatIsReadOnlyIsTestedAndInstalled) {
    support::makeReadOnly(mPackage);
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_TRUE(readText(mPackage));
}

TEST_F(HeldPackage, ThatSomebodyReadsIsTested) {
    const support::KeptFile kept(mPackage);
    EXPECT_EQ(check(), 0);
}

TEST_F(HeldPackage, ThatIsReadOnlyAndUnsoundIsRemoved) {
    damage();
    support::makeReadOnly(mPackage);
    EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), -302);
    EXPECT_FALSE(readText(mPackage));
}

TEST_F(HeldPackage, ThatIsUnsoundAndCannotBeRemovedStaysAndIsNotInstalled) {
    damage();
    {
        const support::KeptFile kept(mPackage);
        EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), -302);
        EXPECT_TRUE(mPrograms.starts().empty());
        EXPECT_TRUE(readText(mPackage));
    }
    EXPECT_EQ(check(), -302);
}

TEST_F(HeldPackage, ThatCannotBeOpenedIsNotInstalledUntilItCan) {
    const std::string content = *readText(mPackage);
    {
        const support::WithheldFile withheld(mPackage);
        EXPECT_EQ(check(), -302);
    }
    EXPECT_EQ(readText(mPackage), content);
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(make().start("C:\\Orv", true, {}).errorCode(), 0);
    EXPECT_EQ(mPrograms.starts().size(), 1U);
}

TEST_F(HeldPackage, CannotBeUnpackedOverAFileThatCannotBeSaved) {
    const std::string install = mRoot + "/install";
    writeText(install + "/OrvClient.exe", "in use");
    const auto installer =
        std::make_shared<OrvInstaller>(std::make_shared<OrvBackup>(mRoot + "/saved"), mPackage, VersionType_Client);
    {
        const support::WithheldFile withheld(install + "/OrvClient.exe");
        installer->start(install, true, {});
        waitFor(installer);
    }
    EXPECT_LT(installer->getError().errorCode(), -10000);  // the system's own refusal of the copy
    EXPECT_EQ(readText(install + "/OrvClient.exe"), "in use");
    EXPECT_TRUE(support::filesBelow(mRoot + "/saved").empty());
}
