// The checks of a run find what they are there to find.
#include "Invariants.h"

#include <gtest/gtest.h>

#include "Book.h"
#include "FileText.h"
#include "PackageStore.h"
#include "Packages.h"
#include "Received.h"
#include "TWProtocol/TWProtoDeviceCmd.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "TempDir.h"

namespace {

using namespace cluster;
using support::writeText;

class WrongPackages : public testing::Test {
protected:
    std::string store() const { return mStores.path() + "/server0"; }
    std::string pathOf(const std::string& version) const { return store() + "/" + placeOf(version); }
    Violations found() const { return findWrongPackages(mStores.path()); }

    const Package& mPackage = packages().front();
    support::TempDir mStores;
};

class Changes : public testing::Test {
protected:
    Violations since(const Fingerprint& before) const { return findChanges(before, fingerprintOf(mDir.path())); }

    support::TempDir mDir;
};

}  // namespace

TEST_F(WrongPackages, AreNotThoseThatWereMade) {
    for (const auto& package : packages()) putPackage(package, store());
    putPackage(mPackage, store(), "Manual");
    EXPECT_EQ(found(), Violations{});
}

TEST_F(WrongPackages, AreThoseWithOneByteChanged) {
    putPackage(mPackage, store());
    support::flipMiddleByte(pathOf(mPackage.version));
    ASSERT_EQ(found().size(), 1U);
    EXPECT_NE(found()[0].find("is another"), std::string::npos) << found()[0];
}

TEST_F(WrongPackages, AreNotThoseThatTheStoreRefusesItself) {
    putPackage(mPackage, store());
    support::cutBytes(pathOf(mPackage.version), 1);
    writeText(pathOf("9.9.9.9"), "no package at all");
    EXPECT_EQ(found(), Violations{});
}

TEST_F(WrongPackages, AreThoseUnderTheNameOfAnotherVersion) {
    writeText(pathOf("9.9.9.9"), mPackage.bytes);
    ASSERT_EQ(found().size(), 1U);
    EXPECT_NE(found()[0].find("another version"), std::string::npos) << found()[0];
}

TEST_F(WrongPackages, AreThoseThatNobodyMade) {
    support::PackageSpec spec;
    spec.version = "7.7.7.7";
    support::makePackage(spec, pathOf("7.7.7.7"));
    ASSERT_EQ(found().size(), 1U);
    EXPECT_NE(found()[0].find("nobody made"), std::string::npos) << found()[0];
}

TEST_F(WrongPackages, AreFilesThatLieElsewhereInAStore) {
    writeText(store() + "/notes.txt", "x");
    writeText(store() + "/Online/Windows x64 All/1.0.0.0/2.0.0.0.exe", "x");
    EXPECT_EQ(found().size(), 2U);
}

TEST_F(Changes, AreNoneWhereNothingChanged) {
    writeText(mDir.path() + "/a/b", "x");
    const auto before = fingerprintOf(mDir.path());
    EXPECT_EQ(before.size(), 2U);
    EXPECT_EQ(since(before), Violations{});
}

TEST_F(Changes, AreFilesThatWereAddedChangedAndRemoved) {
    writeText(mDir.path() + "/changed", "x");
    writeText(mDir.path() + "/removed", "x");
    const auto before = fingerprintOf(mDir.path());
    writeText(mDir.path() + "/changed", "y");
    writeText(mDir.path() + "/added", "x");
    std::filesystem::remove(mDir.path() + "/removed");
    EXPECT_EQ(since(before),
              (Violations{"added was written outside of the stores", "changed was changed", "removed was removed"}));
}

TEST_F(Changes, BelowWhatMayChangeAreLeftOut) {
    writeText(mDir.path() + "/stores/a", "x");
    const auto before = fingerprintOf(mDir.path(), {"stores"});
    writeText(mDir.path() + "/stores/b", "x");
    EXPECT_EQ(findChanges(before, fingerprintOf(mDir.path(), {"stores"})), Violations{});
    writeText(mDir.path() + "/storesbeside", "x");
    EXPECT_EQ(findChanges(before, fingerprintOf(mDir.path(), {"stores"})).size(), 1U);
}

TEST(Leaks, AreAFileLeftOpen) {
    const support::TempDir dir;
    writeText(dir.path() + "/a", "x");
    const auto before = holdings();
    EXPECT_EQ(findLeaks(before), Violations{});
    std::ifstream file(dir.path() + "/a");
    EXPECT_EQ(findLeaks(before), Violations{"1 files are left open"});
    file.close();
    EXPECT_EQ(findLeaks(before), Violations{});
}

TEST(Leaks, AreRecordsThatAreKept) {
    const auto before = holdings();
    auto packet = std::make_unique<Tarnwick::Protocol::TWProtoUpgradePkt>();
    auto notify = std::make_unique<Tarnwick::Protocol::TWProtoUpgradeNotify>();
    auto chunk = std::make_unique<Tarnwick::Protocol::TWProtoUpgradeInfo>();
    EXPECT_EQ(findLeaks(before), Violations{"3 records are left in memory"});
    packet.reset();
    notify.reset();
    chunk.reset();
    EXPECT_EQ(findLeaks(before), Violations{});
}

TEST(Leaks, AreAThreadThatStillRuns) {
    std::thread([] {}).join();  // with a process's first one a sanitizer begins one of its own
    const auto before = holdings();
    support::Gate gate;
    std::thread thread([&gate] { gate.pass(); });
    EXPECT_EQ(findLeaks(before, std::chrono::milliseconds(1)), Violations{"1 threads are left"});
    gate.open();
    thread.join();
    EXPECT_EQ(findLeaks(before), Violations{});
}
