// The header's tables, and the ways in which a body can hide it.
#include "Archive/HeaderBlock.h"

#include "PackageFixture.h"
#include "PackedStreams.h"
#include "SyntheticPackage.h"

namespace {

using Archive::HeaderBlock;
using support::bareBlocks;
using support::deflated;
using support::le32;
using support::SyntheticPackage;

bool parses(const std::string& bytes, bool wide = false) {
    HeaderBlock header;
    return header.parse({bytes.begin(), bytes.end()}, wide);
}

struct Mutation {
    std::string name;
    size_t offset;
    uint32_t value;
};
void PrintTo(const Mutation& mutation, std::ostream* out) { *out << mutation.name; }
class HeaderTables : public testing::TestWithParam<Mutation> {};

SyntheticPackage somePackage() {
    SyntheticPackage package;
    package.addLanguage(1033, {0});
    package.extractFile(package.addText("a.txt"), package.addItem("content"));
    return package;
}

TEST_P(HeaderTables, ThatDoNotLieInItAreRefused) {
    std::string bytes = somePackage().header();
    ASSERT_TRUE(parses(bytes));
    bytes.replace(GetParam().offset, 4, le32(GetParam().value));
    EXPECT_FALSE(parses(bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Fields, HeaderTables,
    testing::Values(Mutation{"PagesInTheFixedPart", 4, 40}, Mutation{"PagesBehindTheEnd", 4, 0xFFFFFFFF},
                    Mutation{"TooManyPages", 8, 1}, Mutation{"EndlessPages", 8, 0xFFFFFFFF},
                    Mutation{"SectionsBehindTheEntries", 12, 320}, Mutation{"EntriesBehindTheStrings", 20, 100000},
                    Mutation{"TooManyEntries", 24, 2}, Mutation{"EndlessEntries", 24, 0xFFFFFFFF},
                    Mutation{"StringsBehindTheLanguages", 28, 100000}, Mutation{"LanguagesBehindTheEnd", 36, 100000},
                    Mutation{"TooManyLanguages", 40, 2}, Mutation{"EndlessLanguages", 40, 0xFFFFFFFF},
                    Mutation{"LanguageRowsOfNothing", 100, 0}, Mutation{"LanguageRowsTooLong", 100, 100},
                    Mutation{"LanguageRowsHuge", 100, 0xFFFFFFFF}),
    [](const auto& test) { return test.param.name; });

TEST(HeaderTable, CutAnywhereIsRefused) {
    const std::string bytes = somePackage().header();
    for (size_t length = 0; length < bytes.size(); ++length) EXPECT_FALSE(parses(bytes.substr(0, length))) << length;
}

TEST(HeaderTable, OfANarrowStubIsNoneOfAWideOne) { EXPECT_FALSE(parses(somePackage().header(), true)); }

// Bodies.

class HeaderHiding : public support::PackageFixture {
protected:
    void expectContent(const std::string& package) {
        ASSERT_TRUE(openBytes(package));
        ASSERT_TRUE(extract());
        EXPECT_EQ(mSink->content("a.txt"), "content");
    }
};

TEST_F(HeaderHiding, InASolidStreamOfBareStoredBlocks) {
    SyntheticPackage package(SyntheticPackage::Ansi2);
    package.extractFile(package.addText("a.txt"), package.addItem("content"));
    expectContent(package.wrap(bareBlocks(package.solidStream(), 100)));
}

TEST_F(HeaderHiding, InAPackedItemOfBareStoredBlocks) {
    SyntheticPackage package(SyntheticPackage::Ansi2);
    package.extractFile(package.addText("a.txt"), package.addPacked(bareBlocks("content", 3)));
    const std::string packed = bareBlocks(package.header(), 1000);
    const std::string data = package.solidStream().substr(4 + package.header().size());
    expectContent(package.wrap(le32(static_cast<uint32_t>(packed.size()) | 0x80000000u) + packed + data));
}

TEST_F(HeaderHiding, InASolidStreamThatLooksLikeAPackedItem) {
    // The stored block's length makes the first number one with its upper bit set.
    SyntheticPackage package;
    package.extractFile(package.addText("a.txt"), package.addItem("content"));
    const std::string stream = package.solidStream();
    std::string body;
    for (size_t first = 1; first < 70 && body.empty(); ++first) {
        std::string attempt = bareBlocks(stream.substr(0, first), first);
        attempt[0] = '\0';
        attempt += deflated(stream.substr(first));
        if ((static_cast<unsigned char>(attempt[3]) & 0x80) != 0) body = attempt;
    }
    if (body.empty()) {
        // The header's own length is the stream's first byte: lengthen the header until that has the bit.
        while ((package.header().size() & 0x80) == 0) package.addText("more");
        body = bareBlocks(package.solidStream(), 5000);
    }
    ASSERT_NE(static_cast<unsigned char>(body[3]) & 0x80, 0);
    expectContent(package.wrap(body));
}

TEST_F(HeaderHiding, InASolidStreamOfFollowingItems) {
    SyntheticPackage package;
    package.addItem("reserved, without a name");
    const int32_t second = package.addItem("content");
    package.extractFile(package.addText("a.txt"), second);
    package.extractFile(package.addText("b.txt"), package.addItem(""));
    expectContent(package.wrap(deflated(package.solidStream())));
    EXPECT_EQ(mSink->names(), (std::vector<std::string>{"a.txt", "b.txt"}));
}

TEST_F(HeaderHiding, IsNoUseWhenItemsOverlapInASolidStream) {
    SyntheticPackage package;
    const int32_t first = package.addItem("abcdefgh");
    package.extractFile(package.addText("a.txt"), first);
    package.extractFile(package.addText("b.txt"), first + 2);
    ASSERT_TRUE(openBytes(package.wrap(deflated(package.solidStream()))));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->names(), (std::vector<std::string>{"a.txt"}));
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Format});
}

struct SolidLie {
    std::string name, data;
    IExtractOutFile::ErrorCode error;
};
void PrintTo(const SolidLie& lie, std::ostream* out) { *out << lie.name; }
class LyingSolidItem : public HeaderHiding, public testing::WithParamInterface<SolidLie> {};

TEST_P(LyingSolidItem, EndsTheExtraction) {
    SyntheticPackage package;
    package.extractFile(package.addText("a.txt"), package.addData(GetParam().data));
    ASSERT_TRUE(openBytes(package.wrap(deflated(package.solidStream()))));
    EXPECT_FALSE(extract());
    EXPECT_TRUE(mSink->items.empty());
    EXPECT_EQ(mSink->errors, Errors{GetParam().error});
}

INSTANTIATE_TEST_SUITE_P(
    Prefixes, LyingSolidItem,
    testing::Values(SolidLie{"LongerThanTheStream", le32(100) + "x", IExtractOutFile::ErrorCode_Format},
                    SolidLie{"MarkedAsPacked", le32(0x80000001) + "x", IExtractOutFile::ErrorCode_Format},
                    SolidLie{"BeyondTheLimit", le32(0x7FFFFFFF) + "x", IExtractOutFile::ErrorCode_Limit},
                    SolidLie{"CutPrefix", "ab", IExtractOutFile::ErrorCode_Format},
                    SolidLie{"NoData", "", IExtractOutFile::ErrorCode_Format}),
    [](const auto& test) { return test.param.name; });

TEST_F(HeaderHiding, IsNoUseWhenTheLengthInTheStreamDiffers) {
    SyntheticPackage package;
    package.extractFile(package.addText("a.txt"), package.addItem("content"));
    EXPECT_FALSE(openBytes(package.wrap(deflated(package.solidStream()), package.header().size() - 1)));
    EXPECT_FALSE(openBytes(package.wrap(deflated(package.solidStream()), package.header().size() + 1)));
}

TEST_F(HeaderHiding, IsNoUseWhenAPackedHeaderIsLongerThanDeclared) {
    SyntheticPackage package;
    const std::string packed = deflated(package.header() + "beyond");
    EXPECT_FALSE(openBytes(
        package.wrap(le32(static_cast<uint32_t>(packed.size()) | 0x80000000u) + packed, package.header().size())));
}

}  // namespace
