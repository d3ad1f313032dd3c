// Items whose places are links, and files with permissions.
#include "../OrvInstallerFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::readText;
using support::writeText;

TEST_F(OrvInstallerTest, ALinkInThePlaceOfAnItemIsReplaced) {
    writeText(mRoot + "/outside.txt", "kept");
    std::filesystem::create_directories(mInstall);
    std::filesystem::create_symlink(mRoot + "/outside.txt", mInstall + "/c.exe");
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(mInstaller->getError().errorCode(), 0);
    EXPECT_EQ(readText(mRoot + "/outside.txt"), "kept");
    EXPECT_EQ(readText(mInstall + "/c.exe"), "content of Orv Client\\c.exe");
}

TEST_F(OrvInstallerTest, KeepsThePermissionsOfAReplacedFile) {
    writeText(mInstall + "/c.exe", "old");
    std::filesystem::permissions(mInstall + "/c.exe", std::filesystem::perms(0750));
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(std::filesystem::status(mInstall + "/c.exe").permissions(), std::filesystem::perms(0750));
}
