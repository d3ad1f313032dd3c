// Files as a whole: loaded, saved, measured and removed; and where the program lies.
#include "Public/Base/File.h"

#include <sys/stat.h>
#include <unistd.h>

#include "FileFixture.h"
#include "Public/Base/ErrorInfo.h"
#include "WithoutRights.h"

using namespace Public::Base;
using support::FileTest;
using support::MemoryFile;
using support::readText;
using support::writeText;

namespace {

TEST_F(FileTest, SaveReplacesTheWholeFile) {
    writeText(at("a"), "a longer text");
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("a")), "new");
}

TEST_F(FileTest, SaveMakesNoDirectory) {
    EXPECT_FALSE(File::save(at("none/a"), SharedBuffer("x")));
    EXPECT_FALSE(File::access(at("none"), AccessMode_Exists));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(FileTest, SaveToAFullDiskFails) { EXPECT_FALSE(File::save("/dev/full", SharedBuffer("x"))); }

TEST_F(FileTest, LoadGivesTheWholeFile) {
    const std::string big(300000, 'x');
    writeText(at("a"), big);
    EXPECT_EQ(File::load(at("a")).toStdString(), big);
    EXPECT_TRUE(File::load(at("none")).empty());
    EXPECT_TRUE(File::load(mDir.path()).empty());
}

TEST_F(FileTest, LengthIsZeroForWhatIsNoFile) {
    writeText(at("a"), "12345");
    EXPECT_EQ(File::getLength(at("a")), 5U);
    EXPECT_EQ(File::getLength(at("none")), 0U);
    EXPECT_EQ(File::getLength(mDir.path()), 0U);
    EXPECT_EQ(File::getLength(""), 0U);
}

TEST_F(FileTest, AccessTestsForExistence) {
    writeText(at("a"), "");
    EXPECT_TRUE(File::access(at("a"), AccessMode_Exists));
    EXPECT_TRUE(File::access(mDir.path(), AccessMode_Exists));
    EXPECT_FALSE(File::access(at("none"), AccessMode_Exists));
    EXPECT_FALSE(File::access("", AccessMode_Exists));
    EXPECT_FALSE(File::access(at("a/below"), AccessMode_Exists));
}

TEST_F(FileTest, RemoveTakesFilesOnly) {
    writeText(at("a"), "");
    EXPECT_TRUE(File::remove(at("a")));
    EXPECT_FALSE(File::remove(at("a")));
    std::filesystem::create_directory(at("d"));
    EXPECT_FALSE(File::remove(at("d")));
    EXPECT_TRUE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(FileTest, NonAsciiNamesWork) {
    const std::string name = at("\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA4.txt");
    EXPECT_TRUE(File::save(name, SharedBuffer("x")));
    EXPECT_EQ(File::load(name).toStdString(), "x");
}

TEST_F(FileTest, NameThatIsTooLongFails) {
    EXPECT_FALSE(File::save(at(std::string(300, 'n')), SharedBuffer("x")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENAMETOOLONG));
}

TEST_F(FileTest, ProgramDirectoryIsTheOneOfThisProgram) {
    EXPECT_EQ(File::getExcutableFileFullPath(), std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
}

TEST_F(FileTest, ProgramDirectoryCanBeOverriddenAndRestored) {
    const std::string own = File::getExcutableFileFullPath();
    File::setExcutableFileFullPath("/somewhere else");
    EXPECT_EQ(File::getExcutableFileFullPath(), "/somewhere else");
    File::setExcutableFileFullPath("");
    EXPECT_EQ(File::getExcutableFileFullPath(), own);
}

TEST_F(FileTest, SuccessDoesNotClearTheLastError) {
    EXPECT_FALSE(File::remove(at("none")));
    writeText(at("a"), "");
    EXPECT_TRUE(File::access(at("a"), AccessMode_Exists));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(FileTest, LoadOfMoreThanMemoryHoldsIsEmptyAndThrowsNothing) {
    const MemoryFile file;
    ASSERT_EQ(::ftruncate(file.fd(), INT64_MAX), 0);
    EXPECT_TRUE(File::load(file.path()).empty());
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), ErrorCode_Failed);
}

TEST_F(FileTest, LoadOfWhatFaultsIsEmptyAndTellsWhy) {
    EXPECT_TRUE(File::load("/proc/self/mem").empty());
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EIO));
}

TEST_F(FileTest, LoadReadsFilesThatTellNoLength) {
    EXPECT_EQ(File::getLength("/proc/self/status"), 0U);
    EXPECT_EQ(File::load("/proc/self/status").toStdString().rfind("Name:", 0), 0U);
}

TEST_F(FileTest, LoadKeepsZeroBytes) {
    const std::string content("a\0b\0", 4);
    writeText(at("a"), content);
    EXPECT_EQ(File::load(at("a")).toStdString(), content);
}

TEST_F(FileTest, SaveKeepsZeroBytesAndEmptiness) {
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("\0\xFF", 2)));
    EXPECT_EQ(readText(at("a")), std::string("\0\xFF", 2));
    EXPECT_TRUE(File::save(at("a"), SharedBuffer()));
    EXPECT_EQ(readText(at("a")), "");
}

TEST_F(FileTest, SaveFollowsALinkToItsFile) {
    writeText(at("real"), "old");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_TRUE(File::save(at("link"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("real")), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
}

TEST_F(FileTest, SaveIntoAnothersReadOnlyFileFailsAndKeepsIt) {
    writeText(at("a"), "kept");
    ::chmod(at("a").c_str(), 0444);
    {
        const support::WithoutRights nobody;
        EXPECT_FALSE(File::save(at("a"), SharedBuffer("new")));
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    }
    EXPECT_EQ(readText(at("a")), "kept");
}

TEST_F(FileTest, SaveOfALargeBufferIsWhole) {
    const std::string big(5 << 20, 'x');
    EXPECT_TRUE(File::save(at("a"), SharedBuffer(big)));
    EXPECT_EQ(File::getLength(at("a")), big.size());
}

TEST_F(FileTest, LongestNameWorks) {
    const std::string name = at(std::string(255, 'n'));
    EXPECT_TRUE(File::save(name, SharedBuffer("x")));
    EXPECT_EQ(File::load(name).toStdString(), "x");
    EXPECT_TRUE(File::remove(name));
}

TEST_F(FileTest, RemoveOfALinkKeepsItsFile) {
    writeText(at("real"), "kept");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_TRUE(File::remove(at("link")));
    EXPECT_EQ(readText(at("real")), "kept");
}

TEST_F(FileTest, RemoveWithoutTheRightFailsAndKeepsTheFile) {
    writeText(at("a"), "kept");
    ::chmod(mDir.path().c_str(), 0555);
    {
        const support::WithoutRights nobody;
        EXPECT_FALSE(File::remove(at("a")));
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    }
    ::chmod(mDir.path().c_str(), 0755);
    EXPECT_EQ(readText(at("a")), "kept");
}

TEST_F(FileTest, LengthFollowsALink) {
    writeText(at("real"), "12345");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_EQ(File::getLength(at("link")), 5U);
}

TEST_F(FileTest, AccessOfALinkThatLeadsNowhereFails) {
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_FALSE(File::access(at("link"), AccessMode_Exists));
}

TEST_F(FileTest, ProgramDirectoryMayBeSetWhileOthersAsk) {
    const std::string own = File::getExcutableFileFullPath();
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::atomic<int> asked{0};
    std::thread asker([&] {
        while (!stop) {
            const std::string told = File::getExcutableFileFullPath();
            if (told != own && told != "/a directory with a long name" && told != "/b") ++wrong;
            ++asked;
        }
    });
    for (int i = 0; i < 100 || asked < 100; ++i) {
        File::setExcutableFileFullPath("/a directory with a long name");
        File::setExcutableFileFullPath("/b");
        File::setExcutableFileFullPath("");
    }
    stop = true;
    asker.join();
    EXPECT_EQ(wrong, 0);
}

struct LoadCase {
    const char* name;
    size_t size;
};

void PrintTo(const LoadCase& load, std::ostream* out) { *out << load.size; }

class FileLoadSizes : public FileTest, public testing::WithParamInterface<LoadCase> {};

TEST_P(FileLoadSizes, AreGivenWhole) {
    std::string content(GetParam().size, '\0');
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7 + i / 251);
    writeText(at("a"), content);
    EXPECT_EQ(File::load(at("a")).toStdString(), content);
}

INSTANTIATE_TEST_SUITE_P(Sizes, FileLoadSizes,
                         testing::Values(LoadCase{"Empty", 0}, LoadCase{"OneByte", 1}, LoadCase{"BelowAPiece", 65535},
                                         LoadCase{"APiece", 65536}, LoadCase{"AboveAPiece", 65537},
                                         LoadCase{"TwoPieces", 131072}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
