#include "Public/Base/Process.h"

#include <windows.h>

TEST(Process, TellsTheIdOfThisProcess) { EXPECT_EQ(Public::Base::Process::getProcessId(), ::GetCurrentProcessId()); }
