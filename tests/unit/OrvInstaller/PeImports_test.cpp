#include "OrvInstaller/PeImports.h"

#include "PeBuilder.h"

using Tarnwick::OrvUpdate::PeImports;
using Names = std::vector<std::string>;

namespace {

support::PeFile sample(const Names& imports = {"a.dll", "b.dll"}) { return support::buildPe({true, imports, {}, ""}); }

/// Reads from a block of exactly these bytes, so that a sanitizer sees a read behind them.
Names importsOf(const std::string& bytes) {
    const std::vector<unsigned char> exact(bytes.begin(), bytes.end());
    Names names;
    PeImports(exact).forEach([&](std::string_view name) { names.emplace_back(name); });
    return names;
}

}  // namespace

TEST(PeImports, TellsTheNamesInTheOrderOfTheTable) {
    EXPECT_EQ(importsOf(sample({"z.dll", "A.DLL", "m.dll"}).bytes), (Names{"z.dll", "A.DLL", "m.dll"}));
}

TEST(PeImports, TellsANameTwiceThatStandsThereTwice) {
    EXPECT_EQ(importsOf(sample({"a.dll", "a.dll"}).bytes), (Names{"a.dll", "a.dll"}));
}

TEST(PeImports, TellsNothingOfAModuleWithoutImports) { EXPECT_EQ(importsOf(sample({}).bytes), Names{}); }

TEST(PeImports, KnowsAProgramByItsFirstBytes) {
    const auto isProgram = [](const std::string& bytes) {
        const std::vector<unsigned char> exact(bytes.begin(), bytes.end());
        return PeImports(exact).isProgram();
    };
    EXPECT_TRUE(isProgram("MZ"));
    EXPECT_TRUE(isProgram(sample().bytes));
    EXPECT_FALSE(isProgram("M"));
    EXPECT_FALSE(isProgram(""));
    EXPECT_FALSE(isProgram("ZM and more"));
}

TEST(PeImports, StopsAtTheDescriptorWithoutAFirstThunk) {
    support::PeFile file = sample({"a.dll", "b.dll", "c.dll"});
    file.set32(file.importTable + 20 + 16, 0);
    EXPECT_EQ(importsOf(file.bytes), Names{"a.dll"});
}

TEST(PeImports, DoesNotLookAtTheNtMagic) {
    support::PeFile file = sample();
    file.set32(file.ntHeader, 0x12345678);
    EXPECT_EQ(importsOf(file.bytes), (Names{"a.dll", "b.dll"}));
}

TEST(PeImports, TakesTheFirstOfOverlappingSections) {
    // A second header behind the first, for the same addresses but with other data.
    support::PeFile file = sample();
    file.set16(file.ntHeader + 6, 2);
    file.set32(file.sectionHeader + 40 + 12, support::PeFile::kSectionAddress);
    file.set32(file.sectionHeader + 40 + 16, 0x1000);
    file.set32(file.sectionHeader + 40 + 20, 0);
    EXPECT_EQ(importsOf(file.bytes), (Names{"a.dll", "b.dll"}));
}

TEST(PeImports, ReadsAcrossTwoSections) {
    support::PeFile file = sample({"a.dll"});
    const auto second = static_cast<uint32_t>(file.bytes.size());
    file.bytes += std::string("moved.dll\0", 10);
    file.set16(file.ntHeader + 6, 2);
    file.set32(file.sectionHeader + 40 + 12, 0x8000);
    file.set32(file.sectionHeader + 40 + 16, 10);
    file.set32(file.sectionHeader + 40 + 20, second);
    file.set32(file.importTable + 12, 0x8000);
    EXPECT_EQ(importsOf(file.bytes), Names{"moved.dll"});
}

TEST(PeImports, PassesOverANameThatNoSectionHolds) {
    support::PeFile file = sample();
    file.set32(file.importTable + 12, 0x00F00000);
    const Names names = importsOf(file.bytes);
    EXPECT_EQ(names.back(), "b.dll");
    EXPECT_EQ(std::count(names.begin(), names.end(), "a.dll"), 0);
}

TEST(PeImports, PassesOverANameInFrontOfItsSection) {
    support::PeFile file = sample();
    const std::string name = "front.dll";
    file.bytes.replace(file.sectionData - 0x20, name.size(), name);  // behind the headers, in no section
    file.set32(file.importTable + 12, support::PeFile::kSectionAddress - 0x20);
    const Names names = importsOf(file.bytes);
    EXPECT_EQ(names.back(), "b.dll");
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 0);
}

TEST(PeImports, PassesOverANameThatDoesNotEnd) {
    support::PeFile file = sample();
    const size_t last = file.bytes.size();
    file.bytes += "endless";
    file.set32(file.sectionHeader + 16, 0x10000);
    file.set32(file.importTable + 12, file.addressOf(last));
    EXPECT_EQ(importsOf(file.bytes), Names{"b.dll"});
}

TEST(PeImports, PassesOverANameLongerThanAFileNameCanBe) {
    const std::string longest(255, 'n');
    EXPECT_EQ(importsOf(sample({longest, longest + "n", "b.dll"}).bytes), (Names{longest, "b.dll"}));
}

TEST(PeImports, PassesOverAnEmptyName) { EXPECT_EQ(importsOf(sample({"", "b.dll"}).bytes), Names{"b.dll"}); }

TEST(PeImports, ReadsNoMoreThanAModuleCanImport) {
    // One descriptor after another, all of one name, to the end of a large file.
    support::PeFile file = sample({"a.dll"});
    const uint32_t name = file.addressOf(file.importNames.front());
    const size_t table = file.bytes.size();
    std::string descriptor(20, '\1');
    for (size_t i = 0; i < 4; ++i) descriptor[12 + i] = static_cast<char>(name >> 8 * i & 0xFF);
    for (int i = 0; i < 100000; ++i) file.bytes += descriptor;
    file.set32(file.sectionHeader + 16, static_cast<uint32_t>(file.bytes.size()));
    file.set32(file.importDirectoryField(), file.addressOf(table));
    EXPECT_EQ(importsOf(file.bytes).size(), 65536U);
}

namespace {

struct DamageCase {
    const char* title;
    std::function<void(support::PeFile&)> damage;
};
void PrintTo(const DamageCase& one, std::ostream* out) { *out << one.title; }

class PeImportsDamaged : public testing::TestWithParam<DamageCase> {};

}  // namespace

TEST_P(PeImportsDamaged, TellsNothing) {
    support::PeFile file = sample();
    GetParam().damage(file);
    EXPECT_EQ(importsOf(file.bytes), Names{});
}

INSTANTIATE_TEST_SUITE_P(
    Tables, PeImportsDamaged,
    testing::Values(
        DamageCase{"NtHeaderBehindTheEnd", [](auto& file) { file.set32(60, 0x7FFFFFFF); }},
        DamageCase{"NtHeaderThatWouldWrap", [](auto& file) { file.set32(60, 0xFFFFFFFF); }},
        DamageCase{"NoSections", [](auto& file) { file.set16(file.ntHeader + 6, 0); }},
        DamageCase{"SectionTableBehindTheEnd", [](auto& file) { file.set16(file.ntHeader + 20, 0xFFFF); }},
        DamageCase{"SectionOffsetBehindTheEnd", [](auto& file) { file.set32(file.sectionHeader + 20, 0xFFFFFFF0); }},
        DamageCase{"SectionOfOtherAddresses", [](auto& file) { file.set32(file.sectionHeader + 12, 0xFFFF0000); }},
        DamageCase{"EmptySection", [](auto& file) { file.set32(file.sectionHeader + 16, 0); }},
        DamageCase{"ImportTableAddressZero", [](auto& file) { file.set32(file.importDirectoryField(), 0); }},
        DamageCase{"ImportTableInNoSection", [](auto& file) { file.set32(file.importDirectoryField(), 0xFFFFFFFF); }},
        DamageCase{"ImportTableBehindTheEnd",
                   [](auto& file) {
                       file.set32(file.sectionHeader + 16, 0xFFFFFFFF);
                       file.set32(file.importDirectoryField(), 0xF0000000);
                   }},
        DamageCase{"CutBehindTheMagic", [](auto& file) { file.bytes.resize(2); }},
        DamageCase{"CutInsideTheHeaderOffset", [](auto& file) { file.bytes.resize(62); }},
        DamageCase{"CutInsideTheSectionTable", [](auto& file) { file.bytes.resize(file.sectionHeader + 14); }},
        DamageCase{"CutInsideTheImportTable", [](auto& file) { file.bytes.resize(file.importTable + 17); }},
        DamageCase{"Empty", [](auto& file) { file.bytes.clear(); }}),
    [](const auto& one) { return one.param.title; });

TEST(PeImports, SurvivesACutAtEveryByte) {
    const support::PeFile file = sample();
    for (size_t length = 0; length < file.bytes.size(); ++length) {
        const Names names = importsOf(file.bytes.substr(0, length));
        ASSERT_LE(names.size(), 2U) << length;
    }
}

TEST(PeImports, SurvivesEveryByteOfTheTablesBeingWrong) {
    const support::PeFile file = sample();
    size_t most = 0;
    for (size_t offset = 0; offset < file.sectionData + 0x80; ++offset) {
        for (const char value : {'\0', '\x7F', '\xFF'}) {
            support::PeFile damaged = file;
            damaged.bytes[offset] = value;
            most = std::max(most, importsOf(damaged.bytes).size());
        }
    }
    EXPECT_LE(most, file.bytes.size() / 20);
}
