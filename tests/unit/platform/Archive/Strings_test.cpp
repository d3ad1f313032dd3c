// The string table: its kinds, its codes, and what it refuses.
#include "Archive/Strings.h"

#include "Archive/CodePage.h"
#include "Archive/FolderNames.h"
#include "Archive/Utf16.h"
#include "SyntheticPackage.h"

namespace {

using Archive::HeaderBlock;
using Archive::PathText;
using Archive::ScriptFolders;
using support::SyntheticPackage;

HeaderBlock parsed(const SyntheticPackage& package) {
    const std::string bytes = package.header();
    HeaderBlock header;
    EXPECT_TRUE(header.parse({bytes.begin(), bytes.end()}, false));
    return header;
}

/// The string with its variables by name; "(bad)" when it cannot be expanded.
std::string expand(const SyntheticPackage& package, int32_t number) {
    const HeaderBlock header = parsed(package);
    Archive::Strings strings(header);
    PathText path;
    return strings.expand(number, {}, path) ? path.spelled() : "(bad)";
}

class StringCodes : public testing::TestWithParam<SyntheticPackage::Text> {
protected:
    SyntheticPackage mPackage{GetParam()};
};

TEST_P(StringCodes, StandForVariables) {
    const int32_t number = mPackage.addRaw(mPackage.variable(21) + mPackage.text("\\") + mPackage.variable(0) +
                                           mPackage.variable(19) + mPackage.variable(200));
    EXPECT_EQ(expand(mPackage, number), "$INSTDIR\\$0$R9$_200_");
}

TEST_P(StringCodes, StandForFolders) {
    const int32_t number = mPackage.addRaw(mPackage.folder(0x1A, 0x23) + mPackage.text("\\x"));
    EXPECT_EQ(expand(mPackage, number), "$APPDATA\\x");
}

TEST_P(StringCodes, StandForStringsOfTheLanguage) {
    const int32_t inner = mPackage.addText("inner");
    mPackage.addLanguage(1033, {0, inner});
    const int32_t outer = mPackage.addRaw(mPackage.text("<") + mPackage.languageString(1) + mPackage.text(">"));
    EXPECT_EQ(expand(mPackage, outer), "<inner>");
    EXPECT_EQ(expand(mPackage, -2), "inner");
}

TEST_P(StringCodes, LeaveTheCharacterBehindALiteralAlone) {
    const std::string three = GetParam() == SyntheticPackage::Unicode ? std::string("\3\0", 2) : std::string("\3");
    const int32_t number = mPackage.addRaw(mPackage.text("a") + mPackage.literal(three) + mPackage.text("b"));
    EXPECT_EQ(expand(mPackage, number), "a\3b");
}

TEST_P(StringCodes, ReferringToThemselvesAreRefused) {
    mPackage.addLanguage(1033, {-1});
    EXPECT_EQ(expand(mPackage, -1), "(bad)");
}

TEST_P(StringCodes, ReferringToThemselvesThroughAStringAreRefused) {
    SyntheticPackage package(GetParam());
    const int32_t loop = package.addRaw(package.languageString(0) + package.text("x") + package.languageString(0));
    package.addLanguage(1033, {loop});
    EXPECT_EQ(expand(package, loop), "(bad)");
}

TEST_P(StringCodes, OfARegistryFolderReferringToItselfEnd) {
    // Its name lies in the table, where it begins with the code itself.
    SyntheticPackage package(GetParam());
    const int32_t number = package.addRaw(package.folder(0x80 | 20, 20) + package.text("abcdef"));
    EXPECT_TRUE(expand(package, number).starts_with("$_REGISTRY_"));
}

TEST_P(StringCodes, StandForFoldersOfTheRegistry) {
    SyntheticPackage package(GetParam());
    const int32_t name = package.addText("ProgramFilesDir");
    const auto first = static_cast<unsigned>(name);
    EXPECT_EQ(expand(package, package.addRaw(package.folder(0x80 | first, first))), "$PROGRAMFILES");
    EXPECT_EQ(expand(package, package.addRaw(package.folder(0xC0 | first, first))), "$PROGRAMFILES64");
}

TEST_P(StringCodes, CutAtTheEndOfTheTableAreRefused) {
    SyntheticPackage package(GetParam());
    const std::string code = package.variable(5);
    const size_t width = GetParam() == SyntheticPackage::Unicode ? 2 : 1;
    // The code's parameter swallows the string's end, and the table ends there.
    const int32_t number = package.addRaw(code.substr(0, code.size() - (width == 2 ? 2 : 1)));
    EXPECT_EQ(expand(package, number), "(bad)");
}

TEST_P(StringCodes, OutsideTheTableAreRefused) {
    EXPECT_EQ(expand(mPackage, 5000), "(bad)");
    EXPECT_EQ(expand(mPackage, INT32_MAX), "(bad)");
    EXPECT_EQ(expand(mPackage, INT32_MIN), "(bad)");
}

TEST_P(StringCodes, MayPointIntoTheTailOfAnotherString) {
    const int32_t number = mPackage.addText("long name");
    EXPECT_EQ(expand(mPackage, number + 5), "name");
    EXPECT_EQ(expand(mPackage, 0), "");
}

TEST_P(StringCodes, TakeEnglishBeforeTheFirstLanguage) {
    const int32_t german = mPackage.addText("Ordner"), english = mPackage.addText("Folder");
    mPackage.addLanguage(1031, {german});
    mPackage.addLanguage(1033, {english});
    EXPECT_EQ(expand(mPackage, -1), "Folder");
}

std::string kindName(const testing::TestParamInfo<SyntheticPackage::Text>& test) {
    switch (test.param) {
        case SyntheticPackage::Unicode:
            return "Unicode";
        case SyntheticPackage::Ansi3:
            return "Ansi3";
        case SyntheticPackage::Ansi2:
            break;
    }
    return "Ansi2";
}

INSTANTIATE_TEST_SUITE_P(Kinds, StringCodes,
                         testing::Values(SyntheticPackage::Unicode, SyntheticPackage::Ansi3, SyntheticPackage::Ansi2),
                         kindName);

TEST(Strings, OfMeasurelessLengthAreRefused) {
    SyntheticPackage package;
    EXPECT_EQ(expand(package, package.addText(std::string(40000, 'x'))), "(bad)");
}

TEST(Strings, InUnicodeReplaceALoneSurrogate) {
    SyntheticPackage package;
    const int32_t number =
        package.addRaw(std::string("a\0\x00\xd8"
                                   "b\0\x00\xdc",
                                   8));
    EXPECT_EQ(expand(package, number),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
}

TEST(Strings, InAnsiOfASimplifiedChinesePackageAreOfItsCodePage) {
    SyntheticPackage package(SyntheticPackage::Ansi3);
    package.addLanguage(2052, {0});
    EXPECT_EQ(expand(package, package.addRaw("\xC9\xFD\xBC\xB6.dll")), "升级.dll");
}

TEST(Strings, InAnsiOfAnUnknownLanguageAreWestern) {
    SyntheticPackage package(SyntheticPackage::Ansi2);
    EXPECT_EQ(expand(package, package.addRaw("\xDC"
                                             "ber")),
              "Über");
}

TEST(Strings, BeginWithTheCurrentFolderThatTheScriptSet) {
    SyntheticPackage package;
    const int32_t number = package.addRaw(package.variable(22) + package.text("\\sub"));
    const HeaderBlock header = parsed(package);
    Archive::Strings strings(header);
    ScriptFolders folders;
    folders.current = {PathText::Elsewhere, "$TEMP\\x"};
    PathText path;
    ASSERT_TRUE(strings.expand(number, folders, path));
    EXPECT_EQ(path.text, "$TEMP\\x\\sub");
    EXPECT_EQ(path.root, PathText::Elsewhere);
}

TEST(FolderNames, AreThoseOfTheScriptLanguage) {
    EXPECT_EQ(Archive::variableName(9), "$9");
    EXPECT_EQ(Archive::variableName(10), "$R0");
    EXPECT_EQ(Archive::variableName(26), "$PLUGINSDIR");
    EXPECT_EQ(Archive::variableName(31), "$_OUTDIR");
    EXPECT_EQ(Archive::variableName(32), "$_32_");
    EXPECT_EQ(Archive::shellFolderName(0x25), "$SYSDIR");
    EXPECT_EQ(Archive::shellFolderName(0x63), "$_SHELL_99_");
}

TEST(CodePages, OfLanguagesAreTheUsualOnes) {
    EXPECT_EQ(Archive::codePageOfLanguage(2052), 936u);
    EXPECT_EQ(Archive::codePageOfLanguage(1041), 932u);
    EXPECT_EQ(Archive::codePageOfLanguage(1049), 1251u);
    EXPECT_EQ(Archive::codePageOfLanguage(1033), 1252u);
}

TEST(CodePages, LeaveTextAloneThatIsUtf8Already) {
    EXPECT_EQ(Archive::utf8FromCodePage("升级 é", 1252), "升级 é");
    EXPECT_EQ(Archive::utf8FromCodePage("plain", 936), "plain");
}

TEST(CodePages, ReplaceWhatTheyDoNotKnow) {
    EXPECT_EQ(Archive::utf8FromCodePage("\x80\x81\x9F", 1252), "€\xEF\xBF\xBDŸ");
}

TEST(CodePages, ThatTheSystemDoesNotKnowAreWestern) { EXPECT_EQ(Archive::utf8FromCodePage("\xE9", 99999), "é"); }

TEST(CodePages, OfMalformedTextAreWestern) { EXPECT_EQ(Archive::utf8FromCodePage("\xE9", 936), "é"); }

TEST(Utf16, BecomesUtf8OfEveryLength) {
    const std::string units("a\0\xe9\0\xac\x20\x3d\xd8\x00\xde", 10);
    const auto* bytes = reinterpret_cast<const unsigned char*>(units.data());
    EXPECT_EQ(Archive::utf8FromUtf16({bytes, units.size()}), "aé€😀");
}

}  // namespace
