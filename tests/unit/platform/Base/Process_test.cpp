#include "Public/Base/Process.h"

#include "Public/Base/System.h"
#include "StartedPrograms.h"

using Public::Base::Process;
using support::StartedProgram;
using support::StartedPrograms;

namespace {

/// A program that runs until it is let go.
StartedProgram startOne() {
    StartedPrograms programs;
    EXPECT_TRUE(Public::Base::System::startPlain({StartedPrograms::program(), programs.argument(), true, false}));
    return programs.next();
}

TEST(Process, WaitForAProcessThatIsNotThereReturnsAtOnce) {
    EXPECT_TRUE(Process::waitForExit(0, 60000));
    EXPECT_TRUE(Process::waitForExit(0xFFFFFFFF, 60000));
}

TEST(Process, WaitForAProcessThatGoesOnTimesOut) {
    EXPECT_FALSE(Process::waitForExit(Process::getProcessId(), 5));
    const StartedProgram other = startOne();
    EXPECT_FALSE(Process::waitForExit(other.id, 5));
}

TEST(Process, WaitEndsWithTheProcess) {
    StartedProgram other = startOne();
    std::thread waiter([&] { EXPECT_TRUE(Process::waitForExit(other.id, 60000)); });
    other.letGo();
    waiter.join();
    EXPECT_TRUE(Process::waitForExit(other.id, 60000));
}

}  // namespace
