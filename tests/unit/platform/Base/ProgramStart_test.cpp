#include "FileText.h"
#include "OpenFiles.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/Process.h"
#include "Public/Base/System.h"
#include "StartedPrograms.h"
#include "TempDir.h"

using namespace Public::Base;
using support::StartedProgram;
using support::StartedPrograms;

namespace {

/// Each test runs for both ways of starting a program.
class ProgramStartTest : public testing::TestWithParam<bool> {
protected:
    bool start(const std::string& program, const std::string& parameters) {
        const bool elevated = GetParam();
        const ProgramStart wanted{program, parameters, true, elevated};
        return elevated ? System::startElevated(wanted) : System::startPlain(wanted);
    }
    bool start(const std::string& parameters = "") {
        return start(StartedPrograms::program(), mPrograms.argument() + " " + parameters);
    }
    /// A copy of the recorder, in a directory of this name.
    std::string copyIn(const std::string& directory) const {
        const std::string path = mDir.path() + "/" + directory + "/program.exe";
        EXPECT_TRUE(File::makeDirectory(mDir.path() + "/" + directory));
        EXPECT_TRUE(File::copy(StartedPrograms::program(), path)) << path;
        return path;
    }
    /// Starts that copy and sees it through to its end, so that the directory can go.
    void expectStart(const std::string& program) {
        ASSERT_TRUE(start(program, mPrograms.argument() + " \"a b\"")) << ErrorInfo::getLastError().errorMessage();
        StartedProgram started = mPrograms.next();
        EXPECT_EQ(started.arguments, std::vector<std::string>{"a b"});
        started.letGo();
        EXPECT_TRUE(Process::waitForExit(started.id, 60000));
    }

    support::TempDir mDir;
    StartedPrograms mPrograms;
};

INSTANTIATE_TEST_SUITE_P(Start, ProgramStartTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "Elevated" : "Plain"; });

TEST_P(ProgramStartTest, GivesTheProgramItsArgumentsAsGiven) {
    ASSERT_TRUE(start("\"two  blanks\" \"\" plain \"\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA4\""));
    EXPECT_EQ(mPrograms.next().arguments,
              (std::vector<std::string>{"two  blanks", "", "plain", "\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA4"}));
}

TEST_P(ProgramStartTest, RefusesAnEmptyNameAndZeroBytes) {
    EXPECT_FALSE(start("", ""));
    EXPECT_FALSE(start(std::string("a\0b", 3), ""));
    EXPECT_FALSE(start(std::string("a\0b", 3)));
}

TEST_P(ProgramStartTest, StartsAProgramUnderAPathWithBlanks) { expectStart(copyIn("two  blanks")); }

TEST_P(ProgramStartTest, StartsAProgramUnderAPathBeyondAscii) {
    expectStart(copyIn("\xE5\x8D\x87\xE7\xBA\xA7 \xC3\xBC"));
}

TEST_P(ProgramStartTest, StartsAProgramUnderALongPath) {
    const std::string part(100, 'p');
    expectStart(copyIn(part + "/" + part + "/" + part));
}

TEST_P(ProgramStartTest, ProgramOutlivesItsStartAndTheCallerDoesNotWaitForIt) {
    ASSERT_TRUE(start());
    StartedProgram started = mPrograms.next();
    EXPECT_FALSE(Process::waitForExit(started.id, 0));
    started.letGo();
    EXPECT_TRUE(Process::waitForExit(started.id, 60000));
}

TEST_P(ProgramStartTest, ProgramRunsInTheDirectoryOfTheCaller) {
    ASSERT_TRUE(start());
    EXPECT_EQ(mPrograms.next().directory, std::filesystem::current_path().string());
}

TEST_P(ProgramStartTest, LeavesNothingOpenHere) {
    // The first time the system may open what it keeps.
    ASSERT_TRUE(start());
    mPrograms.next();
    const size_t before = support::countOpenHere();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(start());
        mPrograms.next();
    }
    // Threads that the system keeps ready come and go.
    EXPECT_LT(support::countOpenHere(), before + 10);
}

TEST_P(ProgramStartTest, ManyMayBeStartedAtOnce) {
    std::atomic<int> failed{0};
    std::vector<std::thread> starters;
    for (int i = 0; i < 4; ++i) {
        starters.emplace_back([&, i] {
            for (int turn = 0; turn < 4; ++turn) {
                if (!start(std::to_string(4 * i + turn))) ++failed;
            }
        });
    }
    std::set<int> heard;
    for (int i = 0; i < 16; ++i) heard.insert(std::stoi(mPrograms.next().arguments.at(0)));
    for (auto& starter : starters) starter.join();
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(heard.size(), 16U);
}

TEST(ElevatedStart, OfAMissingProgramFailsWithTheSystemsError) {
    const support::TempDir dir;
    constexpr int kNotFound = -(10000 + 2);  // under one number on all systems
    EXPECT_FALSE(System::startElevated({dir.path() + "/none.exe", "", true, true}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), kNotFound);
    EXPECT_FALSE(ErrorInfo::getLastError().errorMessage().empty());
}

struct Line {
    const char* name;
    std::string line;
    std::string arguments;  // each in brackets
};

void PrintTo(const Line& line, std::ostream* out) { *out << line.line; }

class CommandLine : public testing::TestWithParam<Line> {};

TEST_P(CommandLine, IsSplitIntoItsArguments) {
    StartedPrograms programs;
    ASSERT_TRUE(
        System::startPlain({StartedPrograms::program(), programs.argument() + " " + GetParam().line, true, false}));
    std::string arguments;
    for (const auto& argument : programs.next().arguments) arguments += "[" + argument + "]";
    EXPECT_EQ(arguments, GetParam().arguments);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, CommandLine,
    testing::Values(Line{"Empty", "", ""}, Line{"OnlyBlanks", "   ", ""}, Line{"Plain", "a b", "[a][b]"},
                    Line{"Quoted", "\"a\" \"b c\"", "[a][b c]"}, Line{"EmptyArguments", "\"\" \"\"", "[][]"},
                    Line{"BlanksAround", "  \"a\"   b  ", "[a][b]"},
                    Line{"BlanksKeptInQuotes", "\" a  b \"", "[ a  b ]"},
                    Line{"QuotesInsideAWord", "a\"b c\"d", "[ab cd]"}, Line{"UnclosedQuote", "\"a b", "[a b]"},
                    Line{"LoneQuote", "\"", "[]"},
                    Line{"NothingIsExpanded", "$HOME %PATH% * `x` ;", "[$HOME][%PATH%][*][`x`][;]"},
                    Line{"NonAscii", "\"\xE4\xB8\xAD \xC3\xA4\"", "[\xE4\xB8\xAD \xC3\xA4]"}),
    [](const auto& test) { return test.param.name; });

}  // namespace
