#include "RelativeName.h"

using Tarnwick::OrvUpdate::isPlainRelativeName;
using Tarnwick::OrvUpdate::leadsUp;

namespace {

struct NameCase {
    const char* title;
    std::string name;
    bool plain;
};
void PrintTo(const NameCase& one, std::ostream* out) { *out << one.title; }

class RelativeName : public testing::TestWithParam<NameCase> {};

}  // namespace

TEST_P(RelativeName, IsJudged) { EXPECT_EQ(isPlainRelativeName(GetParam().name), GetParam().plain); }

INSTANTIATE_TEST_SUITE_P(
    Names, RelativeName,
    testing::Values(
        NameCase{"File", "app.exe", true}, NameCase{"FileInDirectory", "Orv Client\\app.exe", true},
        NameCase{"ForwardSeparators", "lang/zh-CN.dll", true}, NameCase{"VariableInFront", "$PLUGINSDIR\\x.dll", true},
        NameCase{"PointInFront", ".config", true}, NameCase{"TwoPointsInside", "a..b\\c..", true},
        NameCase{"TwoPointsInFrontOfText", "..data", true}, NameCase{"HereDirectory", ".\\app.exe", true},
        NameCase{"Chinese", "\xE4\xB8\xAD\xE6\x96\x87.txt", true}, NameCase{"BeginsLikeADevice", "console.exe", true},
        NameCase{"PortOfTwoDigits", "com12.dll", true}, NameCase{"PortWithoutDigit", "com.dll", true},
        NameCase{"Empty", "", false}, NameCase{"Climbs", "..\\evil.exe", false},
        NameCase{"ClimbsWithForwardSeparator", "../evil.exe", false},
        NameCase{"ClimbsInside", "a\\..\\..\\evil.exe", false}, NameCase{"ClimbsAtTheEnd", "a\\..", false},
        NameCase{"ClimbsWithBlank", ".. \\evil.exe", false}, NameCase{"ClimbsWithThreePoints", "...\\evil.exe", false},
        NameCase{"LeadingBackslash", "\\evil.exe", false}, NameCase{"LeadingSlash", "/evil.exe", false},
        NameCase{"Share", "\\\\host\\share\\evil.exe", false}, NameCase{"LongPathForm", "\\\\?\\C:\\evil.exe", false},
        NameCase{"Drive", "C:\\evil.exe", false}, NameCase{"DriveWithoutSeparator", "C:evil.exe", false},
        NameCase{"Stream", "app.exe:hidden", false}, NameCase{"Device", "CON", false},
        NameCase{"DeviceInDirectory", "a\\nul", false}, NameCase{"DeviceAsDirectory", "aux\\a.txt", false},
        NameCase{"DeviceWithExtension", "Com1.dll", false}, NameCase{"DeviceWithBlank", "prn .txt", false},
        NameCase{"PortOfSuperscript", "lpt\xC2\xB9", false}, NameCase{"ConsoleInput", "CONIN$", false}),
    [](const auto& one) { return one.param.title; });

TEST(RelativeName, LeadsUpByAnyPart) {
    EXPECT_TRUE(leadsUp(".."));
    EXPECT_TRUE(leadsUp("/a/../b"));
    EXPECT_FALSE(leadsUp("/a/b"));
    EXPECT_FALSE(leadsUp(""));
}
