// Files that take another one's place in one step.
#include <sys/stat.h>

#include <cerrno>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"
#include "TempDir.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class ReplacedFile : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    static std::string textOf(const MappedFile& file) {
        return {reinterpret_cast<const char*>(file.data()), file.size()};
    }
    support::TempDir mDir;
};

TEST_F(ReplacedFile, SaveKeepsItsPermissions) {
    writeText(at("a"), "old");
    ::chmod(at("a").c_str(), 0640);
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(modeOf(at("a")), 0640U);
}

TEST_F(ReplacedFile, SaveLeavesTheOldOneToItsReaders) {
    writeText(at("a"), "old content");
    MappedFile reader;
    ASSERT_EQ(reader.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_FALSE(reader.isReplacedAt(at("a")));
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("n")));
    EXPECT_EQ(textOf(reader), "old content");
    EXPECT_TRUE(reader.isReplacedAt(at("a")));
}

TEST_F(ReplacedFile, CopyLeavesTheOldOneToItsReaders) {
    writeText(at("a"), "n");
    writeText(at("b"), "old content");
    MappedFile reader;
    ASSERT_EQ(reader.open(at("b")), MappedFile::Result::Mapped);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(textOf(reader), "old content");
    EXPECT_EQ(readText(at("b")), "n");
}

TEST_F(ReplacedFile, CopyFollowsALinkToItsFile) {
    writeText(at("a"), "new");
    writeText(at("d/real"), "old");
    std::filesystem::create_symlink("d/real", at("link"));
    EXPECT_TRUE(File::copy(at("a"), at("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
    EXPECT_EQ(readText(at("d/real")), "new");
    EXPECT_EQ(support::filesBelow(at("d")), std::set<std::string>{"real"});
}

TEST_F(ReplacedFile, SaveMakesTheFileThatALinkNames) {
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_TRUE(File::save(at("link"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("none")), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
}

TEST_F(ReplacedFile, MayHaveTheLongestName) {
    const std::string name = at(std::string(255, 'n'));
    EXPECT_TRUE(File::save(name, SharedBuffer("one")));
    EXPECT_TRUE(File::copy(name, at("b")));
    EXPECT_TRUE(File::save(at("b"), SharedBuffer("two")));
    EXPECT_TRUE(File::copy(at("b"), name));
    EXPECT_EQ(readText(name), "two");
}

TEST_F(ReplacedFile, MayBeSavedByManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this, i] {
            for (int turn = 0; turn < 20; ++turn) {
                File::save(at("a"), SharedBuffer(std::string(1000, static_cast<char>('0' + i))));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    const std::string text = readText(at("a")).value_or("");
    EXPECT_EQ(text, std::string(1000, text.empty() ? '?' : text.front()));
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"a"});
}

TEST_F(ReplacedFile, NothingIsReplacedWhereNothingIsMapped) {
    writeText(at("a"), "x");
    const MappedFile none;
    EXPECT_FALSE(none.isReplacedAt(at("a")));
    MappedFile reader;
    ASSERT_EQ(reader.open(at("a")), MappedFile::Result::Mapped);
    std::filesystem::remove(at("a"));
    EXPECT_FALSE(reader.isReplacedAt(at("a")));
    EXPECT_FALSE(reader.isReplacedAt(""));
}

TEST_F(ReplacedFile, AbsenceIsToldFromWhatCannotBeLookedAt) {
    writeText(at("a"), "x");
    std::filesystem::create_symlink("loop", at("loop"));
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_FALSE(File::isAbsent(at("a")));
    EXPECT_FALSE(File::isAbsent(mDir.path()));
    EXPECT_TRUE(File::isAbsent(at("none")));
    EXPECT_TRUE(File::isAbsent(at("link")));
    EXPECT_TRUE(File::isAbsent(at("a/below")));
    EXPECT_TRUE(File::isAbsent(""));
    EXPECT_FALSE(File::isAbsent(at("loop")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ELOOP));
}

TEST_F(ReplacedFile, CutTakesAwayWhatLiesBehind) {
    writeText(at("a"), "0123456789");
    EXPECT_TRUE(File::cut(at("a"), 4));
    EXPECT_EQ(readText(at("a")), "0123");
    EXPECT_TRUE(File::cut(at("a"), 100));
    EXPECT_EQ(readText(at("a")), "0123");
    EXPECT_FALSE(File::cut(at("none"), 0));
    EXPECT_FALSE(File::cut("", 0));
}

}  // namespace
