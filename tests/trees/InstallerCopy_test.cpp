// The installer program itself, copied as an installation copies it.
#include "FileText.h"
#include "OrvInstaller/DependencyCopy.h"
#include "Public/Base/File.h"
#include "TreeFixture.h"

using Tarnwick::OrvUpdate::copyDependens;
using Names = std::set<std::string>;

namespace {

class InstallerCopy : public testing::Test {
protected:
    InstallerCopy() {
        Public::Base::File::makeDirectory(mTarget);
        const std::string installer = ORV_INSTALLER;
        EXPECT_TRUE(copyDependens(installer, installer.substr(0, installer.rfind('/')), mTarget));
    }

    support::TempDir mDir;
    const std::string mTarget = mDir.path() + "/安装程序";
};

}  // namespace

TEST_F(InstallerCopy, HoldsTheProgramAndTheEngineAlone) {
    EXPECT_EQ(support::filesBelow(mTarget), (Names{"OrvUpdate.dll", "orvInstaller.exe"}));
}

TEST_F(InstallerCopy, RunsByItselfAndTellsHowItIsUsed) {
    std::string output;
    const support::TreeRun run = support::runTree(mTarget + "/orvInstaller.exe", {}, &output);
    EXPECT_EQ(run.code, 2U);
    EXPECT_NE(output.find("usage: orvinstaller PACKAGE INSTALL_DIR ROLE"), std::string::npos) << output;
}

TEST_F(InstallerCopy, DoesNotStartWithoutTheEngine) {
    ASSERT_TRUE(Public::Base::File::remove(mTarget + "/OrvUpdate.dll"));
    EXPECT_EQ(support::runTree(mTarget + "/orvInstaller.exe").code, support::TreeRun::kLibraryNotFound);
}
