// Whether an unpacked file stays inside of the install directory where links lead elsewhere.
#include "../OutputFileFixture.h"

using namespace Tarnwick::OrvUpdate;
namespace fs = std::filesystem;

TEST_F(OutputFile, ALoopOfLinksLiesNowhere) {
    fs::create_directory_symlink("b", mInstall + "/a");
    fs::create_directory_symlink("a", mInstall + "/b");
    EXPECT_FALSE(liesInside(mInstall, "a\\x.txt"));
}

TEST_F(OutputFile, RemovesALinkAndNotWhatItLeadsTo) {
    support::writeText(mOutside + "/a.txt", "kept");
    fs::create_symlink(mOutside + "/a.txt", mInstall + "/a.txt");
    removeLink(mInstall + "\\a.txt");
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(mInstall + "/a.txt")));
    EXPECT_EQ(support::readText(mOutside + "/a.txt"), "kept");
}
