#include "Public/Base/Version.h"

#include <limits>

using Public::Base::Version;

namespace {

struct TextCase {
    const char* name;
    const char* text;
    const char* whole;   // what toString gives
    const char* simple;  // what toSimpleString gives
};

class VersionText : public testing::TestWithParam<TextCase> {};

TEST_P(VersionText, ReadsAndWrites) {
    const Version version(GetParam().text, 0);
    EXPECT_EQ(version.toString(), GetParam().whole);
    EXPECT_EQ(version.toSimpleString(), GetParam().simple);
    EXPECT_EQ(Version(version.toString(), 0), version);
}

INSTANTIATE_TEST_SUITE_P(
    Version, VersionText,
    testing::Values(
        TextCase{"FourNumbers", "1.11.0.8", "1.11.0.8", "1.11.0.8"}, TextCase{"TwoNumbersStayTwo", "2.0", "2.0", "2.0"},
        TextCase{"OneNumber", "7", "7", "7"}, TextCase{"Oem", "1.2-oem3", "1.2-oem3", "1.2"},
        TextCase{"Build", "1.2-b44", "1.2-b44", "1.2"}, TextCase{"Revision", "1.2-rabc_9", "1.2-rabc_9", "1.2"},
        TextCase{"AllParts", "1.2.3.4-oem5-b6-rX", "1.2.3.4-oem5-b6-rX", "1.2.3.4"},
        TextCase{"OemZeroIsNone", "1.2-oem0", "1.2", "1.2"}, TextCase{"BuildZeroIsNone", "1.2-b0", "1.2", "1.2"},
        TextCase{"LeadingZeros", "01.002", "1.2", "1.2"},
        TextCase{"LargestNumber", "2147483647", "2147483647", "2147483647"},
        TextCase{"LongestRevision", "1-r12345678901234567890123456789012", "1-r12345678901234567890123456789012", "1"},
        TextCase{"Empty", "", "", ""}, TextCase{"NumberTooLarge", "2147483648", "", ""},
        TextCase{"FiveNumbers", "1.2.3.4.5", "", ""}, TextCase{"TrailingPoint", "1.2.", "", ""},
        TextCase{"LeadingPoint", ".1", "", ""}, TextCase{"Letters", "abc", "", ""}, TextCase{"Negative", "-1", "", ""},
        TextCase{"Sign", "+1", "", ""}, TextCase{"LeadingBlank", " 1.2", "", ""},
        TextCase{"TrailingBlank", "1.2 ", "", ""}, TextCase{"WrongOrder", "1.2-b1-oem2", "", ""},
        TextCase{"RevisionEmpty", "1.2-r", "", ""},
        TextCase{"RevisionTooLong", "1-r123456789012345678901234567890123", "", ""},
        TextCase{"RevisionWithSeparator", "1.2-ra/b", "", ""}, TextCase{"ClimbingPath", "../../etc/passwd", "", ""},
        TextCase{"PathBehindNumbers", "1.2/../..", "", ""}, TextCase{"Backslash", "1.2\\x", "", ""},
        TextCase{"NegativeOem", "1.2-oem-3", "", ""}, TextCase{"OemWithoutNumber", "1.2-oem", "", ""},
        TextCase{"LargestParts", "1-oem2147483647-b2147483647", "1-oem2147483647-b2147483647", "1"},
        TextCase{"OemTooLarge", "1-oem2147483648", "", ""}, TextCase{"BuildTooLarge", "1-b99999999999", "", ""},
        TextCase{"ManyLeadingZeros", "00000000000000000000000000000007.0", "7.0", "7.0"},
        TextCase{"EmptyNumber", "1..2", "", ""}, TextCase{"OemTwice", "1-oem1-oem2", "", ""},
        TextCase{"RevisionBeforeBuild", "1-rX-b1", "", ""}, TextCase{"PartsWithoutNumbers", "-oem1", "", ""},
        TextCase{"Hexadecimal", "0x10", "", ""}, TextCase{"Exponent", "1e3", "", ""},
        TextCase{"LineEnd", "1.2\n", "", ""}, TextCase{"RevisionWithBlank", "1.2-ra b", "", ""},
        TextCase{"RevisionOfOtherLetters", "1.2-r\xC3\xA4", "", ""}, TextCase{"UpperCaseOem", "1.2-OEM3", "", ""}),
    [](const auto& each) { return each.param.name; });

TEST(Version, ZeroByteInTextGivesTheEmptyVersion) { EXPECT_EQ(Version(std::string("1.2\0", 4), 0).toString(), ""); }

TEST(Version, DefaultIsEmpty) { EXPECT_EQ(Version().toString(), ""); }

TEST(Version, AccessorsGiveTheParts) {
    const Version version("1.2.3.4-oem5-b6-rX", 0);
    EXPECT_EQ(version.OEM(), 5);
    EXPECT_EQ(version.Build(), 6);
    EXPECT_EQ(version.Revision(), "X");
}

struct OrderCase {
    const char* name;
    const char* less;
    const char* greater;
};

class VersionOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(VersionOrder, IsStrictBothWays) {
    const Version less(GetParam().less, 0), greater(GetParam().greater, 0);
    EXPECT_TRUE(less < greater);
    EXPECT_TRUE(less <= greater);
    EXPECT_TRUE(less != greater);
    EXPECT_TRUE(greater > less);
    EXPECT_TRUE(greater >= less);
    EXPECT_FALSE(greater < less);
    EXPECT_FALSE(less == greater);
}

INSTANTIATE_TEST_SUITE_P(
    Version, VersionOrder,
    testing::Values(OrderCase{"LastNumber", "1.11.0.8", "1.11.0.9"}, OrderCase{"NumbersNotText", "1.9", "1.10"},
                    OrderCase{"FirstNumber", "1.99.99.99", "2"}, OrderCase{"OemAfterNumbers", "1.0", "1.0-oem1"},
                    OrderCase{"OemBeforeBuild", "1.0-b9", "1.0-oem1"},
                    OrderCase{"BuildBeforeRevision", "1.0-rz", "1.0-b1"},
                    OrderCase{"RevisionByBytes", "1.0-rA", "1.0-ra"}, OrderCase{"EmptyFirst", "", "0.0.0.1"}),
    [](const auto& each) { return each.param.name; });

TEST(Version, MissingNumbersCompareAsZero) {
    EXPECT_EQ(Version("1.2", 0), Version("1.2.0.0", 0));
    EXPECT_EQ(Version("", 0), Version("0", 0));
}

TEST(Version, ChangedPartsComeBackFromTheText) {
    Version version("1.2.3.4", 0);
    version.OEM() = 9;
    version.Build() = 12;
    version.Revision() = "beta_2";
    EXPECT_EQ(version.toString(), "1.2.3.4-oem9-b12-rbeta_2");
    EXPECT_EQ(Version(version.toString(), 0), version);
}

TEST(Version, PartsThatTheTextCannotCarryCountAsNone) {
    Version version("1.2", 0);
    version.OEM() = -5;
    version.Build() = -1;
    version.Revision() = "a/b";
    EXPECT_EQ(version.toString(), "1.2");
    EXPECT_EQ(version, Version("1.2", 0));
    EXPECT_EQ(Version(version.toString(), 0), version);
}

TEST(Version, EmptyVersionStaysEmptyWhateverItsParts) {
    Version version;
    version.OEM() = 3;
    version.Revision() = "x";
    EXPECT_EQ(version.toString(), "");
    EXPECT_EQ(version, Version());
}

TEST(Version, OrderIsTotalOverAGrid) {
    std::vector<Version> versions;
    for (const char* text : {"", "0", "1", "1.0.0.1", "1-oem1", "1-oem1-b1", "1-b1", "1-ra", "1-b1-ra", "2", "1.1"}) {
        versions.emplace_back(text, 0);
    }
    for (const auto& a : versions) {
        for (const auto& b : versions) {
            EXPECT_EQ((a < b) + (b < a) + (a == b), 1) << a.toString() << " against " << b.toString();
            for (const auto& c : versions) {
                EXPECT_TRUE(a < c || !(a < b && b < c));
            }
        }
    }
}

/// Parts that hosts could write into a version, sound and not.
const int kParts[] = {0, 1, 7, std::numeric_limits<int>::max(), -1, std::numeric_limits<int>::min()};
const char* const kRevisions[] = {"",
                                  "a",
                                  "A_9",
                                  "-b5",
                                  "a/b",
                                  "..",
                                  "a b",
                                  "\xE4\xB8\xAD",
                                  "-oem1",
                                  "1.2",
                                  "12345678901234567890123456789012",
                                  "123456789012345678901234567890123"};

TEST(Version, EveryVersionComesBackFromItsTextWhateverItsParts) {
    for (const char* text : {"", "0", "1.2", "1.2.3.4", "1.2.3.4-oem5-b6-rX"}) {
        for (const int oem : kParts) {
            for (const int build : kParts) {
                for (const char* revision : kRevisions) {
                    Version version(text, 0);
                    version.OEM() = oem;
                    version.Build() = build;
                    version.Revision() = revision;
                    const Version again(version.toString(), 0);
                    ASSERT_EQ(again, version) << version.toString();
                    ASSERT_EQ(again.toString(), version.toString());
                    ASSERT_FALSE(again < version || version < again) << version.toString();
                }
            }
        }
    }
}

TEST(Version, TextNeverHoldsASeparatorWhateverTheRevision) {
    for (const char* revision : kRevisions) {
        Version version("1.2", 0);
        version.Revision() = revision;
        EXPECT_EQ(version.toString().find_first_of("/\\: "), std::string::npos) << version.toString();
    }
}

TEST(Version, SimpleTextReadsBackAsTheNumbersAlone) {
    const Version whole("1.11.0.8-oem3-b7-rX", 0);
    Version bare = whole;
    bare.OEM() = 0;
    bare.Build() = 0;
    bare.Revision().clear();
    EXPECT_EQ(Version(whole.toSimpleString(), 0), bare);
}

TEST(Version, ClearedBuildAndRevisionNoLongerTakePartInTheOrder) {
    Version release("1.2-b9-rZ", 0);
    EXPECT_NE(release, Version("1.2", 0));
    release.Build() = 0;
    release.Revision().clear();
    EXPECT_EQ(release, Version("1.2", 0));
}

TEST(Version, RevisionWithAZeroByteCountsAsNone) {
    Version version("1.2", 0);
    version.Revision() = std::string("a\0b", 3);
    EXPECT_EQ(version.toString(), "1.2");
}

TEST(Version, CopiesAreIndependent) {
    const Version first("1.2-rA", 0);
    Version second = first;
    second.Revision() = "B";
    EXPECT_EQ(first.toString(), "1.2-rA");
    EXPECT_EQ(second.toString(), "1.2-rB");
}

TEST(Version, LongHostileTextIsRefused) {
    EXPECT_EQ(Version(std::string(1000000, '9'), 0).toString(), "");
    EXPECT_EQ(Version("1.2-r" + std::string(1000000, 'a'), 0).toString(), "");
    EXPECT_EQ(Version("1" + std::string(1000000, '.'), 0).toString(), "");
}

}  // namespace
