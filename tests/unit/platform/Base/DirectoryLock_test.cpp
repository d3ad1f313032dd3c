#include "Public/Base/DirectoryLock.h"

#include "FileKinds.h"
#include "FileText.h"
#include "OtherProcess.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "SystemErrors.h"
#include "TempDir.h"

using Public::Base::DirectoryLock;
using Result = DirectoryLock::Result;

namespace {

TEST(DirectoryLock, KeepsASecondHolderAwayUntilItIsReleased) {
    const support::TempDir dir;
    DirectoryLock first, second;
    EXPECT_EQ(first.take(dir.path()), Result::Taken);
    EXPECT_EQ(second.take(dir.path()), Result::Held);
    first.release();
    EXPECT_EQ(second.take(dir.path()), Result::Taken);
}

TEST(DirectoryLock, EndsWithItsObject) {
    const support::TempDir dir;
    {
        DirectoryLock first;
        ASSERT_EQ(first.take(dir.path()), Result::Taken);
    }
    DirectoryLock second;
    EXPECT_EQ(second.take(dir.path()), Result::Taken);
}

TEST(DirectoryLock, IsTheSameByWhateverName) {
    const support::TempDir dir;
    std::filesystem::create_directory(dir.path() + "/real");
    support::makeDirectoryLink(dir.path() + "/real", dir.path() + "/link");
    DirectoryLock first, second;
    EXPECT_EQ(first.take(dir.path() + "/real"), Result::Taken);
    EXPECT_EQ(second.take(dir.path() + "/link/"), Result::Held);
    EXPECT_EQ(second.take(dir.path() + "\\link\\..\\real"), Result::Held);
}

TEST(DirectoryLock, LeavesOtherDirectoriesAlone) {
    const support::TempDir dir;
    std::filesystem::create_directory(dir.path() + "/inside");
    DirectoryLock first, second;
    EXPECT_EQ(first.take(dir.path()), Result::Taken);
    EXPECT_EQ(second.take(dir.path() + "/inside"), Result::Taken);
}

TEST(DirectoryLock, LeavesNothingInTheDirectory) {
    const support::TempDir dir;
    DirectoryLock lock;
    EXPECT_EQ(lock.take(dir.path()), Result::Taken);
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
    lock.release();
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(DirectoryLock, GivesBackWhatItHeldWhenItTakesAnother) {
    const support::TempDir dir;
    std::filesystem::create_directory(dir.path() + "/inside");
    DirectoryLock first, second;
    EXPECT_EQ(first.take(dir.path()), Result::Taken);
    EXPECT_EQ(first.take(dir.path() + "/inside"), Result::Taken);
    EXPECT_EQ(second.take(dir.path()), Result::Taken);
}

TEST(DirectoryLock, OfWhatIsNoDirectoryFailsWithTheSystemsError) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/file", "text");
    DirectoryLock lock;
    EXPECT_EQ(lock.take(dir.path() + "/none"), Result::Failed);
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), errorOf(support::SystemError::NotThere));
    EXPECT_EQ(lock.take(dir.path() + "/file"), Result::Failed);
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), errorOf(support::SystemError::NoDirectory));
    EXPECT_EQ(lock.take(""), Result::Failed);
}

TEST(DirectoryLock, KeepsAnotherProcessAwayAndEndsWithAKilledOne) {
    const support::TempDir dir;
    support::OtherProcess other(support::OtherProcess::Deed::LockDirectory, dir.path());
    EXPECT_TRUE(other.did());
    DirectoryLock lock;
    EXPECT_EQ(lock.take(dir.path()), Result::Held);
    other.kill();
    EXPECT_EQ(lock.take(dir.path()), Result::Taken);
}

TEST(DirectoryLock, IsKeptFromAnotherProcess) {
    const support::TempDir dir;
    DirectoryLock lock;
    ASSERT_EQ(lock.take(dir.path()), Result::Taken);
    EXPECT_FALSE(support::OtherProcess(support::OtherProcess::Deed::LockDirectory, dir.path()).did());
    lock.release();
    EXPECT_TRUE(support::OtherProcess(support::OtherProcess::Deed::LockDirectory, dir.path()).did());
}

TEST(DirectoryLock, MayBeGivenBackByAnotherThreadThanTookIt) {
    const support::TempDir dir;
    DirectoryLock first, second;
    std::thread([&] { EXPECT_EQ(first.take(dir.path()), Result::Taken); }).join();
    EXPECT_EQ(second.take(dir.path()), Result::Held);
    std::thread([&] { first.release(); }).join();
    EXPECT_EQ(second.take(dir.path()), Result::Taken);
}

TEST(DirectoryLock, IsNotMetByTheOneWhoHasItOnTheSameThread) {
    const support::TempDir dir;
    DirectoryLock lock;
    EXPECT_EQ(lock.take(dir.path()), Result::Taken);
    EXPECT_EQ(lock.take(dir.path()), Result::Taken);
    DirectoryLock other;
    EXPECT_EQ(other.take(dir.path()), Result::Held);
}

TEST(DirectoryLock, IsTakenByOneOfManyAtOnce) {
    const support::TempDir dir;
    std::atomic<int> taken{0}, held{0}, ready{0};
    std::vector<std::thread> takers;
    for (int i = 0; i < 8; ++i) {
        takers.emplace_back([&] {
            DirectoryLock lock;
            (lock.take(dir.path()) == Result::Taken ? taken : held) += 1;
            // Nobody gives it back before all have asked.
            for (++ready; ready < 8;) std::this_thread::yield();
        });
    }
    for (auto& taker : takers) taker.join();
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(held, 7);
}

TEST(DirectoryLock, BindsOnlyThoseWhoAskForIt) {
    const support::TempDir dir;
    DirectoryLock lock;
    ASSERT_EQ(lock.take(dir.path()), Result::Taken);
    support::writeText(dir.path() + "/sub/file", "text");
    EXPECT_EQ(support::readText(dir.path() + "/sub/file"), "text");
    EXPECT_TRUE(Public::Base::File::removeDirectory(dir.path() + "/sub"));
}

TEST(DirectoryLock, OfARemovedDirectoryKeepsNobodyFromANewOneOfTheName) {
    const support::TempDir dir;
    const std::string path = dir.path() + "/d";
    std::filesystem::create_directory(path);
    DirectoryLock first, second;
    ASSERT_EQ(first.take(path), Result::Taken);
    std::filesystem::rename(path, dir.path() + "/old");
    std::filesystem::create_directory(path);
    EXPECT_EQ(second.take(path), Result::Taken);
    EXPECT_EQ(DirectoryLock().take(dir.path() + "/old"), Result::Held);
}

}  // namespace
