#include "Public/Base/Process.h"

#include <unistd.h>

TEST(Process, TellsTheIdOfThisProcess) {
    EXPECT_EQ(Public::Base::Process::getProcessId(), static_cast<unsigned>(::getpid()));
}
