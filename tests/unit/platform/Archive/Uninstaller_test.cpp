// The uninstaller, which is no file in the package but made of the installer itself.
#include "Archive/ItemReader.h"
#include "Archiver.h"
#include "PackageFixture.h"
#include "SyntheticPackage.h"

namespace {

using Archive::Buffer;
using Archive::ByteView;
using support::le32;

ByteView view(const std::string& text) { return {reinterpret_cast<const unsigned char*>(text.data()), text.size()}; }
std::string text(Buffer& buffer) { return {reinterpret_cast<const char*>(buffer.data()), buffer.size()}; }

bool buildUninstaller(ByteView stub, ByteView patches, ByteView data, Buffer& file) {
    file.clear();
    file.reserve(stub.size() + data.size());
    file.append(stub);
    file.append(data);
    return Archive::patchStub(patches, stub.size(), file);
}

TEST(BuildUninstaller, PutsTheDataBehindTheStub) {
    Buffer file;
    ASSERT_TRUE(buildUninstaller(view("stub"), {}, view("data"), file));
    EXPECT_EQ(text(file), "stubdata");
}

TEST(BuildUninstaller, AppliesPatchesUpToAZeroByte) {
    Buffer file;
    const std::string patches = le32(2) + le32(1) + "XY" + le32(1) + le32(5) + "Z" + std::string(1, '\0') + "junk";
    ASSERT_TRUE(buildUninstaller(view("abcdef"), view(patches), view("!"), file));
    EXPECT_EQ(text(file), "aXYdeZ!");
}

TEST(BuildUninstaller, AppliesPatchesUpToTheEnd) {
    Buffer file;
    ASSERT_TRUE(buildUninstaller(view("abc"), view(le32(1) + le32(2) + "X"), {}, file));
    EXPECT_EQ(text(file), "abX");
}

TEST(BuildUninstaller, RefusesAPatchBehindTheStub) {
    Buffer file;
    EXPECT_FALSE(buildUninstaller(view("abc"), view(le32(2) + le32(2) + "XY"), view("data"), file));
    EXPECT_FALSE(buildUninstaller(view("abc"), view(le32(1) + le32(0xFFFFFFFF) + "X"), view("data"), file));
}

TEST(BuildUninstaller, RefusesAPatchLongerThanThePatches) {
    Buffer file;
    EXPECT_FALSE(buildUninstaller(view("abcdef"), view(le32(4) + le32(0) + "XY"), {}, file));
    EXPECT_FALSE(buildUninstaller(view("abcdef"), view(std::string("\1\0\0\0\0", 5)), {}, file));
}

struct Case {
    std::string name, compressor;
    bool solid;
};
void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

class Uninstaller : public support::PackageFixture, public testing::WithParamInterface<Case> {};

TEST_P(Uninstaller, IsAPackageOfItsOwn) {
    ASSERT_TRUE(openPackage({.compressor = GetParam().compressor, .solid = GetParam().solid, .uninstaller = true}));
    ASSERT_TRUE(extract());
    const std::string file = mSink->content("uninst.exe");
    support::writeFile(path("uninst.exe"), file);
    NSISDecompile reader;
    ASSERT_TRUE(reader.open(path("uninst.exe"), ""));
    uint64_t size = 0;
    EXPECT_TRUE(reader.getSize(size));
    EXPECT_EQ(size, file.size());
    EXPECT_TRUE(reader.extract(mSink)) << "its checksum covers the patched stub";
}

TEST_P(Uninstaller, IsWhatTheArchiverMakesOfIt) {
    ASSERT_TRUE(openPackage({.compressor = GetParam().compressor, .solid = GetParam().solid, .uninstaller = true}));
    ASSERT_TRUE(extract());
    ASSERT_EQ(support::unpackByArchiver(path(), path("out")), "");
    EXPECT_TRUE(mSink->content("uninst.exe") == support::readFile(path("out/uninst.exe")));
}

INSTANTIATE_TEST_SUITE_P(Stored, Uninstaller,
                         testing::Values(Case{"LzmaSolid", "lzma", true}, Case{"LzmaSeparate", "lzma", false},
                                         Case{"ZlibSolid", "zlib", true}, Case{"ZlibSeparate", "zlib", false},
                                         Case{"Bzip2Solid", "bzip2", true}, Case{"Bzip2Separate", "bzip2", false}),
                         [](const auto& test) { return test.param.name; });

class UninstallerItem : public support::PackageFixture {};

TEST_F(UninstallerItem, ComesAmongTheFilesInTheOrderOfItsData) {
    ASSERT_TRUE(openPackage({.files = {{"a", "1"}},
                             .extraScript = "WriteUninstaller $INSTDIR\\u.exe\nFile /oname=z f0",
                             .uninstaller = true}));
    const Names listed = names();
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->names(), std::vector<std::string>(listed.begin(), listed.end()));
    EXPECT_EQ(listed.size(), 4u);
}

TEST_F(UninstallerItem, WithARelativeNameLiesInTheInstallDirectory) {
    ASSERT_TRUE(openPackage({.extraScript = "WriteUninstaller sub\\u.exe", .uninstaller = true}));
    const Names listed = names();
    EXPECT_NE(std::find(listed.begin(), listed.end(), "sub\\u.exe"), listed.end());
}

TEST_F(UninstallerItem, WithoutPatchesIsAWholeFile) {
    support::SyntheticPackage package;
    const int32_t name = package.addText("u.exe");
    package.addEntry(62, {name, package.addItem("a whole program"), 0,
                          package.addRaw(package.variable(21) + package.text("\\u.exe")), 0, 0});
    ASSERT_TRUE(openBytes(package.build()));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->content("u.exe"), "a whole program");
}

TEST_F(UninstallerItem, IsMadeOfTheStubPatchesAndData) {
    support::SyntheticPackage package;
    const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
    const int32_t offset = package.addItem(le32(3) + le32(10) + "ICO" + std::string(1, '\0'));
    package.addItem("data");
    package.addEntry(62, {name, offset, 12, name, 0, 0});
    ASSERT_TRUE(openBytes(package.build()));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->content("u.exe"), std::string(10, '\0') + "ICO" + std::string(499, '\0') + "data");
}

TEST_F(UninstallerItem, WithAPatchOutsideTheStubEndsTheExtraction) {
    support::SyntheticPackage package;
    const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
    const int32_t offset = package.addItem(le32(3) + le32(510) + "ICO");
    package.addItem("data");
    package.addEntry(62, {name, offset, 11, name, 0, 0});
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Format});
}

TEST_F(UninstallerItem, WithoutItsSecondHalfEndsTheExtraction) {
    support::SyntheticPackage package;
    const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
    package.addEntry(62, {name, package.addItem(std::string(1, '\0')), 1, name, 0, 0});
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Format});
}

}  // namespace
