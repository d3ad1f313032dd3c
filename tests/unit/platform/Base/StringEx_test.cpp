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
    for (const wchar_t c : wide) {
        const auto unit = static_cast<char32_t>(c);
        const bool isSecondHalf =
            unit >= 0xDC00 && unit < 0xE000 && !points.empty() && points.back() >= 0xD800 && points.back() < 0xDC00;
        // Where the system's wide texts are UTF-16, two of them are one point.
        if (isSecondHalf && sizeof(wchar_t) == 2) {
            points.back() = 0x10000 + ((points.back() - 0xD800) << 10) + (unit - 0xDC00);
        } else {
            points += unit;
        }
    }
    EXPECT_EQ(points, GetParam().points);
}

INSTANTIATE_TEST_SUITE_P(StringEx, StringExWide,
                         testing::Values(WideCase{"Ascii", "abc", U"abc"},
                                         WideCase{"Chinese", "\xE4\xB8\xAD", U"\u4E2D"},
                                         WideCase{"BeyondTheBasicPlane", "\xF0\x9F\x98\x80", U"\U0001F600"},
                                         WideCase{"LoneContinuation",
                                                  "a\x80"
                                                  "b",
                                                  U"a\uFFFDb"},
                                         WideCase{"Overlong", "\xC0\xAF", U"\uFFFD\uFFFD"},
                                         WideCase{"Surrogate", "\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},
                                         WideCase{"OverlongOfThree", "\xE0\x80\xAF", U"\uFFFD\uFFFD\uFFFD"},
                                         WideCase{"OverlongOfFour", "\xF0\x80\x80\xAF", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
                                         WideCase{"PastTheLast", "\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
                                         WideCase{"GoesOnBehindABadByte",
                                                  "\xE4\xB8"
                                                  "a",
                                                  U"\uFFFD\uFFFDa"},
                                         WideCase{"ZeroByte", std::string("a\0b", 3), std::u32string(U"a\0b", 3)},
                                         WideCase{"CutShort", "\xE4\xB8", U"\uFFFD\uFFFD"},
                                         WideCase{"TooLarge", "\xF5\x80\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
                                         WideCase{"Empty", "", U""}),
                         [](const auto& each) { return each.param.name; });

TEST(StringEx, WideTextComesBack) {
    const std::string text = "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80";
    EXPECT_EQ(StringEx::wstring2string(StringEx::string2wstring(text)), text);
}

TEST(StringEx, LoneWideSurrogateBecomesAReplacement) {
    EXPECT_EQ(StringEx::wstring2string(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xEF\xBF\xBD");
}

TEST(StringEx, ReplacesByNothing) { EXPECT_EQ(StringEx::replace("a-b-", "-", ""), "ab"); }

TEST(StringEx, TextWithoutThePatternStaysAsItIs) {
    EXPECT_EQ(StringEx::replace("abc", "x", "y"), "abc");
    EXPECT_EQ(StringEx::replace("", "x", "y"), "");
    EXPECT_EQ(StringEx::replace("ab", "abc", "y"), "ab");
}

TEST(StringEx, ReplacesAZeroByteLikeAnyOther) {
    EXPECT_EQ(StringEx::replace(std::string("a\0b", 3), std::string("\0", 1), "-"), "a-b");
}

TEST(StringEx, SignsBesideTheLettersAreNotFolded) {
    EXPECT_FALSE(StringEx::iequals("@", "`"));
    EXPECT_FALSE(StringEx::iequals("[", "{"));
    EXPECT_EQ(StringEx::toLower("@[AZ]`{"), "@[az]`{");
}

TEST(StringEx, EmptyPartStandsAtTheBegin) {
    EXPECT_EQ(StringEx::indexOf("abc", ""), 0U);
    EXPECT_EQ(StringEx::indexOfByCase("abc", ""), 0U);
    EXPECT_EQ(StringEx::indexOfByCase("", ""), 0U);
}

TEST(StringEx, FindsTheFirstOfSeveral) {
    EXPECT_EQ(StringEx::indexOf("xabab", "ab"), 1U);
    EXPECT_EQ(StringEx::indexOfByCase("xABab", "ab"), 1U);
}

TEST(StringEx, PartLongerThanTheTextIsNowhere) {
    EXPECT_EQ(StringEx::indexOf("ab", "abc"), kNowhere);
    EXPECT_EQ(StringEx::indexOfByCase("ab", "ABC"), kNowhere);
}

TEST(StringEx, LowersNoOtherBytes) { EXPECT_EQ(StringEx::toLower("\xC3\x84"), "\xC3\x84"); }

TEST(StringEx, EveryCodePointComesBackFromTheWideForm) {
    for (const char32_t point :
         {0x0U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFDU, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        std::wstring wide;
        if (sizeof(wchar_t) == 2 && point > 0xFFFF) {
            wide = {static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10)),
                    static_cast<wchar_t>(0xDC00 + ((point - 0x10000) & 0x3FF))};
        } else {
            wide = {static_cast<wchar_t>(point)};
        }
        EXPECT_EQ(StringEx::string2wstring(StringEx::wstring2string(wide)), wide) << static_cast<unsigned>(point);
    }
}

TEST(StringEx, AnyBytesGiveTextThatIsUtf8) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string bytes{static_cast<char>(first), static_cast<char>(second)};
            const std::string clean = StringEx::wstring2string(StringEx::string2wstring(bytes));
            ASSERT_EQ(StringEx::wstring2string(StringEx::string2wstring(clean)), clean) << first << ' ' << second;
        }
    }
}

}  // namespace
