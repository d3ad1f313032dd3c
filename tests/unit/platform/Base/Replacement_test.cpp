// Files that take another one's place in one step.
#include "FileFixture.h"
#include "OtherProcess.h"

using namespace Public::Base;
using namespace support;

namespace {

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
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"a"});
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

TEST_F(ReplacedFile, CutTakesAwayWhatLiesBehind) {
    writeText(at("a"), "0123456789");
    EXPECT_TRUE(File::cut(at("a"), 4));
    EXPECT_EQ(readText(at("a")), "0123");
    EXPECT_TRUE(File::cut(at("a"), 100));
    EXPECT_EQ(readText(at("a")), "0123");
    EXPECT_FALSE(File::cut(at("none"), 0));
    EXPECT_FALSE(File::cut("", 0));
}

TEST_F(ReplacedFile, IsKeptByAReaderThatHasItOpen) {
    writeText(at("a"), "old content");
    File reader(at("a"));
    ASSERT_TRUE(reader.open(OpenMode_Read));
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    writeText(at("b"), "newer");
    EXPECT_TRUE(File::copy(at("b"), at("a")));
    char text[12] = {};
    EXPECT_EQ(reader.read(text, 11), 11U);
    EXPECT_STREQ(text, "old content");
    EXPECT_EQ(readText(at("a")), "newer");
    reader.close();
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"a", "b"}));
}

TEST_F(ReplacedFile, IsKeptByAnotherProcessThatHasItOpenOrMapped) {
    for (const auto deed :
         {OtherProcess::Deed::OpenToRead, OtherProcess::Deed::OpenToWrite, OtherProcess::Deed::MapFile}) {
        writeText(at("a"), "old content");
        const OtherProcess reader(deed, at("a"));
        ASSERT_TRUE(reader.did());
        EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
        EXPECT_EQ(readText(at("a")), "new");
    }
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"a"});
}

TEST_F(ReplacedFile, StaysOneThatIsMappedByManyReaders) {
    writeText(at("a"), "0");
    std::vector<std::unique_ptr<MappedFile>> readers;
    for (int i = 0; i < 5; ++i) {
        readers.push_back(std::make_unique<MappedFile>());
        ASSERT_EQ(readers.back()->open(at("a")), MappedFile::Result::Mapped);
        EXPECT_TRUE(File::save(at("a"), SharedBuffer(std::to_string(i + 1))));
    }
    for (int i = 0; i < 5; ++i) EXPECT_EQ(textOf(*readers[static_cast<size_t>(i)]), std::to_string(i));
    EXPECT_EQ(readText(at("a")), "5");
}

TEST_F(ReplacedFile, IsNeverSeenHalfWrittenOrMissing) {
    const std::string one(100000, '1'), other(100000, '2');
    ASSERT_TRUE(File::save(at("a"), SharedBuffer(one)));
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0}, seen{0};
    std::thread reader([&] {
        while (!stop) {
            const std::string text = File::load(at("a")).toStdString();
            wrong += text != one && text != other ? 1 : 0;
            ++seen;
        }
    });
    for (int turn = 0; turn < 20 || seen < 20; ++turn) File::save(at("a"), SharedBuffer(turn % 2 == 0 ? other : one));
    stop = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
