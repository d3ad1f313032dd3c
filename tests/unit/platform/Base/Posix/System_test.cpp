#include "Public/Base/System.h"

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "TempDir.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class SystemOnPosix : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

TEST_F(SystemOnPosix, HasAWindowsDirectoryOfItsOwn) {
    EXPECT_EQ(System::getSystemDirectory(), "/var/lib/orv/Windows/system32");
}

TEST_F(SystemOnPosix, IsLaterThanVersionsYetToCome) { EXPECT_TRUE(System::isVersionOrLater(999, 999, 999)); }

TEST_F(SystemOnPosix, CopyPrefersTheExactName) {
    writeText(at("LIB"), "upper");
    writeText(at("lib"), "lower");
    EXPECT_TRUE(System::copyFile(at("lib"), at("out")));
    EXPECT_EQ(readText(at("out")), "lower");
}

TEST_F(SystemOnPosix, CopyToAFullDiskFailsWithTheSystemsError) {
    writeText(at("a"), "x");
    EXPECT_FALSE(System::copyFile(at("a"), "/dev/full"));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOSPC));
}

}  // namespace
