// The launched installer: what fails on the way is undone, and what is undone was not hurt.
#include "FaultTest.h"
#include "FileText.h"
#include "PackageMaker.h"
#include "Upgrade.h"

using namespace faults;

namespace {

/// A role of three files, one of which is new, over an older installation.
class Upgraded : public Attempt {
public:
    void prepare() override {
        support::PackageSpec spec;
        spec.files = {{"Orv Server\\server.exe", std::string(3000, 's')},
                      {"Orv Server\\lib\\core.dll", "new core"},
                      {"Orv Server\\lib\\added.dll", "added"}};
        mOrder.package = support::makePackage(spec, at("package.exe"));
        mOrder.installDir = at("installed");
        mOrder.role = 3;
        mOrder.backupDir = at("backup");
        for (const auto& [name, content] : kBefore) support::writeText(at("installed/" + name), content);
    }
    ErrorInfo run() override {
        mOutcome = upgrade(mOrder);
        const bool installed = mOutcome.result == UpgradeOutcome::Result::Installed;
        EXPECT_EQ(installed, !mOutcome.error);
        return mOutcome.error;
    }
    void check(const ErrorInfo&) override {
        // It also fears damage where it cannot tell whether an upgrade is unfinished. On a disk that stays full a
        // restore may fail too; the next attempt ends it.
        const bool mayBeMixed = mOutcome.result == UpgradeOutcome::Result::Damaged && mMayStayDamaged;
        if (mOutcome.result != UpgradeOutcome::Result::Installed && !mayBeMixed) {
            EXPECT_TRUE(equal(treeOf(at("installed")), kBefore));
        }
    }
    void checkReached() override { EXPECT_TRUE(equal(treeOf(at("installed")), kAfter)); }

    bool mMayStayDamaged = false;

private:
    const Tree kBefore = {{"server.exe", "old server"}, {"lib/core.dll", std::string(2000, 'c')}, {"own.cfg", "mine"}};
    const Tree kAfter = {{"server.exe", std::string(3000, 's')},
                         {"lib/core.dll", "new core"},
                         {"lib/added.dll", "added"},
                         {"own.cfg", "mine"}};
    UpgradeOrder mOrder;
    UpgradeOutcome mOutcome;
};

class Upgrading : public FaultTest {};

}  // namespace

TEST_P(Upgrading, EndsWithTheNewFilesOrTheOldOnes) {
    exhaust([] {
        auto one = std::make_unique<Upgraded>();
        one->mMayStayDamaged = GetParam() == Kind::DiskStaysFull;
        return one;
    });
}
INSTANTIATE_TEST_SUITE_P(Faults, Upgrading, testing::ValuesIn(kWriting), titleOf);
