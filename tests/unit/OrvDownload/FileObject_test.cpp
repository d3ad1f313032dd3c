// A file with positioned access.
#include "FileObject.h"

#include <future>

#include "FileText.h"
#include "ManualClock.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;
using support::readText;

namespace {

class PositionedFile : public testing::Test {
protected:
    /// Opens the file for reading and writing, with that content.
    void openWith(const std::string& content) {
        support::writeText(mPath, content);
        ASSERT_TRUE(mFile.open(mPath, OpenMode_CreateKeep));
    }
    std::string readAt(uint32_t position, size_t length) {
        std::string bytes(length, '?');
        bytes.resize(mFile.readAt(position, bytes.data(), length));
        return bytes;
    }

    support::TempDir mDirectory;
    std::string mPath = mDirectory.path() + "/f.bin";
    FileObject mFile;
};

/// Its seek ends elsewhere.
class Astray : public FileObject {
public:
    int64_t seek(int64_t distance, SeekPosition position) override {
        mDistance = distance;
        mPosition = position;
        FileObject::seek(distance, position);
        return mReached;
    }
    size_t write(const void* data, size_t length) override {
        ++mAccesses;
        return FileObject::write(data, length);
    }
    size_t read(void* data, size_t length) override {
        ++mAccesses;
        return FileObject::read(data, length);
    }
    int64_t mReached = 0;
    int64_t mDistance = -1;
    SeekPosition mPosition = SeekPosition_End;
    int mAccesses = 0;
};

/// Its write waits.
class Slow : public FileObject {
public:
    size_t write(const void*, size_t length) override {
        mInside.set_value();
        mLeave.get_future().wait();
        return length;
    }
    std::promise<void> mInside;
    std::promise<void> mLeave;
};

}  // namespace

TEST_F(PositionedFile, IsClosedAtFirst) {
    EXPECT_FALSE(mFile.isOpen());
    EXPECT_FALSE(mFile.open(OpenMode_Read));  // its name is empty
}

TEST_F(PositionedFile, WritesAtAPosition) {
    openWith("0123456789");
    EXPECT_EQ(mFile.writeAt(4, "abc", 3), 3U);
    mFile.close();
    EXPECT_EQ(readText(mPath), "0123abc789");
}

TEST_F(PositionedFile, ReadsAtAPosition) {
    openWith("0123456789");
    EXPECT_EQ(readAt(3, 4), "3456");
    EXPECT_EQ(readAt(0, 2), "01");
}

TEST_F(PositionedFile, CountsFromTheBeginningWhereverTheFileStands) {
    openWith("0123456789");
    mFile.seek(7, SeekPosition_Begin);
    EXPECT_EQ(mFile.writeAt(1, "x", 1), 1U);
    EXPECT_EQ(readAt(5, 1), "5");
    EXPECT_EQ(mFile.getPosition(), 6);
}

TEST_F(PositionedFile, ReadsLessAtTheEnd) {
    openWith("0123456789");
    EXPECT_EQ(readAt(8, 10), "89");
    EXPECT_EQ(readAt(10, 10), "");
    EXPECT_EQ(readAt(5000, 10), "");
}

TEST_F(PositionedFile, WritesBehindTheEnd) {
    openWith("01");
    EXPECT_EQ(mFile.writeAt(4, "x", 1), 1U);
    mFile.close();
    EXPECT_EQ(readText(mPath), std::string("01\0\0x", 5));
}

TEST_F(PositionedFile, TakesNoBytesAtAll) {
    openWith("01");
    EXPECT_EQ(mFile.writeAt(0, "", 0), 0U);
    EXPECT_EQ(readAt(0, 0), "");
    EXPECT_EQ(readText(mPath), "01");
}

TEST_F(PositionedFile, ReachesTheLastPositionOf32Bits) {
    openWith("");
    EXPECT_EQ(mFile.writeAt(0xFFFFFFFF, "z", 1), 1U);
    EXPECT_EQ(readAt(0xFFFFFFFF, 1), "z");
    EXPECT_EQ(File::getLength(mPath), 0x100000000ULL);
}

TEST_F(PositionedFile, GivesNothingWhileItIsClosed) {
    EXPECT_EQ(mFile.writeAt(0, "x", 1), 0U);
    EXPECT_EQ(readAt(0, 1), "");
}

TEST_F(PositionedFile, GivesNothingAfterClose) {
    openWith("01");
    mFile.close();
    EXPECT_EQ(mFile.writeAt(0, "x", 1), 0U);
    EXPECT_EQ(readAt(0, 1), "");
    EXPECT_EQ(readText(mPath), "01");
}

TEST_F(PositionedFile, CannotWriteWhatIsOpenForReading) {
    support::writeText(mPath, "01");
    ASSERT_TRUE(mFile.open(mPath, OpenMode_Read));
    EXPECT_EQ(mFile.writeAt(0, "x", 1), 0U);
    EXPECT_EQ(readAt(0, 2), "01");
    EXPECT_EQ(readText(mPath), "01");
}

TEST_F(PositionedFile, PositionThatSeekCannotReachWritesAndReadsNothing) {
    support::writeText(mPath, "0123");
    Astray file;
    ASSERT_TRUE(file.open(mPath, OpenMode_CreateKeep));
    for (const int64_t reached : {-1, 1, 3}) {
        file.mReached = reached;
        char byte = '?';
        EXPECT_EQ(file.writeAt(2, "x", 1), 0U);
        EXPECT_EQ(file.readAt(2, &byte, 1), 0U);
        EXPECT_EQ(byte, '?');
    }
    EXPECT_EQ(file.mAccesses, 0);
    EXPECT_EQ(file.mDistance, 2);
    EXPECT_EQ(file.mPosition, SeekPosition_Begin);
    EXPECT_EQ(readText(mPath), "0123");
}

TEST_F(PositionedFile, PositionThatSeekReachesIsWrittenThroughTheOperationsOfAFile) {
    support::writeText(mPath, "0123");
    Astray file;
    ASSERT_TRUE(file.open(mPath, OpenMode_CreateKeep));
    file.mReached = 2;
    char byte = '?';
    EXPECT_EQ(file.writeAt(2, "x", 1), 1U);
    EXPECT_EQ(file.readAt(2, &byte, 1), 1U);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(file.mAccesses, 2);
}

TEST_F(PositionedFile, WasNeverAccessedAtFirst) {
    openWith("01");
    mFile.seek(0, SeekPosition_Begin);
    mFile.write("x", 1);
    EXPECT_EQ(mFile.lastAccess(), 0U);
}

TEST_F(PositionedFile, NotesTheTimeOfEveryAccess) {
    support::ManualClock clock;
    openWith("01");
    mFile.writeAt(0, "x", 1);
    EXPECT_EQ(mFile.lastAccess(), clock.now());
    clock.advance(30000);
    EXPECT_NE(mFile.lastAccess(), clock.now());
    readAt(0, 1);
    EXPECT_EQ(mFile.lastAccess(), clock.now());
}

TEST_F(PositionedFile, NotesTheTimeOfAnAccessThatFails) {
    support::ManualClock clock;
    mFile.writeAt(0, "x", 1);
    EXPECT_EQ(mFile.lastAccess(), clock.now());
    clock.advance(5);
    readAt(0, 1);
    EXPECT_EQ(mFile.lastAccess(), clock.now());
}

TEST_F(PositionedFile, NotesTheTimeBeforeItWaitsForAnotherAccess) {
    support::ManualClock clock;
    Slow file;
    ASSERT_TRUE(file.open(mPath, OpenMode_CreateKeep));
    std::thread writer([&] { file.writeAt(0, "x", 1); });
    file.mInside.get_future().wait();
    clock.advance(7);
    std::thread reader([&] {
        char byte = 0;
        file.readAt(0, &byte, 1);
    });
    while (file.lastAccess() != clock.now()) std::this_thread::yield();
    EXPECT_EQ(file.lastAccess(), clock.now());
    file.mLeave.set_value();
    writer.join();
    reader.join();
}

TEST_F(PositionedFile, ThreadsMayShareOneObject) {
    constexpr uint32_t kBlock = 512;
    constexpr uint32_t kBlocks = 64;
    openWith(std::string(kBlock * kBlocks, '.'));
    std::atomic<int> torn{0};
    std::vector<std::thread> threads;
    for (uint32_t part = 0; part < 4; ++part) {
        threads.emplace_back([&, part] {
            for (uint32_t block = part; block < kBlocks; block += 4) {
                const std::string bytes(kBlock, static_cast<char>('a' + block % 26));
                mFile.writeAt(block * kBlock, bytes.data(), bytes.size());
                std::string back(kBlock, '?');
                mFile.readAt(block * kBlock, back.data(), back.size());
                if (back != bytes) ++torn;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(torn, 0);
    for (uint32_t block = 0; block < kBlocks; ++block) {
        EXPECT_EQ(readAt(block * kBlock, kBlock), std::string(kBlock, static_cast<char>('a' + block % 26)));
    }
}
