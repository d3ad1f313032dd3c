// Files as a whole: loaded, saved, measured and removed; and where the program lies.
#include "FileFixture.h"
#include "FileKinds.h"
#include "FileSizeLimit.h"
#include "OtherProcess.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(FileTest, SaveReplacesTheWholeFile) {
    writeText(at("a"), "a longer text");
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("a")), "new");
}

TEST_F(FileTest, SaveMakesNoDirectory) {
    EXPECT_FALSE(File::save(at("none/a"), SharedBuffer("x")));
    EXPECT_FALSE(File::access(at("none"), AccessMode_Exists));
    EXPECT_EQ(lastError(), errorOf(SystemError::NotThere));
}

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
    EXPECT_EQ(lastError(), errorOf(SystemError::NameTooLong));
}

TEST_F(FileTest, ProgramDirectoryIsTheOneOfThisProgram) {
    EXPECT_EQ(File::getExcutableFileFullPath(), pathOf(ownProgram()).parent_path().string());
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
    EXPECT_EQ(lastError(), errorOf(SystemError::NotThere));
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

TEST_F(FileTest, SaveIntoAnothersReadOnlyFileFailsAndKeepsIt) {
    writeText(at("a"), "kept");
    {
        const ReadOnlyFile readOnly(at("a"));
        EXPECT_FALSE(File::save(at("a"), SharedBuffer("new")));
        EXPECT_EQ(lastError(), errorOf(SystemError::ReadOnly));
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

TEST_F(FileTest, RemoveWithoutTheRightFailsAndKeepsTheFile) {
    writeText(at("a"), "kept");
    {
        const KeptFile kept(at("a"));
        EXPECT_FALSE(File::remove(at("a")));
        EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    }
    EXPECT_EQ(readText(at("a")), "kept");
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

TEST_F(FileTest, SaveThatFindsNoRoomKeepsTheOldFileAndLeavesNothing) {
    writeText(at("a"), "old");
    {
        const FileSizeLimit full(3);
        EXPECT_FALSE(File::save(at("a"), SharedBuffer("longer")));
        EXPECT_EQ(lastError(), errorOf(SystemError::FileLimit));
        EXPECT_FALSE(File::save(at("b"), SharedBuffer("longer")));
    }
    EXPECT_EQ(readText(at("a")), "old");
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"a"});
}

TEST_F(FileTest, SavedFileIsSeenByAPlainListing) {
    ASSERT_TRUE(File::save(at("new"), SharedBuffer("1")));
    ASSERT_TRUE(File::save(at("new"), SharedBuffer("2")));
    FileListing listing(mDir.path());
    std::map<std::string, unsigned> attributes;
    for (ListedFile file; listing.next(file);) attributes[file.name] = file.attributes;
    EXPECT_EQ(attributes.at("new"), 0U);
}

TEST_F(FileTest, RemoveTakesAFileThatMayNotBeWritten) {
    writeText(at("a"), "");
    std::filesystem::permissions(at("a"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(File::remove(at("a")));
    EXPECT_TRUE(File::isAbsent(at("a")));
}

TEST_F(FileTest, RemovedOneMayBeMadeAnewWhileSomebodyReadsTheOld) {
    writeText(at("a"), "old");
    File reader(at("a"));
    ASSERT_TRUE(reader.open(OpenMode_Read));
    EXPECT_TRUE(File::remove(at("a")));
    char text[4] = {};
    EXPECT_EQ(reader.read(text, 3), 3U);
    EXPECT_STREQ(text, "old");
    reader.close();
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("a")), "new");
}

}  // namespace
