#include "Public/Base/System.h"

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/StringEx.h"
#include "TempDir.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class SystemTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    static bool exists(const std::string& path) { return std::filesystem::exists(path); }
    support::TempDir mDir;
};

TEST_F(SystemTest, SystemDirectoryHasADefaultAndCanBeSet) {
    const std::string own = System::getSystemDirectory();
    EXPECT_NE(StringEx::indexOfByCase(own, "Windows"), std::string::npos) << own;
    System::setSystemDirectory("/x/Windows/system32");
    EXPECT_EQ(System::getSystemDirectory(), "/x/Windows/system32");
    System::setSystemDirectory("");
    EXPECT_EQ(System::getSystemDirectory(), own);
}

TEST_F(SystemTest, IsLaterThanAnyVersion) { EXPECT_TRUE(System::isVersionOrLater(6, 0, 0)); }

TEST_F(SystemTest, CopiesAFileOfAnotherCase) {
    writeText(at("LibX.DLL"), "x");
    EXPECT_TRUE(System::copyFile(at("libx.dll"), at("out")));
    EXPECT_EQ(readText(at("out")), "x");
}

TEST_F(SystemTest, CopyOfAMissingFileFails) {
    EXPECT_FALSE(System::copyFile(at("none"), at("out")));
    EXPECT_FALSE(exists(at("out")));
}

TEST_F(SystemTest, RecorderTakesThePlaceOfBothStarts) {
    std::vector<ProgramStart> starts;
    System::setProgramStarter([&](const ProgramStart& start) {
        starts.push_back(start);
        return starts.size() == 1;
    });
    EXPECT_TRUE(System::startElevated({"a", "\"1\"", true, true}));
    EXPECT_FALSE(System::startPlain({"b", "", false, false}));
    System::setProgramStarter({});
    ASSERT_EQ(starts.size(), 2U);
    EXPECT_EQ(starts[0].parameters, "\"1\"");
    EXPECT_FALSE(starts[1].show);
    EXPECT_FALSE(System::startElevated({at("none"), "", true, true}));
}

TEST_F(SystemTest, CopyOverwritesTheTarget) {
    writeText(at("a"), "new");
    writeText(at("b"), "something old");
    EXPECT_TRUE(System::copyFile(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "new");
}

TEST_F(SystemTest, CopyOfAFileOntoItselfInAnotherCaseIsRefused) {
    writeText(at("LIB"), "kept");
    EXPECT_FALSE(System::copyFile(at("lib"), at("LIB")));
    EXPECT_EQ(readText(at("LIB")), "kept");
}

TEST_F(SystemTest, CopyKnowsNoLimitOfLength) {
    const std::string part(100, 'p'), far = at(part + "/" + part + "/" + part);
    ASSERT_TRUE(File::makeDirectory(far));
    writeText(at("a"), "kept");
    EXPECT_TRUE(System::copyFile(at("a"), far + "/b"));
    EXPECT_TRUE(System::copyFile(far + "/b", at("c")));
    EXPECT_EQ(readText(at("c")), "kept");
}

TEST_F(SystemTest, CopyRefusesEmptyPathsAndZeroBytes) {
    writeText(at("a"), "kept");
    EXPECT_FALSE(System::copyFile("", at("b")));
    EXPECT_FALSE(System::copyFile(at("a"), ""));
    EXPECT_FALSE(System::copyFile(at("a"), at("b") + std::string("\0c", 2)));
    EXPECT_FALSE(exists(at("b")));
}

TEST_F(SystemTest, SystemDirectoryMayBeSetWhileOthersAsk) {
    const std::string own = System::getSystemDirectory();
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::atomic<int> asked{0};
    std::thread asker([&] {
        while (!stop) {
            const std::string told = System::getSystemDirectory();
            if (told != own && told != "/a rather long way/Windows/system32") ++wrong;
            ++asked;
        }
    });
    for (int i = 0; i < 100 || asked < 100; ++i) {
        System::setSystemDirectory("/a rather long way/Windows/system32");
        System::setSystemDirectory("");
    }
    stop = true;
    asker.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(SystemTest, StarterMayBeReplacedWhileProgramsStart) {
    std::atomic<bool> stop{false};
    std::atomic<int> started{0};
    std::atomic<int> refused{0};
    const auto starter = [&](const ProgramStart&) {
        ++started;
        return true;
    };
    System::setProgramStarter(starter);
    std::thread caller([&] {
        while (!stop) {
            if (!System::startPlain({at("none"), "", true, false})) ++refused;
        }
    });
    for (int i = 0; i < 100 || started < 100; ++i) System::setProgramStarter(starter);
    stop = true;
    caller.join();
    System::setProgramStarter({});
    EXPECT_EQ(refused, 0);
    EXPECT_GE(started, 100);
}

}  // namespace
