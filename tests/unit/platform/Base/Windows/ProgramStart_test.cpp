#include <windows.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/Process.h"
#include "Public/Base/System.h"
#include "StartedPrograms.h"
#include "TempDir.h"
#include "WideText.h"

using namespace Public::Base;
using support::StartedProgram;
using support::StartedPrograms;

namespace {

class ProgramStartOnWindows : public testing::TestWithParam<bool> {
protected:
    bool start(const std::string& parameters, bool show = true) {
        const ProgramStart wanted{StartedPrograms::program(), mPrograms.argument() + parameters, show, GetParam()};
        return GetParam() ? System::startElevated(wanted) : System::startPlain(wanted);
    }

    StartedPrograms mPrograms;
};

INSTANTIATE_TEST_SUITE_P(Start, ProgramStartOnWindows, testing::Bool(),
                         [](const auto& test) { return test.param ? "Elevated" : "Plain"; });

TEST_P(ProgramStartOnWindows, PassesTheCommandLineOnToTheLetter) {
    const std::string line = "  \"C:\\a b\\\"  a\"b\"\"c \xE4\xB8\xAD\t'x' %PATH% ";
    ASSERT_TRUE(start(line));
    EXPECT_EQ(mPrograms.next().line, mPrograms.argument() + line);
}

TEST_P(ProgramStartOnWindows, ShowsOrHidesTheWindow) {
    ASSERT_TRUE(start("", true));
    EXPECT_EQ(mPrograms.next().window, "shown");
    ASSERT_TRUE(start("", false));
    EXPECT_EQ(mPrograms.next().window, "hidden");
}

TEST_P(ProgramStartOnWindows, ProgramInheritsNothingThatIsOpenHere) {
    const support::TempDir dir;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const auto open = [&] {
        return ::CreateFileW(support::wide(dir.path() + "/held").c_str(), GENERIC_WRITE, 0, &inherited, OPEN_ALWAYS, 0,
                             nullptr);
    };
    const HANDLE held = open();
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(start(""));
    StartedProgram started = mPrograms.next();
    ::CloseHandle(held);
    // Nobody else may hold it while the program runs.
    const HANDLE again = open();
    EXPECT_NE(again, INVALID_HANDLE_VALUE);
    ::CloseHandle(again);
    started.letGo();
    EXPECT_TRUE(Process::waitForExit(started.id, 60000));
}

TEST(StartOnWindows, PlainCountsAsDoneWhateverTheSystemSaysOfTheProgram) {
    const support::TempDir dir;
    EXPECT_TRUE(System::startPlain({dir.path() + "/none.exe", "", true, false}));
}

TEST(StartOnWindows, ElevatedOfAFileThatIsNoProgramFails) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/text.exe", "no program\n");
    EXPECT_FALSE(System::startElevated({dir.path() + "/text.exe", "", true, true}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ERROR_BAD_EXE_FORMAT));
}

}  // namespace
