#include "Public/Base/DirectoryLock.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
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
    std::filesystem::create_symlink("real", dir.path() + "/link");
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
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), -10002);
    EXPECT_EQ(lock.take(dir.path() + "/file"), Result::Failed);
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), -10020);
    EXPECT_EQ(lock.take(""), Result::Failed);
}

TEST(DirectoryLock, KeepsAnotherProcessAwayAndEndsWithAKilledOne) {
    const support::TempDir dir;
    int taken[2];
    ASSERT_EQ(::pipe(taken), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        DirectoryLock lock;
        const char result = lock.take(dir.path()) == Result::Taken ? '1' : '0';
        if (::write(taken[1], &result, 1) != 1) ::_exit(1);
        for (;;) ::pause();
    }
    char result = 0;
    EXPECT_EQ(::read(taken[0], &result, 1), 1);
    EXPECT_EQ(result, '1');
    DirectoryLock lock;
    EXPECT_EQ(lock.take(dir.path()), Result::Held);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(lock.take(dir.path()), Result::Taken);
    ::close(taken[0]);
    ::close(taken[1]);
}

}  // namespace
