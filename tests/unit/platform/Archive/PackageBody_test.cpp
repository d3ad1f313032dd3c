// How a package is found in its file and how its body turns out to be stored.
#include "Archive/PackageBody.h"

#include "Archive/PackageLayout.h"
#include "PackageFixture.h"
#include "SyntheticPackage.h"

namespace {

using support::le32;

class PackageStorage : public support::PackageFixture {
protected:
    static std::string script(const std::string& head, const std::string& section) {
        return head + "\nName A\nOutFile package.exe\nInstallDir $TEMP\nSection\n" + section + "\nSectionEnd\n";
    }
    /// A package that the compiler made, with one item "a" among the usual ones.
    std::string packageBytes(const support::PackageSpec& spec = {}) {
        return support::readFile(support::makePackage(spec, path("made.exe")));
    }
    static size_t firstHeader(const std::string& bytes) {
        return bytes.find(std::string("\xef\xbe\xad\xde", 4) + "NullsoftInst") - 4;
    }
    bool declares(uint64_t expected) {
        uint64_t size = 0;
        return mReader.getSize(size) && size == expected;
    }
};

TEST_F(PackageStorage, MayLeaveTheHeaderPlainAndPackTheItems) {
    const std::string text(5000, 't');
    ASSERT_TRUE(openScript(script("SetCompressor zlib", "SetCompress force\nFile f\nSetCompress off\nFile g"),
                           {{"f", text}, {"g", text + "g"}}));
    ASSERT_TRUE(extract());
    EXPECT_TRUE(mSink->content("f") == text);
    EXPECT_TRUE(mSink->content("g") == text + "g");
}

TEST_F(PackageStorage, MayPackSomeItemsOnly) {
    const std::string text(5000, 't');
    for (const char* compressor : {"lzma", "zlib", "bzip2"}) {
        mSink->items.clear();
        ASSERT_TRUE(openScript(script(std::string("SetCompressor ") + compressor,
                                      "SetCompress off\nFile f\nSetCompress force\nFile g\nFile e"),
                               {{"f", text}, {"g", text + "g"}, {"e", ""}}));
        ASSERT_TRUE(extract());
        EXPECT_TRUE(mSink->content("f") == text) << compressor;
        EXPECT_TRUE(mSink->content("g") == text + "g") << compressor;
        EXPECT_EQ(mSink->content("e"), "") << compressor;
    }
}

TEST_F(PackageStorage, TakesADictionaryOfAnySize) {
    for (const char* megabytes : {"1", "16", "64"}) {
        for (const char* solid : {"", "/SOLID "}) {
            mSink->items.clear();
            ASSERT_TRUE(openScript(
                script(std::string("SetCompressor ") + solid + "lzma\nSetCompressorDictSize " + megabytes, "File f"),
                {{"f", std::string(3000, 'd')}}));
            ASSERT_TRUE(extract()) << megabytes << solid;
            EXPECT_EQ(mSink->content("f"), std::string(3000, 'd'));
        }
    }
}

TEST_F(PackageStorage, OfASyntheticPackageIsRead) {
    support::SyntheticPackage package;
    package.extractFile(package.addText("a.txt"), package.addItem("content"));
    ASSERT_TRUE(openBytes(package.build()));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->content("a.txt"), "content");
}

TEST_F(PackageStorage, BehindAWholeStubIsFoundAtAMultipleOf512) {
    support::SyntheticPackage package;
    package.extractFile(package.addText("a.txt"), package.addItem("content"));
    const std::string bytes = package.build();
    EXPECT_TRUE(openBytes(std::string(512 * 7, 's') + bytes));
    EXPECT_TRUE(declares(512 * 7 + bytes.size()));
    EXPECT_FALSE(openBytes(std::string(511, 's') + bytes));
}

TEST_F(PackageStorage, TakesTheFirstHeaderThatMatches) {
    support::SyntheticPackage first, second;
    first.extractFile(first.addText("first"), first.addItem("1"));
    second.extractFile(second.addText("second"), second.addItem("2"));
    std::string bytes = first.build();
    bytes.resize((bytes.size() + 511) / 512 * 512);
    ASSERT_TRUE(openBytes(bytes + second.build()));
    EXPECT_EQ(names(), (Names{"first"}));
}

// Declared size.

TEST_F(PackageStorage, DeclaresItsLengthWhateverFollows) {
    const std::string bytes = packageBytes();
    ASSERT_TRUE(openBytes(bytes + "x"));
    EXPECT_TRUE(declares(bytes.size()));
    EXPECT_TRUE(extract()) << "a signature may follow";
}

TEST_F(PackageStorage, DeclaresItsLengthWhenAByteIsCut) {
    const std::string bytes = packageBytes();
    ASSERT_TRUE(openBytes(bytes.substr(0, bytes.size() - 1)));
    EXPECT_TRUE(declares(bytes.size()));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Format});
    EXPECT_TRUE(mSink->items.empty());
}

struct Cut {
    std::string name;
    int behindHeader;  // bytes left behind the first header's beginning
};
void PrintTo(const Cut& cut, std::ostream* out) { *out << cut.name; }
class CutPackage : public PackageStorage, public testing::WithParamInterface<std::tuple<Cut, bool>> {};

TEST_P(CutPackage, DoesNotOpen) {
    const auto& [cut, solid] = GetParam();
    const std::string bytes = packageBytes({.solid = solid});
    EXPECT_FALSE(openBytes(bytes.substr(0, firstHeader(bytes) + static_cast<size_t>(cut.behindHeader))));
}

INSTANTIATE_TEST_SUITE_P(Places, CutPackage,
                         testing::Combine(testing::Values(Cut{"BeforeTheFirstHeader", 0}, Cut{"InTheMark", 12},
                                                          Cut{"InTheLengths", 26}, Cut{"BehindTheFirstHeader", 28},
                                                          Cut{"InTheFirstLength", 30}, Cut{"BehindTheFirstLength", 32},
                                                          Cut{"InTheProperties", 35}, Cut{"InTheHeader", 200}),
                                          testing::Bool()),
                         [](const auto& test) {
                             return std::get<0>(test.param).name + (std::get<1>(test.param) ? "Solid" : "Separate");
                         });

class CutInData : public PackageStorage, public testing::WithParamInterface<std::string> {};

TEST_P(CutInData, ExtractsNothingOfIt) {
    const std::string bytes =
        packageBytes({.compressor = GetParam().substr(0, 4), .solid = GetParam().ends_with("solid")});
    const size_t begin = firstHeader(bytes);
    for (size_t left : {bytes.size() - 5, begin + (bytes.size() - begin) * 9 / 10}) {
        if (!openBytes(bytes.substr(0, left))) continue;
        EXPECT_FALSE(extract()) << left;
    }
    EXPECT_TRUE(mSink->items.empty());
}

INSTANTIATE_TEST_SUITE_P(Stored, CutInData,
                         testing::Values("lzma_solid", "lzma_separate", "zlib_solid", "zlib_separate"),
                         [](const auto& test) { return test.param; });

// Checksum.

struct Flip {
    std::string name;
    bool holds;
    size_t offset;     // from the beginning, or
    size_t beforeEnd;  // from the end when not 0
};
void PrintTo(const Flip& flip, std::ostream* out) { *out << flip.name; }
class Checksum : public PackageStorage, public testing::WithParamInterface<Flip> {};

TEST_P(Checksum, CoversAllButTheFirstSector) {
    const Flip& flip = GetParam();
    std::string bytes = packageBytes({.solid = false, .files = {{"a", "plain"}}});
    char& byte = bytes[flip.beforeEnd != 0 ? bytes.size() - flip.beforeEnd : flip.offset];
    byte = static_cast<char>(byte ^ 1);
    ASSERT_TRUE(openBytes(bytes));
    EXPECT_EQ(extract(), flip.holds);
    if (flip.holds) return;
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Checksum});
    EXPECT_TRUE(mSink->items.empty()) << "nothing of a damaged package is handed over";
}

INSTANTIATE_TEST_SUITE_P(Flips, Checksum,
                         testing::Values(Flip{"LastByteOfTheFirstSector", true, 0x1FF, 0},
                                         Flip{"FirstByteBehindIt", false, 0x200, 0}, Flip{"InAPlainItem", false, 0, 6},
                                         Flip{"InTheChecksum", false, 0, 1}),
                         [](const auto& test) { return test.param.name; });

TEST_F(PackageStorage, WithoutAChecksumHidesDamage) {
    std::string bytes = packageBytes({.solid = false, .crc = "off", .files = {{"a", "plain"}}});
    ASSERT_TRUE(bytes.ends_with("plain"));
    bytes.back() = 'N';
    ASSERT_TRUE(openBytes(bytes));
    EXPECT_TRUE(extract());
    EXPECT_EQ(mSink->content("a"), "plaiN");
}

TEST_F(PackageStorage, IsCheckedBeforeAnyItemIsHandedOver) {
    std::string bytes = packageBytes();
    bytes[bytes.size() - 1] = static_cast<char>(bytes.back() ^ 1);
    ASSERT_TRUE(openBytes(bytes));
    EXPECT_FALSE(extract());
    EXPECT_TRUE(mSink->items.empty());
}

// First header.

struct Field {
    std::string name;
    size_t offset;
    uint32_t value;
    bool opens;
};
void PrintTo(const Field& field, std::ostream* out) { *out << field.name; }
class FirstHeader : public PackageStorage, public testing::WithParamInterface<Field> {};

TEST_P(FirstHeader, IsJudgedFieldByField) {
    std::string bytes = packageBytes();
    bytes.replace(firstHeader(bytes) + GetParam().offset, 4, le32(GetParam().value));
    EXPECT_EQ(openBytes(bytes), GetParam().opens);
    extract();
}

INSTANTIATE_TEST_SUITE_P(
    Fields, FirstHeader,
    testing::Values(Field{"FlagsSilent", 0, 2, true}, Field{"FlagsUninstaller", 0, 1, true},
                    Field{"FlagsUnknown", 0, 16, false}, Field{"FlagsAllBits", 0, 0xFFFFFFFF, false},
                    Field{"FlagsNoChecksum", 0, 4, true}, Field{"FlagsNoAndForce", 0, 12, true},
                    Field{"Mark", 4, 0xDEADBEEE, false}, Field{"Name", 12, 0, false},
                    Field{"NoHeaderLength", 20, 0, false}, Field{"ShortHeaderLength", 20, 100, false},
                    Field{"LongHeaderLength", 20, 0x7FFFFFFF, false}, Field{"HugeHeaderLength", 20, 0xFFFFFFFF, false},
                    Field{"HeaderLengthAtTheLimit", 20, 64u << 20, false}, Field{"NoLength", 24, 0, false},
                    Field{"LengthOfTheFirstHeader", 24, 28, false}, Field{"LengthOfNothing", 24, 32, false},
                    Field{"HugeLength", 24, 0xFFFFFFFF, true}),
    [](const auto& test) { return test.param.name; });

TEST_F(PackageStorage, OfAHugeDeclaredLengthGivesNothing) {
    std::string bytes = packageBytes();
    bytes.replace(firstHeader(bytes) + 24, 4, le32(0xFFFFFFFF));
    ASSERT_TRUE(openBytes(bytes));
    EXPECT_TRUE(declares(firstHeader(bytes) + uint64_t{0xFFFFFFFF}));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Format});
}

// Items that lie.

struct Lie {
    std::string name;
    std::string item;  // with its prefix
    IExtractOutFile::ErrorCode error;
};
void PrintTo(const Lie& lie, std::ostream* out) { *out << lie.name; }
class LyingItem : public PackageStorage, public testing::WithParamInterface<Lie> {};

TEST_P(LyingItem, EndsTheExtractionBehindTheGoodOnes) {
    support::SyntheticPackage package;
    package.extractFile(package.addText("good"), package.addItem("good"));
    package.extractFile(package.addText("bad"), package.addData(GetParam().item));
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->names(), (std::vector<std::string>{"good"}));
    EXPECT_EQ(mSink->errors, Errors{GetParam().error});
}

INSTANTIATE_TEST_SUITE_P(
    Prefixes, LyingItem,
    testing::Values(Lie{"LongerThanThePackage", le32(100) + "short", IExtractOutFile::ErrorCode_Format},
                    Lie{"HugeAndPlain", le32(0x7FFFFFFF) + "short", IExtractOutFile::ErrorCode_Format},
                    Lie{"HugeAndPacked", le32(0xFFFFFFFF) + "short", IExtractOutFile::ErrorCode_Format},
                    Lie{"CutPrefix", "ab", IExtractOutFile::ErrorCode_Format},
                    Lie{"NoPrefix", "", IExtractOutFile::ErrorCode_Format},
                    Lie{"PackedOfNothing", le32(0x80000000), IExtractOutFile::ErrorCode_Data},
                    Lie{"PackedNoise", le32(0x80000004) + "\xff\xfe\xfd\xfc", IExtractOutFile::ErrorCode_Data},
                    Lie{"LzmaOfALyingDictionary", le32(0x80000008) + std::string("\x5d\0\0\xff\xff\0zz", 8),
                        IExtractOutFile::ErrorCode_Data}),
    [](const auto& test) { return test.param.name; });

TEST_F(PackageStorage, WithAnOffsetBehindTheDataEndsTheExtraction) {
    support::SyntheticPackage package;
    package.addItem("x");
    package.extractFile(package.addText("far"), 0x7FFFFFFF);
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Format});
}

TEST_F(PackageStorage, OfAnItemForEveryNameIsBounded) {
    // Twenty thousand names for one megabyte: more than a package of this size may give.
    support::SyntheticPackage package;
    const int32_t offset = package.addItem(std::string(1u << 20, 'm'));
    for (int i = 0; i < 20000; ++i) package.extractFile(package.addText("n" + std::to_string(i)), offset);
    ASSERT_TRUE(openBytes(package.build()));
    class Counter : public support::RecordingSink {
    public:
        bool open(const std::string&, bool) override { return true; }
        bool write(const char*, unsigned int size) override {
            total += size;
            return true;
        }
        bool close() override { return true; }
        uint64_t total = 0;
    };
    auto counter = std::make_shared<Counter>();
    EXPECT_FALSE(mReader.extract(counter));
    EXPECT_EQ(counter->errors, Errors{IExtractOutFile::ErrorCode_Limit});
    EXPECT_LE(counter->total, uint64_t{4} << 30);
}

}  // namespace
