// What each program takes apart itself elsewhere is split here as the engine puts it together: nothing escapes.
#include "Public/Base/System.h"
#include "StartedPrograms.h"

namespace {

using support::StartedPrograms;

std::vector<std::string> argumentsOf(const std::string& line) {
    StartedPrograms programs;
    EXPECT_TRUE(
        Public::Base::System::startPlain({StartedPrograms::program(), programs.argument() + " " + line, true, false}));
    return programs.next().arguments;
}

using Arguments = std::vector<std::string>;

TEST(CommandLineOnPosix, BackslashesEscapeNothing) {
    EXPECT_EQ(argumentsOf(R"("C:\a\" "b")"), (Arguments{"C:\\a\\", "b"}));
}

TEST(CommandLineOnPosix, TabsAreNoBlanks) { EXPECT_EQ(argumentsOf("a\tb"), Arguments{"a\tb"}); }

TEST(CommandLineOnPosix, QuotesWithoutABlankBetweenJoin) { EXPECT_EQ(argumentsOf("\"a\"\"b\""), Arguments{"ab"}); }

}  // namespace
