#include "OrvInstaller/NsisParse.h"

#include "PeBuilder.h"

using namespace Tarnwick::OrvUpdate;

namespace {

std::string program(bool is64) { return support::buildPe({is64, {}, {}, ""}).bytes; }

bool give(NsisParse& sink, const std::string& bytes) {
    return sink.write(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

struct ItemCase {
    const char* title;
    std::string name;
    uint32_t bits;
    bool client;
    bool server;
    bool wanted;
};
void PrintTo(const ItemCase& one, std::ostream* out) { *out << one.title; }

class NsisParseItem : public testing::TestWithParam<ItemCase> {};

}  // namespace

TEST_P(NsisParseItem, TellsWhatItMeans) {
    NsisParse sink;
    EXPECT_TRUE(sink.open(GetParam().name, true));
    EXPECT_EQ(sink.systemBits(), GetParam().bits);
    EXPECT_EQ(sink.hasClient(), GetParam().client);
    EXPECT_EQ(sink.hasServer(), GetParam().server);
    EXPECT_EQ(give(sink, program(true)), GetParam().wanted);
    EXPECT_EQ(sink.systemBits(), GetParam().wanted ? 64U : GetParam().bits);
    EXPECT_TRUE(sink.close());
}

INSTANTIATE_TEST_SUITE_P(
    Items, NsisParseItem,
    testing::Values(ItemCase{"Marker64", "win64.sysbits", 64, false, false, false},
                    ItemCase{"Marker32", "win32.sysbits", 32, false, false, false},
                    ItemCase{"MarkerInDirectory", "a\\b\\win64.sysbits", 64, false, false, false},
                    ItemCase{"MarkerBehindForwardSeparator", "a/win32.sysbits", 32, false, false, false},
                    ItemCase{"MarkerBehindTheLastForwardSeparatorAloneWithABackslashBefore", "a\\b/win64.sysbits", 0,
                             false, false, false},
                    ItemCase{"MarkerOfAnotherCase", "Win64.sysbits", 0, false, false, false},
                    ItemCase{"ServerMsi", "Server.msi", 0, false, true, false},
                    ItemCase{"ClientMsi", "Client.msi", 0, true, false, false},
                    ItemCase{"MsiInDirectory", "pkg\\Client.msi", 0, true, false, false},
                    ItemCase{"MsiWithAPrefixIsNone", "OrvServer.msi", 0, false, false, false},
                    ItemCase{"ServerProgram", "Orv Server\\OrvServer.exe", 0, false, true, true},
                    ItemCase{"ClientProgram", "Orv Client\\OrvClient.exe", 0, true, false, true},
                    ItemCase{"AnyExtensionIsLookedAt", "Orv Client\\readme.txt", 0, true, false, true},
                    ItemCase{"NoExtensionIsLookedAt", "Orv Client\\readme", 0, true, false, true},
                    ItemCase{"ServerBeforeClient", "Orv Server\\Orv Client\\a.exe", 0, false, true, true},
                    ItemCase{"ComponentAnywhereInTheName", "x\\My Orv Client 2\\a.exe", 0, true, false, true},
                    ItemCase{"MarkerInsideAComponent", "Orv Client\\win64.sysbits", 64, true, false, false},
                    ItemCase{"VideoWallIsNeither", "Orv VideoWall\\a.exe", 0, false, false, false},
                    ItemCase{"OtherProgram", "setup.exe", 0, false, false, false},
                    ItemCase{"EmptyName", "", 0, false, false, false}),
    [](const auto& one) { return one.param.title; });

TEST(NsisParse, BeginsWithNothingKnown) {
    const NsisParse sink;
    EXPECT_EQ(sink.systemBits(), 0U);
    EXPECT_FALSE(sink.hasClient());
    EXPECT_FALSE(sink.hasServer());
    EXPECT_EQ(sink.errorCode(), IExtractOutFile::ErrorCode_None);
}

TEST(NsisParse, TellsA32BitProgram) {
    NsisParse sink;
    sink.open("Orv Client\\a.exe", false);
    EXPECT_TRUE(give(sink, program(false)));
    EXPECT_EQ(sink.systemBits(), 32U);
}

TEST(NsisParse, LooksNoFurtherOnceTheWordSizeIsKnown) {
    NsisParse sink;
    sink.open("Orv Client\\a.exe", false);
    give(sink, program(true));
    sink.open("Orv Server\\b.exe", false);
    EXPECT_FALSE(give(sink, program(false)));
    EXPECT_EQ(sink.systemBits(), 64U);
}

TEST(NsisParse, LooksOnWhileNoProgramHasComeAlong) {
    NsisParse sink;
    sink.open("Orv Client\\readme.txt", false);
    EXPECT_TRUE(give(sink, "only text"));
    EXPECT_EQ(sink.systemBits(), 0U);
    sink.open("Orv Client\\a.exe", false);
    EXPECT_TRUE(give(sink, program(false)));
    EXPECT_EQ(sink.systemBits(), 32U);
}

TEST(NsisParse, ALaterBlockOfOneItemResetsTheWordSize) {
    NsisParse sink;
    sink.open("Orv Client\\a.exe", false);
    give(sink, program(true));
    EXPECT_TRUE(give(sink, "the rest of the program"));
    EXPECT_EQ(sink.systemBits(), 0U);
}

TEST(NsisParse, AMarkerReplacesTheOneBefore) {
    NsisParse sink;
    sink.open("win64.sysbits", false);
    sink.open("win32.sysbits", false);
    EXPECT_EQ(sink.systemBits(), 32U);
}

TEST(NsisParse, RefusesBytesBeforeAnyItem) {
    NsisParse sink;
    EXPECT_FALSE(give(sink, program(true)));
}

TEST(NsisParse, KeepsTheLastErrorCode) {
    NsisParse sink;
    sink.setError(IExtractOutFile::ErrorCode_Data);
    sink.setError(IExtractOutFile::ErrorCode_Checksum);
    EXPECT_EQ(sink.errorCode(), IExtractOutFile::ErrorCode_Checksum);
}

namespace {

struct HeadCase {
    const char* title;
    std::function<std::string()> bytes;
};
void PrintTo(const HeadCase& one, std::ostream* out) { *out << one.title; }

class NsisParseHead : public testing::TestWithParam<HeadCase> {};

std::string damaged(size_t offset, uint32_t value) {
    support::PeFile file = support::buildPe({});
    file.set32(offset, value);
    return file.bytes;
}

}  // namespace

TEST_P(NsisParseHead, GivesNoWordSize) {
    NsisParse sink;
    sink.open("Orv Client\\a.exe", false);
    // A copy of exactly these bytes, so that a sanitizer sees a read behind them.
    const std::string bytes = GetParam().bytes();
    const std::vector<char> exact(bytes.begin(), bytes.end());
    EXPECT_TRUE(sink.write(exact.data(), static_cast<unsigned int>(exact.size())));
    EXPECT_EQ(sink.systemBits(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Damaged, NsisParseHead,
    testing::Values(HeadCase{"Empty", [] { return std::string(); }},
                    HeadCase{"OneByte", [] { return std::string("M"); }},
                    HeadCase{"MagicAlone", [] { return std::string("MZ"); }},
                    HeadCase{"EndsBeforeTheOffset", [] { return program(true).substr(0, 62); }},
                    HeadCase{"EndsBeforeTheNtHeader", [] { return program(true).substr(0, 64); }},
                    HeadCase{"EndsBeforeTheOptionalMagic", [] { return program(true).substr(0, 64 + 24); }},
                    HeadCase{"EndsInsideTheOptionalMagic", [] { return program(true).substr(0, 64 + 25); }},
                    HeadCase{"WrongDosMagic", [] { return damaged(0, 0x4D5A); }},
                    HeadCase{"WrongNtMagic", [] { return damaged(64, 0x454E); }},
                    HeadCase{"WrongOptionalMagic", [] { return damaged(64 + 24, 0x107); }},
                    HeadCase{"OffsetBehindTheEnd", [] { return damaged(60, 0x7FFFFFFF); }},
                    HeadCase{"OffsetThatWouldWrap", [] { return damaged(60, 0xFFFFFFF0); }}),
    [](const auto& one) { return one.param.title; });
