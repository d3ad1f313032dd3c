// The open files of transfers that this node serves, and their sweep.
#include "VersionService/FileWriterManager.h"

#include <thread>

#include "FileText.h"
#include "OpenFiles.h"
#include "SweepClock.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using support::isOpenHere;

namespace {

class FileWriters : public testing::Test {
protected:
    FileWriters() {
        support::writeText(mPath, "content");
        mManager = std::make_unique<FileWriterManager>();
        EXPECT_TRUE(mClock.rests());
    }

    std::shared_ptr<FileObject> openFile() const {
        auto file = std::make_shared<FileObject>();
        EXPECT_TRUE(file->open(mPath, 0));
        return file;
    }
    /// A file that was touched just now.
    std::shared_ptr<FileObject> touchedFile() const {
        auto file = openFile();
        touch(*file);
        return file;
    }
    static void touch(FileObject& file) {
        char byte = 0;
        file.readAt(0, &byte, 1);
    }
    /// Lets time pass. @return whether a sweep came with it
    bool sweepsAfter(unsigned milliseconds) {
        mManager->addFile("~", openFile());  // nobody has touched it, so the sweep takes it
        mClock.advance(milliseconds);
        EXPECT_TRUE(mClock.rests());
        const bool swept = !mManager->getFile("~");
        mManager->removeFile("~");
        return swept;
    }

    support::TempDir mDir;
    std::string mPath = mDir.path() + "/package.exe";
    support::SweepClock mClock;
    std::unique_ptr<FileWriterManager> mManager;
};

}  // namespace

TEST_F(FileWriters, HasNothingForAnUnknownTransfer) { EXPECT_EQ(mManager->getFile("t"), nullptr); }

TEST_F(FileWriters, GivesTheFileOfATransfer) {
    const auto one = touchedFile();
    const auto other = touchedFile();
    mManager->addFile("one", one);
    mManager->addFile("other", other);
    EXPECT_EQ(mManager->getFile("one"), one);
    EXPECT_EQ(mManager->getFile("other"), other);
    EXPECT_EQ(mManager->getFile("on"), nullptr);
}

TEST_F(FileWriters, KeepsAFileThatIsThereAlready) {
    const auto first = touchedFile();
    mManager->addFile("t", first);
    mManager->addFile("t", touchedFile());
    EXPECT_EQ(mManager->getFile("t"), first);
}

TEST_F(FileWriters, ServesAnEmptyTransferIdLikeAnyOther) {
    const auto file = touchedFile();
    mManager->addFile("", file);
    EXPECT_EQ(mManager->getFile(""), file);
}

TEST_F(FileWriters, RemovesWithCode0) {
    mManager->addFile("t", touchedFile());
    const auto result = mManager->removeFile("t");
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(mManager->getFile("t"), nullptr);
    EXPECT_FALSE(isOpenHere(mPath));
}

TEST_F(FileWriters, RemovesWithCode0AlsoWhenNothingIsThere) { EXPECT_EQ(mManager->removeFile("t").errorCode(), 0); }

TEST_F(FileWriters, RemovedFileStaysOpenForWhoeverUsesIt) {
    const auto held = touchedFile();
    mManager->addFile("t", held);
    mManager->removeFile("t");
    EXPECT_TRUE(isOpenHere(mPath));
    char bytes[8] = {};
    EXPECT_EQ(held->readAt(0, bytes, 7), 7U);
}

// The sweep's judgement

TEST_F(FileWriters, SweepKeepsAFileTouched60SecondsAgo) {
    mManager->addFile("t", touchedFile());
    mClock.advance(60000);
    mManager->timerProc(0);
    EXPECT_NE(mManager->getFile("t"), nullptr);
}

TEST_F(FileWriters, SweepDropsAFileTouchedMoreThan60SecondsAgo) {
    mManager->addFile("t", touchedFile());
    mClock.advance(60001);
    mManager->timerProc(0);
    EXPECT_EQ(mManager->getFile("t"), nullptr);
    EXPECT_FALSE(isOpenHere(mPath));
}

TEST_F(FileWriters, SweepJudgesEachFileByItself) {
    mManager->addFile("old", touchedFile());
    mClock.advance(40000);
    mManager->addFile("young", touchedFile());
    mClock.advance(40000);
    mManager->timerProc(0);
    EXPECT_EQ(mManager->getFile("old"), nullptr);
    EXPECT_NE(mManager->getFile("young"), nullptr);
}

TEST_F(FileWriters, WriteIsATouchToo) {
    const auto file = std::make_shared<FileObject>();
    ASSERT_TRUE(file->open(mPath, 0x1002));
    file->writeAt(0, "x", 1);
    mManager->addFile("t", file);
    mClock.advance(60000);
    file->writeAt(0, "x", 1);
    mClock.advance(60000);
    mManager->timerProc(0);
    EXPECT_NE(mManager->getFile("t"), nullptr);
}

TEST_F(FileWriters, SweepDropsAFileThatNobodyHasTouchedYet) {
    mManager->addFile("t", openFile());
    mManager->timerProc(0);
    EXPECT_EQ(mManager->getFile("t"), nullptr);
}

TEST_F(FileWriters, SweepKeepsAFileTouchedAfterTheTimeWasRead) {
    mClock.advance(5000);
    mManager->addFile("t", touchedFile());
    Public::Base::Clock::replace(std::make_shared<support::ManualTime>());  // 5 seconds earlier
    mManager->timerProc(0);
    EXPECT_NE(mManager->getFile("t"), nullptr);
}

TEST_F(FileWriters, BusyTransferKeepsASweptFileThroughItsOwnReference) {
    const auto busy = touchedFile();
    mManager->addFile("t", busy);
    mClock.advance(60001);
    mManager->timerProc(0);
    EXPECT_EQ(mManager->getFile("t"), nullptr);
    char bytes[8] = {};
    EXPECT_EQ(busy->readAt(0, bytes, 7), 7U);
}

TEST_F(FileWriters, SweepLeavesThePartlyWrittenFileOnTheDisk) {
    const auto file = std::make_shared<FileObject>();
    ASSERT_TRUE(file->open(mDir.path() + "/partly.exe", 0x1002));
    file->writeAt(0, "abc", 3);
    mManager->addFile("t", file);
    mClock.advance(60001);
    mManager->timerProc(0);
    EXPECT_EQ(support::readText(mDir.path() + "/partly.exe"), "abc");
}

// The sweep's times

TEST_F(FileWriters, FirstSweepIsDueAtOnce) { EXPECT_EQ(mClock.first(), mClock.now()); }

TEST_F(FileWriters, SweepsEvery30Seconds) {
    EXPECT_TRUE(sweepsAfter(30000));
    EXPECT_TRUE(sweepsAfter(30000));
    EXPECT_TRUE(sweepsAfter(30000));
}

TEST_F(FileWriters, DoesNotSweepBefore30SecondsHaveGone) {
    EXPECT_FALSE(sweepsAfter(29999));
    EXPECT_TRUE(sweepsAfter(1));
    EXPECT_FALSE(sweepsAfter(29999));
}

TEST_F(FileWriters, IdleFileStaysOpenForUpTo90Seconds) {
    ASSERT_TRUE(sweepsAfter(30000));
    EXPECT_FALSE(sweepsAfter(1));
    mManager->addFile("t", touchedFile());
    ASSERT_TRUE(sweepsAfter(29999));  // idle for 30 seconds
    EXPECT_NE(mManager->getFile("t"), nullptr);
    ASSERT_TRUE(sweepsAfter(30000));  // for 60, less a millisecond
    EXPECT_NE(mManager->getFile("t"), nullptr);
    ASSERT_TRUE(sweepsAfter(30000));  // for 90, less a millisecond
    EXPECT_EQ(mManager->getFile("t"), nullptr);
    EXPECT_FALSE(isOpenHere(mPath));
}

// Limits and threads

TEST_F(FileWriters, LetsGoOfTheLeastUsedFileAtTheLimit) {
    for (size_t i = 0; i < FileWriterManager::kMaxFiles; ++i) {
        mManager->addFile("t" + std::to_string(i), touchedFile());
        mClock.advance(1);
    }
    touch(*mManager->getFile("t0"));
    mManager->addFile("new", openFile());
    EXPECT_NE(mManager->getFile("t0"), nullptr);
    EXPECT_EQ(mManager->getFile("t1"), nullptr);
    EXPECT_NE(mManager->getFile("t2"), nullptr);
    EXPECT_NE(mManager->getFile("new"), nullptr);
    EXPECT_EQ(support::timesOpenHere(mPath), FileWriterManager::kMaxFiles);
}

TEST_F(FileWriters, EndClosesEveryFile) {
    auto manager = std::make_unique<FileWriterManager>();
    manager->addFile("one", touchedFile());
    manager->addFile("other", touchedFile());
    EXPECT_TRUE(isOpenHere(mPath));
    manager.reset();
    EXPECT_FALSE(isOpenHere(mPath));
}

TEST_F(FileWriters, ThreadsShareItWithTheSweep) {
    std::vector<std::thread> threads;
    std::atomic<int> found{0};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread, &found] {
            for (int i = 0; i < 200; ++i) {
                const std::string id = std::to_string((thread + i) % 5);
                mManager->addFile(id, touchedFile());
                if (const auto file = mManager->getFile(id)) {
                    touch(*file);
                    ++found;
                }
                if (i % 3 == 0) mManager->removeFile(id);
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        mClock.advance(61000);
        mManager->timerProc(0);
    }
    for (auto& thread : threads) thread.join();
    EXPECT_GT(found, 0);
}
