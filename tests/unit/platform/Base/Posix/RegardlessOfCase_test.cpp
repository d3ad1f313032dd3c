// Names that are found without regard to case where the file system tells cases apart.
#include "Base/Posix/NativePath.h"
#include "FileText.h"
#include "TempDir.h"

using Public::Base::findRegardlessOfCase;
using support::writeText;

namespace {

class RegardlessOfCase : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

TEST_F(RegardlessOfCase, FindsTheOneOfAnotherCase) {
    writeText(at("LibX.DLL"), "");
    EXPECT_EQ(findRegardlessOfCase(at("libx.dll")), at("LibX.DLL"));
}

TEST_F(RegardlessOfCase, PrefersTheExactName) {
    writeText(at("LIB"), "");
    writeText(at("lib"), "");
    EXPECT_EQ(findRegardlessOfCase(at("lib")), at("lib"));
}

TEST_F(RegardlessOfCase, TakesTheFirstByNameOfSeveral) {
    for (const char* name : {"lIB", "LIb", "Lib"}) writeText(at(name), "");
    EXPECT_EQ(findRegardlessOfCase(at("lib")), at("LIb"));
}

TEST_F(RegardlessOfCase, LeavesAPathAloneThatIsNotThereInAnyCase) {
    writeText(at("other"), "");
    EXPECT_EQ(findRegardlessOfCase(at("lib")), at("lib"));
    EXPECT_EQ(findRegardlessOfCase(at("none/lib")), at("none/lib"));
}

TEST_F(RegardlessOfCase, TakesDirectoriesAsTheyAreGiven) {
    writeText(at("Sub/lib"), "");
    EXPECT_EQ(findRegardlessOfCase(at("sub/lib")), at("sub/lib"));
}

TEST_F(RegardlessOfCase, LooksInTheCurrentDirectoryForABareName) {
    EXPECT_EQ(findRegardlessOfCase("no such name anywhere"), "no such name anywhere");
}

}  // namespace
