// Files that are protected, or in use, where something is to be copied or unpacked.
#include "../DependencyCopyFixture.h"
#include "../OrvInstallerFixture.h"
#include "FileKinds.h"
#include "OrvBackup.h"

using namespace Tarnwick::OrvUpdate;
using support::readText;
using support::writeText;

TEST_F(DependencyCopy, PassesOverAFileOfTheTargetThatIsInUse) {
    module("app.exe", {"a.dll", "b.dll"});
    module("a.dll");
    module("b.dll");
    writeText(target("a.dll"), "in use");
    {
        const support::WithheldFile inUse(target("a.dll"));
        EXPECT_TRUE(copy());
    }
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll"}));
    EXPECT_EQ(readText(target("b.dll")), image("b.dll"));
}

TEST_F(DependencyCopy, OverwritesAHiddenFileThatIsThere) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    writeText(target("a.dll"), "old");
    support::hide(target("a.dll"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("a.dll")), image("a.dll"));
}

TEST_F(OrvInstallerTest, AFileInUseInThePlaceOfAnItemStays) {
    writeText(mInstall + "/c.exe", "in use");
    {
        const support::WithheldFile inUse(mInstall + "/c.exe");
        unpack(tree(), VersionType_Client);
    }
    EXPECT_EQ(mInstaller->getError().errorCode(), -602);
    EXPECT_EQ(readText(mInstall + "/c.exe"), "in use");
}
