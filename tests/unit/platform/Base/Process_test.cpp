#include "Public/Base/Process.h"

#include <unistd.h>

#include "Public/Base/System.h"
#include "TempDir.h"

using Public::Base::Process;

namespace {

TEST(Process, TellsTheIdOfThisProcess) { EXPECT_EQ(Process::getProcessId(), static_cast<unsigned>(::getpid())); }

TEST(Process, WaitForAProcessThatIsNotThereReturnsAtOnce) {
    EXPECT_TRUE(Process::waitForExit(0, 60000));
    EXPECT_TRUE(Process::waitForExit(0xFFFFFFFF, 60000));
}

TEST(Process, WaitForAProcessThatGoesOnTimesOut) { EXPECT_FALSE(Process::waitForExit(Process::getProcessId(), 5)); }

TEST(Process, WaitEndsWithTheProcess) {
    const support::TempDir dir;
    const std::string idFile = dir.path() + "/id";
    // The shell tells its id and ends when its input does, which is at once.
    ASSERT_TRUE(Public::Base::System::startPlain(
        {"/bin/sh", "\"-c\" \"echo $$ > " + idFile + "; cat </dev/null\"", true, false}));
    unsigned int id = 0;
    while (!(std::ifstream(idFile) >> id)) std::this_thread::yield();
    EXPECT_TRUE(Process::waitForExit(id, 60000));
}

}  // namespace
