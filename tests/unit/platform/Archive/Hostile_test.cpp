// Packages with bytes changed at random: they may be refused or read, within 20 seconds and 256 MiB, nothing else.
#include <cstdlib>

#include "HostilePackage.h"
#include "Mutation.h"
#include "PackageFixture.h"
#include "SyntheticPackage.h"

namespace {

using support::Mutation;
using support::PackageReading;
using support::PackageSpec;

/// A seed that a failure named, to be run alone: ORV_SEED=17 test_archive --gtest_filter=...
bool isWanted(uint32_t seed) {
    const char* one = std::getenv("ORV_SEED");  // NOLINT(concurrency-mt-unsafe)
    return one == nullptr || std::to_string(seed) == one;
}

struct Base {
    std::string name;
    PackageSpec spec;
};

const std::vector<Base>& bases() {
    static const std::vector<Base> all = {
        {"LzmaSolid", {.compressor = "lzma", .solid = true}},
        {"LzmaSeparate", {.compressor = "lzma", .solid = false}},
        {"ZlibSolid", {.compressor = "zlib", .solid = true}},
        {"ZlibSeparate", {.compressor = "zlib", .solid = false}},
        {"Bzip2Solid", {.compressor = "bzip2", .solid = true}},
        {"Bzip2Separate", {.compressor = "bzip2", .solid = false}},
        {"PlainUnicode", {.compressor = "none"}},
        {"PlainAnsi", {.compressor = "none", .unicode = false}},
        {"PlainWide", {.compressor = "none", .wideStub = true}},
    };
    return all;
}

size_t firstHeader(const std::string& bytes) {
    return bytes.find(std::string("\xef\xbe\xad\xde", 4) + "NullsoftInst") - 4;
}

/// A package of that kind, without a checksum: behind one no change would reach the decoders.
class HostilePackage : public support::PackageFixture {
protected:
    void make(const Base& base) {
        PackageSpec spec = base.spec;
        spec.crc = "off";
        spec.uninstaller = true;
        mBytes = support::readFile(support::makePackage(spec, path("made.exe")));
        mBegin = firstHeader(mBytes);
    }
    void read(const std::string& bytes) { ++mCount[support::readHostile(path(), bytes).outcome]; }

    std::string mBytes;
    size_t mBegin = 0;
    int mCount[3] = {};  // by outcome
};

struct Kind {
    std::string name;
    Mutation mutation;
};
const std::vector<Kind> kKinds = {{"BitFlips", Mutation::BitFlips},
                                  {"ByteRuns", Mutation::ByteRuns},
                                  {"Truncation", Mutation::Truncation},
                                  {"Splice", Mutation::Splice},
                                  {"FieldValues", Mutation::FieldValues}};

using Case = std::tuple<Base, Kind>;
void PrintTo(const Case& one, std::ostream* out) { *out << std::get<0>(one).name << std::get<1>(one).name; }
std::string nameOf(const testing::TestParamInfo<Case>& test) {
    return std::get<0>(test.param).name + std::get<1>(test.param).name;
}

class MutatedPackage : public HostilePackage, public testing::WithParamInterface<Case> {
protected:
    void SetUp() override { make(std::get<0>(GetParam())); }
    void readMutations(uint32_t seeds, size_t begin, size_t end) {
        for (uint32_t seed = 0; seed < seeds; ++seed) {
            if (!isWanted(seed)) continue;
            SCOPED_TRACE("seed " + std::to_string(seed));
            read(support::mutated(mBytes, std::get<1>(GetParam()).mutation, seed, begin, end));
        }
    }
};

TEST_P(MutatedPackage, IsRefusedOrReadWithinTheLimits) {
    constexpr uint32_t kSeeds = 40;
    readMutations(kSeeds, mBegin, mBytes.size());
    EXPECT_EQ(mCount[0] + mCount[1] + mCount[2], static_cast<int>(kSeeds));
    // Most of a plain package is content, which may be changed.
    if (std::get<0>(GetParam()).spec.compressor == "none") return;
    EXPECT_GT(mCount[PackageReading::Refused] + mCount[PackageReading::Failed], 0);
}

/// The header's first bytes lead to all the rest.
TEST_P(MutatedPackage, IsRefusedOrReadWithinTheLimitsWhenChangedInItsHead) {
    constexpr uint32_t kSeeds = 30;
    readMutations(kSeeds, mBegin, mBegin + 400);
    EXPECT_EQ(mCount[0] + mCount[1] + mCount[2], static_cast<int>(kSeeds));
    EXPECT_GT(mCount[PackageReading::Refused] + mCount[PackageReading::Failed], 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, MutatedPackage, testing::Combine(testing::ValuesIn(bases()), testing::ValuesIn(kKinds)),
                         nameOf);

/// The executable in front, with the version resource in it.
class MutatedExecutable : public MutatedPackage {};

TEST_P(MutatedExecutable, IsRefusedOrReadWithinTheLimits) {
    // The resources come last.
    const size_t begin = std::get<0>(GetParam()).name == "LzmaSolid" ? 0 : mBegin - std::min<size_t>(mBegin, 2048);
    readMutations(30, begin, mBegin);
    EXPECT_EQ(mCount[0] + mCount[1] + mCount[2], 30);
}

INSTANTIATE_TEST_SUITE_P(Seeds, MutatedExecutable,
                         testing::Combine(testing::Values(bases()[0], bases()[8]), testing::ValuesIn(kKinds)), nameOf);

// Every number of a plain header, one after another.

struct Value {
    std::string name;
    uint32_t value;
    bool relative = false;  // to what was there
};
void PrintTo(const Value& value, std::ostream* out) { *out << value.name; }

class HostileField : public HostilePackage, public testing::WithParamInterface<Value> {
protected:
    void replaceEach(size_t begin, size_t end) {
        for (size_t at = begin; at + 4 <= end; at += 4) {
            SCOPED_TRACE("offset " + std::to_string(at));
            uint32_t before = 0;
            std::memcpy(&before, &mBytes[at], 4);
            std::string bytes = mBytes;
            bytes.replace(at, 4, support::le32(GetParam().value + (GetParam().relative ? before : 0)));
            read(bytes);
        }
    }
};

TEST_P(HostileField, OfASmallPackageIsRefusedOrReadWithinTheLimits) {
    support::SyntheticPackage package;
    const int32_t folder = package.addRaw(package.variable(21) + package.text("\\Orv Client"));
    package.addLanguage(1033, {0, folder});
    package.setOutPath(-2);
    for (const char* name : {"a.exe", "b.dll"}) {
        package.extractFile(package.addText(name), package.addItem(std::string(40, name[0])));
    }
    const int32_t patches = package.addItem(support::le32(4) + support::le32(8) + "ICON" + std::string(1, '\0'));
    package.addItem("uninstaller");
    package.addEntry(62, {package.addRaw(package.variable(21) + package.text("\\u.exe")), patches, 13, folder, 0, 0});
    mBytes = package.build();
    replaceEach(512, mBytes.size());
    EXPECT_GT(mCount[PackageReading::Refused], 0);
    EXPECT_GT(mCount[PackageReading::Whole], 0);
}

TEST_P(HostileField, OfAWidePackageIsRefusedOrReadWithinTheLimits) {
    make(bases()[8]);
    // The first header, the tables, and the first entries.
    replaceEach(mBegin, mBegin + 28 + 4 + 332);
    EXPECT_GT(mCount[PackageReading::Refused], 0);
    EXPECT_GT(mCount[PackageReading::Whole], 0);
}

TEST_P(HostileField, OfTheResourcesIsRefusedOrReadWithinTheLimits) {
    make(bases()[6]);
    const std::string mark("V\0S\0_\0V\0E\0R\0S\0I\0O\0N\0", 20);
    const size_t version = mBytes.find(mark), row = mBytes.find(".rsrc");
    ASSERT_NE(version, std::string::npos);
    ASSERT_NE(row, std::string::npos);
    replaceEach(row + 8, row + 24);
    uint32_t section = 0;
    std::memcpy(&section, &mBytes[row + 20], 4);
    replaceEach(section, section + 160);
    replaceEach(version - 6, version + 200);
    EXPECT_GT(mCount[PackageReading::Whole], 0);
}

INSTANTIATE_TEST_SUITE_P(Values, HostileField,
                         testing::Values(Value{"Zero", 0}, Value{"One", 1}, Value{"OneMore", 1, true},
                                         Value{"OneLess", 0xFFFFFFFF, true}, Value{"Bit16", 0x10000},
                                         Value{"Bit24", 1u << 24}, Value{"Bit28", 1u << 28},
                                         Value{"LargestPositive", 0x7FFFFFFF}, Value{"SmallestNegative", 0x80000000},
                                         Value{"MinusTwo", 0xFFFFFFFE}, Value{"AllBits", 0xFFFFFFFF},
                                         Value{"TopBitSet", 0x80000000, true}),
                         [](const auto& test) { return test.param.name; });

/// Where the header is not packed, changes reach the tables and the script itself.
class MutatedHeader : public support::PackageFixture {};

TEST_F(MutatedHeader, NeitherCrashesNorHangs) {
    support::SyntheticPackage package;
    const int32_t folder = package.addRaw(package.variable(21) + package.text("\\Orv Client"));
    package.addLanguage(1033, {0, folder});
    package.setOutPath(-2);
    for (const char* name : {"a.exe", "b.dll", "c.txt"}) {
        package.extractFile(package.addText(name), package.addItem(std::string(40, name[0])));
    }
    const int32_t patches = package.addItem(support::le32(4) + support::le32(8) + "ICON" + std::string(1, '\0'));
    package.addItem("uninstaller");
    package.addEntry(62, {package.addRaw(package.variable(21) + package.text("\\u.exe")), patches, 13, folder, 0, 0});
    const std::string bytes = package.build();
    uint32_t state = 7;
    auto random = [&] { return (state = state * 1664525 + 1013904223) >> 8; };
    int opened = 0, refused = 0;
    for (int round = 0; round < 400; ++round) {
        std::string changed = bytes;
        for (uint32_t flips = 1 + random() % 4; flips-- > 0;) {
            const size_t at = 512 + random() % (changed.size() - 512);
            const char values[] = {'\0', '\xff', '\x7f', '\x80', '\1', static_cast<char>(random())};
            changed[at] = values[random() % 6];
        }
        if (openBytes(changed)) {
            ++opened;
            mSink->items.clear();
            extract();
        } else {
            ++refused;
        }
    }
    EXPECT_GT(opened, 20);
    EXPECT_GT(refused, 20);
}

}  // namespace
