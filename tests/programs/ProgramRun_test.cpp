// Programs that are run to their end, and what reaches them.
#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/Process.h"
#include "TempDir.h"

using Public::Base::Process;
using support::readText;

namespace {

TEST(ProgramRun, GivesTheExitStatus) {
    const support::TempDir dir;
    EXPECT_EQ(Process::run({ORV_INSTALLER, "/p", "/i", "0", "1", "", "", "1"}), 2);
    EXPECT_EQ(Process::run({ORV_INSTALLER, dir.path() + "/p", dir.path() + "/i", "3", "0", "", dir.path() + "/b", "1"}),
              1);
}

TEST(ProgramRun, OfWhatIsNoProgramFails) {
    const support::TempDir dir;
    EXPECT_EQ(Process::run({}), -1);
    EXPECT_EQ(Process::run({dir.path() + "/none"}), -1);
    EXPECT_NE(Public::Base::ErrorInfo::getLastError().errorCode(), 0);
}

struct Argument {
    const char* title;
    const char* text;
};
void PrintTo(const Argument& one, std::ostream* out) { *out << one.title; }

/// What the installer tells of an argument is the argument itself.
class ProgramArguments : public testing::TestWithParam<Argument> {};

TEST_P(ProgramArguments, ReachTheProgramAsTheyAre) {
    const support::TempDir dir;
    const std::string report = dir.path() + "/report.json", text = GetParam().text;
    EXPECT_EQ(Process::run({ORV_INSTALLER, "/p", text, "3", "0", report, text, "1"}), 2);
    Public::Base::JsonValue told;
    ASSERT_FALSE(told.read(Public::Base::SharedBuffer(readText(report).value_or(""))));
    EXPECT_EQ(told["reason"]->toString(), "BACKUP_DIR holds " + text);
}

INSTANTIATE_TEST_SUITE_P(Each, ProgramArguments,
                         testing::Values(Argument{"Plain", "plain"}, Argument{"TwoBlanks", "two  blanks"},
                                         Argument{"OtherScripts", "\xE5\xAE\x89\xE8\xA3\x85/\xF0\x9F\x8E\xA5"},
                                         Argument{"EndsInABackslash", "a\\"},
                                         Argument{"EndsInTwoBehindABlank", "a b\\\\"}, Argument{"Apostrophe", "it's x"},
                                         Argument{"Option", "-x"}, Argument{"VariableOfWindows", "%TEMP%"},
                                         Argument{"VariableOfAShell", "$HOME"}),
                         [](const auto& one) { return one.param.title; });

}  // namespace
