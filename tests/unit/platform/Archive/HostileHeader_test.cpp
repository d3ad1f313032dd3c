// Packages whose header means harm: they are refused or read within 20 seconds and 256 MiB, and write nothing outside.
#include "FileText.h"
#include "HostilePackage.h"
#include "OrvInstaller.h"
#include "PackageFixture.h"
#include "PackedStreams.h"
#include "SyntheticPackage.h"

namespace {

using support::le32;
using support::PackageReading;
using support::SyntheticPackage;

class HostileHeader : public support::PackageFixture {
protected:
    /// A package with its header packed, so that a short file can hold a large one.
    PackageReading read(const SyntheticPackage& package) {
        const std::string header = package.header(), packed = support::deflated(header, 1);
        const std::string item = le32(static_cast<uint32_t>(packed.size()) | 0x80000000u) + packed;
        const std::string data = package.solidStream().substr(4 + header.size());
        return support::readHostile(path(), package.wrap(item + data, header.size()));
    }
};

TEST_F(HostileHeader, OfAsManyNamesAsMayBeIsRead) {
    SyntheticPackage package;
    const int32_t offset = package.addItem("content");
    for (int i = 0; i < 200000; ++i) package.extractFile(package.addText("n" + std::to_string(i)), offset);
    const PackageReading reading = read(package);
    EXPECT_EQ(reading.outcome, PackageReading::Whole);
    EXPECT_EQ(reading.items, 200000u);
}

TEST_F(HostileHeader, OfMoreNamesThanMayBeIsRefused) {
    SyntheticPackage package;
    const int32_t offset = package.addItem("content"), name = package.addText("one");
    for (int i = 0; i < 200001; ++i) package.extractFile(name, offset);
    EXPECT_EQ(read(package).outcome, PackageReading::Refused);
}

TEST_F(HostileHeader, OfLongerNamesThanMayBeIsRefused) {
    SyntheticPackage package;
    const int32_t offset = package.addItem("content"), name = package.addText(std::string(20000, 'n'));
    for (int i = 0; i < 1000; ++i) package.extractFile(name, offset);
    EXPECT_EQ(read(package).outcome, PackageReading::Refused);
}

TEST_F(HostileHeader, OfAMillionEntriesIsReadInTime) {
    SyntheticPackage package;
    const int32_t folder = package.addRaw(package.variable(31) + package.text("\\a"));
    const int32_t root = package.addRaw(package.variable(21));
    for (int i = 0; i < 500000; ++i) {
        package.addEntry(25, {31, i % 100 == 0 ? root : folder, 0, 0, 0, 0});
        package.addEntry(11, {folder, 1, 0, 0, 0, 0});
    }
    package.extractFile(package.addText("x"), package.addItem("content"));
    read(package);
}

TEST_F(HostileHeader, OfAMillionTextsInACodePageIsReadInTime) {
    SyntheticPackage package(SyntheticPackage::Ansi3);
    const int32_t folder = package.addRaw("\xb2\xe2\xca\xd4");
    package.addLanguage(2052, {0});
    for (int i = 0; i < 1000000; ++i) package.addEntry(25, {31, folder, 0, 0, 0, 0});
    package.extractFile(package.addText("x"), package.addItem("content"));
    read(package);
}

TEST_F(HostileHeader, OfStringsThatDoubleIsRefused) {
    SyntheticPackage package;
    const int32_t twice = package.addRaw(package.variable(22) + package.text("\\") + package.variable(22));
    for (int i = 0; i < 100000; ++i) package.setOutPath(twice);
    package.extractFile(package.addText("x"), package.addItem("content"));
    EXPECT_EQ(read(package).outcome, PackageReading::Refused);
}

TEST_F(HostileHeader, OfStringsOfTheLanguageThatFanOutIsRefused) {
    // Eight strings, each of a hundred times the next one.
    SyntheticPackage package;
    std::vector<int32_t> strings;
    for (unsigned level = 0; level < 8; ++level) {
        std::string hundredfold;
        for (int i = 0; i < 100; ++i) hundredfold += package.languageString(level + 1);
        strings.push_back(package.addRaw(hundredfold));
    }
    strings.push_back(0);
    package.addLanguage(1033, strings);
    for (int i = 0; i < 1000; ++i) package.extractFile(-1, 0);
    EXPECT_EQ(read(package).outcome, PackageReading::Refused);
}

struct Length {
    std::string name;
    uint32_t declared;
};
void PrintTo(const Length& length, std::ostream* out) { *out << length.name; }
class DeclaredHeaderLength : public HostileHeader, public testing::WithParamInterface<Length> {};

TEST_P(DeclaredHeaderLength, ThatIsNotTheHeadersGivesNothing) {
    SyntheticPackage package;
    package.extractFile(package.addText("x"), package.addItem("content"));
    const std::string header = package.header(), packed = support::deflateBomb(40, header);
    const std::string item = le32(static_cast<uint32_t>(packed.size()) | 0x80000000u) + packed;
    const uint32_t declared = GetParam().declared;
    const std::string stream = le32(declared) + header;
    for (const std::string& body : {item, support::deflateBomb(40, stream), le32(declared) + header}) {
        const PackageReading reading = support::readHostile(path(), package.wrap(body, declared));
        EXPECT_TRUE(reading.outcome != PackageReading::Whole || reading.bytes == 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, DeclaredHeaderLength,
                         testing::Values(Length{"Of1", 1}, Length{"Of299", 299}, Length{"Of1MiB", 1u << 20},
                                         Length{"Of32MiB", 32u << 20}, Length{"OfMoreThan32MiB", (32u << 20) + 1},
                                         Length{"Of1GiB", 1u << 30}, Length{"Of2GiB", 2u << 30},
                                         Length{"Of4GiB", 0xFFFFFFFF}),
                         [](const auto& test) { return test.param.name; });

// Names that lead elsewhere, up to the disk.

struct Name {
    std::string label;
    std::string name;
    unsigned variable = 0;  ///< in front, if not 0
};
void PrintTo(const Name& name, std::ostream* out) { *out << name.label; }
class HostileName : public HostileHeader, public testing::WithParamInterface<Name> {};

TEST_P(HostileName, WritesNothingOutsideTheTarget) {
    SyntheticPackage package;
    std::string raw = package.text(GetParam().name);
    if (GetParam().variable != 0) raw = package.variable(GetParam().variable) + raw;
    const int32_t folder = package.addRaw(raw), name = package.addRaw(raw);
    package.extractFile(name, package.addItem("by its name"));
    package.setOutPath(folder);
    package.extractFile(package.addText("a.txt"), package.addItem("by its folder"));
    support::writeFile(path(), package.build());
    std::filesystem::create_directories(path("in/target"));
    const auto installer =
        std::make_shared<Tarnwick::OrvUpdate::OrvInstaller>(nullptr, path(), Tarnwick::OrvUpdate::VersionType_All);
    installer->start(path("in/target"), false, {});
    while (installer->getPackageVersion() != 0 && !installer->finish()) std::this_thread::yield();
    installer->stop();
    for (const std::string& file : support::filesBelow(mDirectory.path())) {
        EXPECT_TRUE(file == "package.exe" || file.starts_with("in/target/")) << file;
    }
    EXPECT_FALSE(std::filesystem::exists("/escaped") || std::filesystem::exists("/tmp/escaped"));
}

INSTANTIATE_TEST_SUITE_P(
    Names, HostileName,
    testing::Values(
        Name{"Parent", "..\\escaped"}, Name{"ParentOfParent", "..\\..\\escaped"},
        Name{"ParentWithSlashes", "../escaped"}, Name{"ParentWithinThePath", "a\\..\\..\\escaped"},
        Name{"ParentBehindMany", "a\\b\\c\\..\\..\\..\\..\\escaped"}, Name{"OnlyParent", ".."}, Name{"OnlyPoint", "."},
        Name{"Root", "/escaped"}, Name{"RootOfTmp", "/tmp/escaped"}, Name{"RootWithBackslash", "\\escaped"},
        Name{"Drive", "C:\\escaped"}, Name{"DriveAlone", "C:escaped"}, Name{"Share", "\\\\server\\share\\escaped"},
        Name{"Verbatim", "\\\\?\\C:\\escaped"}, Name{"Device", "\\\\.\\escaped"}, Name{"DeviceName", "CON"},
        Name{"DeviceNameWithEnd", "nul.txt"}, Name{"StreamOfAFile", "a.txt:escaped"}, Name{"TrailingPoint", "escaped."},
        Name{"TrailingBlank", "..\\ "}, Name{"ParentWithBlank", ".. \\escaped"}, Name{"ThreePoints", "...\\escaped"},
        Name{"Control",
             "a\x01\x1f"
             "b"},
        Name{"LineEnd", "a\r\nb"}, Name{"Empty", ""}, Name{"OnlySeparators", "\\\\\\\\"},
        Name{"InstallDirParent", "\\..\\escaped", 21}, Name{"InstallDirTail", "-escaped", 21},
        Name{"OutDirParent", "\\..\\..\\escaped", 22}, Name{"TempDir", "\\escaped", 25},
        Name{"PluginsDirParent", "\\..\\..\\..\\escaped", 26}, Name{"UnknownVariable", "\\..\\escaped", 99}),
    [](const auto& test) { return test.param.label; });

}  // namespace
