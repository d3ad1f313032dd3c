// Packages whose content means harm: they are refused or read within 20 seconds and 256 MiB.
#include "HostilePackage.h"
#include "PackageFixture.h"
#include "PackedStreams.h"
#include "SyntheticPackage.h"

namespace {

using support::le32;
using support::PackageReading;
using support::SyntheticPackage;

class HostileContent : public support::PackageFixture {
protected:
    PackageReading read(const std::string& bytes) { return support::readHostile(path(), bytes); }
    static std::string zeros(size_t mebibytes) { return std::string(mebibytes << 20, '\0'); }
};

// Bombs.

struct Bomb {
    std::string name;
    std::function<std::string()> stream;
};
void PrintTo(const Bomb& bomb, std::ostream* out) { *out << bomb.name; }
class Bombs : public HostileContent, public testing::WithParamInterface<Bomb> {};

const Bomb kBombs[] = {{"Deflate", [] { return support::deflateBomb(1024); }},
                       {"Lzma", [] { return support::lzmaBomb(140); }},
                       {"Bzip2", [] { return support::bzip2Bomb(400); }},
                       {"LzmaBehindAByte", [] { return std::string(1, '\0') + support::lzmaBomb(140); }}};

TEST_P(Bombs, InAnItemEndTheExtraction) {
    SyntheticPackage package;
    package.extractFile(package.addText("good"), package.addItem("good"));
    package.extractFile(package.addText("bomb"), package.addPacked(GetParam().stream()));
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, PackageReading::Failed);
    EXPECT_EQ(reading.error, IExtractOutFile::ErrorCode_Limit);
    EXPECT_EQ(reading.bytes, 4u);
}

TEST_P(Bombs, InAnUninstallersPatchesEndTheExtraction) {
    SyntheticPackage package;
    const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
    const int32_t patches = package.addPacked(GetParam().stream());
    package.addItem("data");
    package.addEntry(62, {name, patches, 12, name, 0, 0});
    EXPECT_EQ(read(package.build()).error, IExtractOutFile::ErrorCode_Limit);
}

TEST_P(Bombs, InAnUninstallersDataEndTheExtraction) {
    SyntheticPackage package;
    const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
    const int32_t patches = package.addItem(std::string(1, '\0'));
    package.addPacked(GetParam().stream());
    package.addEntry(62, {name, patches, 12, name, 0, 0});
    EXPECT_EQ(read(package.build()).error, IExtractOutFile::ErrorCode_Limit);
}

TEST_P(Bombs, InTheHeaderAreRefused) {
    const std::string packed = GetParam().stream();
    for (uint32_t length : {uint32_t{32} << 20, uint32_t{400}}) {
        const std::string item = le32(static_cast<uint32_t>(packed.size()) | 0x80000000u) + packed;
        EXPECT_EQ(read(SyntheticPackage().wrap(item, length)).outcome, PackageReading::Refused);
        EXPECT_EQ(read(SyntheticPackage().wrap(packed, length)).outcome, PackageReading::Refused);
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, Bombs, testing::ValuesIn(kBombs), [](const auto& test) { return test.param.name; });

/// Items that are each within what one may be.
class ManyBombs : public HostileContent, public testing::WithParamInterface<Bomb> {};

TEST_P(ManyBombs, TogetherEndTheExtraction) {
    SyntheticPackage package;
    const std::string stream = GetParam().stream();
    for (int i = 0; i < 40; ++i) {
        package.extractFile(package.addText("bomb" + std::to_string(i)), package.addPacked(stream));
    }
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.error, IExtractOutFile::ErrorCode_Limit);
    EXPECT_LE(reading.bytes, uint64_t{256} << 20);
}

INSTANTIATE_TEST_SUITE_P(Methods, ManyBombs,
                         testing::Values(Bomb{"Deflate", [] { return support::deflateBomb(100); }},
                                         Bomb{"Lzma", [] { return support::lzmaBomb(60); }},
                                         Bomb{"Bzip2", [] { return support::bzip2Bomb(2); }}),
                         [](const auto& test) { return test.param.name; });

TEST_F(HostileContent, OfOneLargeItemInAStreamEndsTheExtraction) {
    SyntheticPackage package;
    package.extractFile(package.addText("bomb"), package.addData(le32(1024u << 20)));
    const PackageReading deflate = read(package.wrap(support::deflateBomb(1024, package.solidStream())));
    EXPECT_EQ(deflate.error, IExtractOutFile::ErrorCode_Limit);
    const PackageReading lzma = read(package.wrap(support::lzmaBomb(20, package.solidStream())));
    EXPECT_EQ(lzma.error, IExtractOutFile::ErrorCode_Limit);
}

TEST_F(HostileContent, OfManyItemsInAStreamEndsTheExtraction) {
    // Zeros are items of no length, each with a name of its own.
    SyntheticPackage package;
    for (int i = 0; i < 1000; ++i) package.extractFile(package.addText("n" + std::to_string(i)), i * (1 << 20));
    const PackageReading reading = read(package.wrap(support::deflateBomb(1024, package.solidStream())));
    EXPECT_EQ(reading.outcome, PackageReading::Failed);
    EXPECT_EQ(reading.error, IExtractOutFile::ErrorCode_Limit);
    EXPECT_EQ(reading.bytes, 0u);
}

TEST_F(HostileContent, FarBehindInAStreamEndsTheExtraction) {
    SyntheticPackage package;
    package.extractFile(package.addText("far"), 0x7FFFFFFF);
    EXPECT_EQ(read(package.wrap(support::deflateBomb(1024, package.solidStream()))).error,
              IExtractOutFile::ErrorCode_Limit);
}

TEST_F(HostileContent, OfManyNamesEndsTheExtraction) {
    SyntheticPackage package;
    const int32_t offset = package.addPacked(support::deflateBomb(100));
    for (int i = 0; i < 20000; ++i) package.extractFile(package.addText("n" + std::to_string(i)), offset);
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.error, IExtractOutFile::ErrorCode_Limit);
    EXPECT_LE(reading.bytes, uint64_t{1} << 30);
}

TEST_F(HostileContent, ThatFitsTwoMethodsIsDecodedWithinTheLimits) {
    // Each item looks like LZMA at first and unpacks to much before it turns out to be none.
    SyntheticPackage package;
    std::string stream = support::lzmaBomb(60);
    stream.resize(stream.size() * 9 / 10);
    for (int i = 0; i < 100; ++i) {
        package.extractFile(package.addText("n" + std::to_string(i)), package.addPacked(stream));
    }
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, PackageReading::Failed);
}

// Items that reach into each other.

TEST_F(HostileContent, OfItemsThatReachIntoEachOtherIsRefused) {
    SyntheticPackage package;
    // Empty blocks: much to read, nothing to write. Each item is the rest of the package from there on.
    std::string blocks;
    for (int i = 0; i < 400000; ++i) blocks += std::string("\0\0\0\xff\xff", 5);
    const int32_t begin = package.addPacked(blocks + support::deflated(""));
    const int32_t second = begin + 8;
    for (int i = 0; i < 2000; ++i)
        package.extractFile(package.addText("n" + std::to_string(i)), i == 0 ? begin : second + 5 * i);
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, PackageReading::Failed);
    EXPECT_EQ(reading.error, IExtractOutFile::ErrorCode_Format);
    EXPECT_EQ(reading.items, 0u);
}

TEST_F(HostileContent, OfAnItemThatReachesIntoTheNextIsRefused) {
    SyntheticPackage package;
    const int32_t first = package.addItem("abcdefgh");
    package.extractFile(package.addText("a"), first);
    package.extractFile(package.addText("b"), first + 6);
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.error, IExtractOutFile::ErrorCode_Format);
    EXPECT_EQ(reading.items, 0u);
}

TEST_F(HostileContent, OfAnUninstallerWithinAFileIsReadApart) {
    // The same offset as a file and as an uninstaller: both readings are bounded by the next offset.
    SyntheticPackage package;
    const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
    const int32_t offset = package.addItem(std::string(1, '\0'));
    package.addItem("data");
    package.extractFile(package.addText("a"), offset);
    package.addEntry(62, {name, offset, 12, name, 0, 0});
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, PackageReading::Whole);
    EXPECT_EQ(reading.bytes, 1u + 512 + 4);
}

// Streams that cost time and give nothing.

std::string emptyBareBlocks(size_t count) {
    std::string stream;
    for (size_t i = 0; i < count; ++i) stream += std::string(3, '\0');
    return stream + support::bareBlock("", true);
}

TEST_F(HostileContent, OfBlocksWithoutContentIsReadInTime) {
    SyntheticPackage package;
    package.extractFile(package.addText("a"),
                        package.addPacked(support::bareBlock("x", false) + emptyBareBlocks(2000000)));
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, PackageReading::Whole);
    EXPECT_EQ(reading.bytes, 1u);
    EXPECT_LT(reading.seconds, 10);
}

TEST_F(HostileContent, OfBlocksThatHandTheWindowToAndFroIsRefused) {
    SyntheticPackage package;
    // An empty bare block, then an empty packed one that ends on a byte: 000 and seven zeros, then a stored block's
    // 000.
    std::string stream = support::bareBlock(std::string(40000, 'w'), false);
    for (int i = 0; i < 300000; ++i) stream += std::string("\0\0\0\2\0\0\0", 7);
    package.extractFile(package.addText("a"), package.addPacked(stream + support::bareBlock("", true)));
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, PackageReading::Failed);
    EXPECT_LT(reading.seconds, 10);
}

// Dictionaries.

struct Dictionary {
    std::string name;
    uint32_t bytes;
};
void PrintTo(const Dictionary& dictionary, std::ostream* out) { *out << dictionary.name; }
class DeclaredDictionary : public HostileContent, public testing::WithParamInterface<Dictionary> {
protected:
    /// A stream whose window could really be used.
    static std::string stream(const std::string& text) {
        std::string packed = support::lzmaBomb(60, text);
        packed.replace(1, 4, le32(GetParam().bytes));
        return packed;
    }
};

TEST_P(DeclaredDictionary, OfAnItemTakesLittleMemory) {
    SyntheticPackage package;
    const std::string packed = stream({});
    for (const char* name : {"a", "b", "c", "d"}) package.extractFile(package.addText(name), package.addPacked(packed));
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, GetParam().bytes > 1u << 30 ? PackageReading::Failed : PackageReading::Whole);
}

TEST_P(DeclaredDictionary, OfALaterItemTakesLittleMemory) {
    SyntheticPackage package;
    package.extractFile(package.addText("small"), package.addPacked(support::lzmaStream("small")));
    const std::string packed = stream({});
    for (const char* name : {"a", "b", "c", "d"}) package.extractFile(package.addText(name), package.addPacked(packed));
    const PackageReading reading = read(package.build());
    EXPECT_EQ(reading.outcome, GetParam().bytes > 1u << 30 ? PackageReading::Failed : PackageReading::Whole);
}

TEST_P(DeclaredDictionary, OfAStreamTakesLittleMemory) {
    SyntheticPackage package;
    package.extractFile(package.addText("a"), package.addData(le32(59u << 20)));
    const PackageReading reading = read(package.wrap(stream(package.solidStream())));
    EXPECT_EQ(reading.outcome, GetParam().bytes > 1u << 30 ? PackageReading::Refused : PackageReading::Whole);
}

TEST_P(DeclaredDictionary, OfTheHeaderTakesLittleMemory) {
    SyntheticPackage package;
    package.extractFile(package.addText("a"), package.addItem("content"));
    const std::string packed = support::lzmaStream(package.header(), false, 1u << 20, GetParam().bytes);
    const PackageReading reading =
        read(package.wrap(le32(static_cast<uint32_t>(packed.size()) | 0x80000000u) + packed + le32(7) + "content"));
    EXPECT_EQ(reading.outcome, GetParam().bytes > 1u << 30 ? PackageReading::Refused : PackageReading::Whole);
    EXPECT_LT(reading.memory, uint64_t{8} << 20);
}

INSTANTIATE_TEST_SUITE_P(Sizes, DeclaredDictionary,
                         testing::Values(Dictionary{"Of16MiB", 16u << 20}, Dictionary{"Of64MiB", 64u << 20},
                                         Dictionary{"Of65MiB", 65u << 20}, Dictionary{"Of512MiB", 512u << 20},
                                         Dictionary{"Of1GiB", 1u << 30},
                                         Dictionary{"Of1GiBAndMore", (1u << 30) + 65536},
                                         Dictionary{"Of2GiB", 2u << 30}, Dictionary{"Of3GiB", 3u << 30},
                                         Dictionary{"Of4GiB", 0xFFFF0000}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
