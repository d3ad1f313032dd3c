#include "Public/Base/StringEx.h"

using Public::Base::StringEx;

namespace {

constexpr size_t kNowhere = static_cast<size_t>(-1);

TEST(StringEx, ReplacesEveryOccurrence) { EXPECT_EQ(StringEx::replace("a/b/c", "/", "\\"), "a\\b\\c"); }

TEST(StringEx, ReplacesDoubledBackslashesByOne) {
    EXPECT_EQ(StringEx::replace("C:\\\\store\\\\x", "\\\\", "\\"), "C:\\store\\x");
}

TEST(StringEx, ReplacesFromLeftToRightWithoutLookingAtWhatItPutIn) {
    EXPECT_EQ(StringEx::replace("aaa", "aa", "a"), "aa");
    EXPECT_EQ(StringEx::replace("ab", "a", "aa"), "aab");
}

TEST(StringEx, EmptyPatternReplacesNothing) { EXPECT_EQ(StringEx::replace("abc", "", "x"), "abc"); }

TEST(StringEx, ComparesWithoutRegardToCase) {
    EXPECT_TRUE(StringEx::iequals("AbC", "aBc"));
    EXPECT_FALSE(StringEx::iequals("abc", "abcd"));
    EXPECT_FALSE(StringEx::iequals("abc", "abd"));
    EXPECT_TRUE(StringEx::iequals("", ""));
}

TEST(StringEx, FoldsAsciiLettersOnly) { EXPECT_FALSE(StringEx::iequals("\xC3\x84", "\xC3\xA4")); }

TEST(StringEx, FindsAPart) {
    EXPECT_EQ(StringEx::indexOf("hello", "ll"), 2U);
    EXPECT_EQ(StringEx::indexOf("hello", "LL"), kNowhere);
    EXPECT_EQ(StringEx::indexOf("", "x"), kNowhere);
}

TEST(StringEx, FindsAPartWithoutRegardToCase) {
    EXPECT_EQ(StringEx::indexOfByCase("C:\\windows\\SYSTEM32", "\\Windows\\system32"), 2U);
    EXPECT_EQ(StringEx::indexOfByCase("C:\\winnt", "\\Windows\\system32"), kNowhere);
}

TEST(StringEx, LowersAsciiLetters) { EXPECT_EQ(StringEx::toLower("LibX.DLL"), "libx.dll"); }

struct WideCase {
    const char* name;
    std::string narrow;
    std::u32string points;
};

class StringExWide : public testing::TestWithParam<WideCase> {};

TEST_P(StringExWide, ConvertsFromUtf8) {
    std::u32string points;
    const std::wstring wide = StringEx::string2wstring(GetParam().narrow);
    for (const wchar_t c : wide) points += static_cast<char32_t>(c);
    EXPECT_EQ(points, GetParam().points);
}

INSTANTIATE_TEST_SUITE_P(
    StringEx, StringExWide,
    testing::Values(WideCase{"Ascii", "abc", U"abc"}, WideCase{"Chinese", "\xE4\xB8\xAD", U"\u4E2D"},
                    WideCase{"BeyondTheBasicPlane", "\xF0\x9F\x98\x80", U"\U0001F600"},
                    WideCase{"LoneContinuation", "a\x80" "b", U"a\uFFFDb"},
                    WideCase{"Overlong", "\xC0\xAF", U"\uFFFD\uFFFD"},
                    WideCase{"Surrogate", "\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},
                    WideCase{"CutShort", "\xE4\xB8", U"\uFFFD\uFFFD"},
                    WideCase{"TooLarge", "\xF5\x80\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"}, WideCase{"Empty", "", U""}),
    [](const auto& each) { return each.param.name; });

TEST(StringEx, WideTextComesBack) {
    const std::string text = "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80";
    EXPECT_EQ(StringEx::wstring2string(StringEx::string2wstring(text)), text);
}

TEST(StringEx, LoneWideSurrogateBecomesAReplacement) {
    EXPECT_EQ(StringEx::wstring2string(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xEF\xBF\xBD");
}

}  // namespace
