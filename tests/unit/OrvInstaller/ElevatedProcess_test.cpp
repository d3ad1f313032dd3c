#include "OrvInstaller/ElevatedProcess.h"

#include "LogRecorder.h"
#include "OrvInstaller.h"
#include "ProgramRecorder.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::Value;

namespace {

std::string parametersOf(const std::vector<Value>& arguments) {
    support::ProgramRecorder programs;
    OrvInstaller::createAdminisratorProcess("/app/tool.exe", arguments, true);
    return programs.starts().empty() ? "nothing started" : programs.starts().front().parameters;
}

}  // namespace

TEST(ElevatedProcess, AsksForRaisedRights) {
    support::ProgramRecorder programs;
    EXPECT_TRUE(OrvInstaller::createAdminisratorProcess("/app/tool.exe", {"a"}, true));
    ASSERT_EQ(programs.starts().size(), 1U);
    EXPECT_EQ(programs.starts()[0].program, "/app/tool.exe");
    EXPECT_TRUE(programs.starts()[0].elevated);
    EXPECT_TRUE(programs.starts()[0].show);
}

TEST(ElevatedProcess, PassesOnThatNoWindowIsWanted) {
    support::ProgramRecorder programs;
    OrvInstaller::createAdminisratorProcess("/app/tool.exe", {}, false);
    ASSERT_EQ(programs.starts().size(), 1U);
    EXPECT_FALSE(programs.starts()[0].show);
}

TEST(ElevatedProcess, QuotesEachArgumentAndSeparatesThemByABlank) {
    EXPECT_EQ(parametersOf({"one", "two words", "three"}), "\"one\" \"two words\" \"three\"");
}

TEST(ElevatedProcess, QuotesAnEmptyArgument) { EXPECT_EQ(parametersOf({"", "b", ""}), "\"\" \"b\" \"\""); }

TEST(ElevatedProcess, WritesNumbersAsText) { EXPECT_EQ(parametersOf({3, 4000000000U}), "\"3\" \"4000000000\""); }

TEST(ElevatedProcess, AnEmptyListGivesAnEmptyCommandLine) { EXPECT_EQ(parametersOf({}), ""); }

TEST(ElevatedProcess, DoesNotEscapeAQuoteInsideAnArgument) { EXPECT_EQ(parametersOf({"a\"b"}), "\"a\"b\""); }

TEST(ElevatedProcess, KeepsABackslashAtTheEndOfAnArgument) { EXPECT_EQ(parametersOf({"C:\\"}), "\"C:\\\""); }

TEST(ElevatedProcess, PrintsTheProgramToStandardOutput) {
    support::ProgramRecorder programs;
    testing::internal::CaptureStdout();
    OrvInstaller::createAdminisratorProcess("/app/100%s/tool.exe", {}, true);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "appname:/app/100%s/tool.exe");
}

TEST(ElevatedProcess, AFailedStartIsFalseAndLoggedWithTheSystemsNumber) {
    support::ProgramRecorder programs(false, 1223);
    support::LogRecorder log;
    EXPECT_FALSE(OrvInstaller::createAdminisratorProcess("/app/tool.exe", {}, true));
    ASSERT_EQ(log.entries().size(), 1U);
    EXPECT_EQ(log.entries()[0].level, 2);
    EXPECT_EQ(log.entries()[0].text, "RunApp Error: 1223");
    EXPECT_EQ(log.entries()[0].file, "OrvUpdate/Src/OrvInstaller");
}

TEST(ElevatedProcess, ASuccessfulStartLogsNothing) {
    support::ProgramRecorder programs;
    support::LogRecorder log;
    OrvInstaller::createAdminisratorProcess("/app/tool.exe", {}, true);
    EXPECT_TRUE(log.entries().empty());
}

TEST(ElevatedProcess, AnOldSystemStartsWithoutRaisedRightsAndPrintsNothing) {
    support::ProgramRecorder programs;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(startInstallerProgram({"/app/tool.exe", "\"a\"", true, true}, false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_EQ(programs.starts().size(), 1U);
    EXPECT_FALSE(programs.starts()[0].elevated);
    EXPECT_EQ(programs.starts()[0].parameters, "\"a\"");
}

TEST(ElevatedProcess, AFailedPlainStartIsNotLogged) {
    support::ProgramRecorder programs(false, 2);
    support::LogRecorder log;
    EXPECT_FALSE(startInstallerProgram({"/app/tool.exe", "", true, true}, false));
    EXPECT_TRUE(log.entries().empty());
}
