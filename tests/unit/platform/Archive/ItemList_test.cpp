// The names that a package's script gives to its items.
#include "Archive/NSISDecompile.h"
#include "PackageFixture.h"
#include "SyntheticPackage.h"

namespace {

class ItemNames : public support::PackageFixture {
protected:
    static std::string script(const std::string& section, const std::string& head = "") {
        return "Unicode true\nSetCompressor lzma\nName A\nOutFile package.exe\nInstallDir \"$PROGRAMFILES\\Orv\"\n" +
               head + "\nSection\n" + section + "\nSectionEnd\n";
    }
    bool openSection(const std::string& section, const support::PackageSpec::Files& sources = {{"f", "content"}}) {
        return openScript(script(section), sources);
    }
};

TEST_F(ItemNames, AreRelativeToTheInstallDirectory) {
    ASSERT_TRUE(openSection("SetOutPath $INSTDIR\nFile f\nSetOutPath \"$INSTDIR\\Orv Client\"\nFile f"));
    EXPECT_EQ(names(), (Names{"f", "Orv Client\\f"}));
}

TEST_F(ItemNames, BeginInTheInstallDirectoryBeforeAnyPathIsSet) {
    ASSERT_TRUE(openSection("File f"));
    EXPECT_EQ(names(), (Names{"f"}));
}

TEST_F(ItemNames, KeepTheVariableOfAnotherPlace) {
    ASSERT_TRUE(
        openSection("SetOutPath $TEMP\nFile f\nSetOutPath \"$0\\z\"\nFile f\nSetOutPath $R3\nFile f\n"
                    "SetOutPath \"$EXEDIR\\e\"\nFile f"));
    EXPECT_EQ(names(), (Names{"$TEMP\\f", "$0\\z\\f", "$R3\\f", "$EXEDIR\\e\\f"}));
}

TEST_F(ItemNames, KeepAFolderOfTheSystem) {
    ASSERT_TRUE(
        openSection("SetOutPath \"$SMPROGRAMS\\y\"\nFile f\nSetOutPath \"$APPDATA\\z\"\nFile f\n"
                    "SetOutPath \"$WINDIR\"\nFile f\nSetOutPath \"$SYSDIR\"\nFile f"));
    EXPECT_EQ(names(), (Names{"$SMPROGRAMS\\y\\f", "$APPDATA\\z\\f", "$WINDIR\\f", "$SYSDIR\\f"}));
}

TEST_F(ItemNames, KeepAFolderThatStandsInTheRegistry) {
    ASSERT_TRUE(
        openSection("SetOutPath \"$PROGRAMFILES\\a\"\nFile f\nSetOutPath \"$COMMONFILES\\b\"\nFile f\n"
                    "SetOutPath \"$PROGRAMFILES64\\c\"\nFile f\nSetOutPath \"$COMMONFILES64\\d\"\nFile f"));
    EXPECT_EQ(names(),
              (Names{"$PROGRAMFILES\\a\\f", "$COMMONFILES\\b\\f", "$PROGRAMFILES64\\c\\f", "$COMMONFILES64\\d\\f"}));
}

TEST_F(ItemNames, NumberTheScriptsOwnVariables) {
    ASSERT_TRUE(openScript(script("SetOutPath \"$Mine\\x\"\nFile f", "Var Mine"), {{"f", "content"}}));
    ASSERT_EQ(names().size(), 1u);
    EXPECT_TRUE(names().front().starts_with("$_")) << names().front();
    EXPECT_TRUE(names().front().ends_with("_\\x\\f")) << names().front();
}

TEST_F(ItemNames, KeepADriveAndAShare) {
    ASSERT_TRUE(openSection("SetOutPath \"c:\\tmp\"\nFile f\nSetOutPath \"\\\\host\\share\"\nFile f"));
    EXPECT_EQ(names(), (Names{"c:\\tmp\\f", "\\\\host\\share\\f"}));
}

TEST_F(ItemNames, TellADollarSignFromAVariable) {
    ASSERT_TRUE(
        openSection("SetOutPath \"$INSTDIR\\a$$b\"\nFile f\nSetOutPath \"$INSTDIR\"\nFile \"/oname=$$TEMP\" f"));
    EXPECT_EQ(names(), (Names{"a$b\\f", "$TEMP"}));
}

TEST_F(ItemNames, OfATreeFollowItsDirectories) {
    ASSERT_TRUE(
        openSection("SetOutPath \"$INSTDIR\\base\"\nFile /r tree\nFile f",
                    {{"f", "last"}, {"tree/a.txt", "1"}, {"tree/sub/b.txt", "2"}, {"tree/sub/deep/c.txt", "3"}}));
    Names sorted = names();
    sorted.sort();
    EXPECT_EQ(sorted,
              (Names{"base\\f", "base\\tree\\a.txt", "base\\tree\\sub\\b.txt", "base\\tree\\sub\\deep\\c.txt"}));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->content("base\\tree\\sub\\deep\\c.txt"), "3");
}

TEST_F(ItemNames, OfACreatedDirectoryDoNotMoveTheCurrentOne) {
    ASSERT_TRUE(openSection("SetOutPath \"$INSTDIR\\in\"\nCreateDirectory \"$INSTDIR\\other\"\nFile f"));
    EXPECT_EQ(names(), (Names{"in\\f"}));
}

TEST_F(ItemNames, InChineseAreUtf8) {
    ASSERT_TRUE(openSection("SetOutPath \"$INSTDIR\\客户端\"\nFile \"/oname=升级.dll\" f\nFile \"/oname=😀.txt\" f"));
    EXPECT_EQ(names(), (Names{"客户端\\升级.dll", "客户端\\😀.txt"}));
}

TEST_F(ItemNames, InWesternAnsiAreUtf8) {
    ASSERT_TRUE(openScript(
        "Unicode false\nName A\nOutFile package.exe\nSection\nFile \"/oname=Überblick €.txt\" f\nSectionEnd\n",
        {{"f", "content"}}));
    EXPECT_EQ(names(), (Names{"Überblick €.txt"}));
}

TEST_F(ItemNames, OfOneContentShareIt) {
    ASSERT_TRUE(
        openSection("File \"/oname=a\" f\nFile \"/oname=b\" f\nFile \"/oname=c\" g", {{"f", "same"}, {"g", "same"}}));
    ASSERT_TRUE(extract());
    ASSERT_EQ(mSink->names(), (std::vector<std::string>{"a", "b", "c"}));
    for (const auto& item : mSink->items) EXPECT_EQ(item.content, "same");
}

TEST_F(ItemNames, RepeatedForOneContentCountOnce) {
    ASSERT_TRUE(openSection("File f\nFile f\nFile f"));
    EXPECT_EQ(names(), (Names{"f"}));
}

TEST_F(ItemNames, RepeatedForOtherContentStay) {
    ASSERT_TRUE(openSection("File \"/oname=x\" f\nFile \"/oname=x\" g", {{"f", "first"}, {"g", "second"}}));
    ASSERT_TRUE(extract());
    ASSERT_EQ(mSink->items.size(), 2u);
    EXPECT_EQ(mSink->items[0].content, "first");
    EXPECT_EQ(mSink->items[1].content, "second");
}

TEST_F(ItemNames, OfSeveralSectionsAllCount) {
    ASSERT_TRUE(openScript(script("SetOutPath $INSTDIR\\one\nFile f\nSectionEnd\nSection /o other\n"
                                  "SetOutPath $INSTDIR\\two\nFile f"),
                           {{"f", "content"}}));
    EXPECT_EQ(names(), (Names{"one\\f", "two\\f"}));
}

TEST_F(ItemNames, LeaveOutReservedFiles) {
    ASSERT_TRUE(openSection("ReserveFile r\nFile f", {{"f", "content"}, {"r", "reserved"}}));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->names(), (std::vector<std::string>{"f"}));
    EXPECT_EQ(mSink->content("f"), "content");
}

TEST_F(ItemNames, MayBeStringsOfTheLanguage) {
    ASSERT_TRUE(openScript(script("SetOutPath \"$INSTDIR\\$(folder)\"\nFile f",
                                  "LoadLanguageFile \"${NSISDIR}/Contrib/Language files/German.nlf\"\n"
                                  "LoadLanguageFile \"${NSISDIR}/Contrib/Language files/English.nlf\"\n"
                                  "LangString folder 1031 Ordner\nLangString folder 1033 Folder"),
                           {{"f", "content"}}));
    EXPECT_EQ(names(), (Names{"Folder\\f"}));
}

TEST_F(ItemNames, TakeTheFirstLanguageWithoutEnglish) {
    ASSERT_TRUE(openScript(script("SetOutPath \"$INSTDIR\\$(folder)\"\nFile f",
                                  "LoadLanguageFile \"${NSISDIR}/Contrib/Language files/German.nlf\"\n"
                                  "LangString folder 1031 Ordner"),
                           {{"f", "content"}}));
    EXPECT_EQ(names(), (Names{"Ordner\\f"}));
}

TEST_F(ItemNames, OfAWideStubAreReadAlike) {
    ASSERT_TRUE(
        openScript("Target amd64-unicode\n" + script("SetOutPath \"$INSTDIR\\x\"\nFile f"), {{"f", "content"}}));
    EXPECT_EQ(names(), (Names{"x\\f"}));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->content("x\\f"), "content");
}

// What the package compiler does not write.

TEST_F(ItemNames, KeepDotsForTheSinkToJudge) {
    support::SyntheticPackage package;
    package.extractFile(package.addText("..\\..\\evil.exe"), package.addItem("x"));
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_EQ(names(), (Names{"..\\..\\evil.exe"}));
}

TEST_F(ItemNames, LoseSeparatorsBehindTheInstallDirectory) {
    support::SyntheticPackage package;
    package.extractFile(package.addRaw(package.variable(21) + package.text("\\\\\\a.txt")), package.addItem("x"));
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_EQ(names(), (Names{"a.txt"}));
}

TEST_F(ItemNames, BesideTheInstallDirectoryKeepItsVariable) {
    support::SyntheticPackage package;
    package.extractFile(package.addRaw(package.variable(21) + package.text(".old\\a.txt")), package.addItem("x"));
    ASSERT_TRUE(openBytes(package.build()));
    EXPECT_EQ(names(), (Names{"$INSTDIR.old\\a.txt"}));
}

TEST_F(ItemNames, MayBeEmpty) {
    support::SyntheticPackage package;
    package.extractFile(0, package.addItem("x"));
    ASSERT_TRUE(openBytes(package.build()));
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->names(), (std::vector<std::string>{""}));
}

TEST_F(ItemNames, WithANegativeOffsetMakeThePackageUnreadable) {
    support::SyntheticPackage package;
    package.extractFile(package.addText("a"), -5);
    EXPECT_FALSE(openBytes(package.build()));
}

TEST_F(ItemNames, OutsideTheStringTableMakeThePackageUnreadable) {
    support::SyntheticPackage package;
    package.extractFile(100000, package.addItem("x"));
    EXPECT_FALSE(openBytes(package.build()));
}

TEST_F(ItemNames, OutsideTheLanguageTableMakeThePackageUnreadable) {
    support::SyntheticPackage package;
    package.addLanguage(1033, {0});
    package.extractFile(-9, package.addItem("x"));
    EXPECT_FALSE(openBytes(package.build()));
}

TEST_F(ItemNames, WithoutAnyLanguageCannotComeFromOne) {
    support::SyntheticPackage package;
    package.extractFile(-1, package.addItem("x"));
    EXPECT_FALSE(openBytes(package.build()));
}

TEST_F(ItemNames, ThatGrowWithoutEndMakeThePackageUnreadable) {
    support::SyntheticPackage package;
    const int32_t twice =
        package.addRaw(package.variable(31) + package.text("\\long long long") + package.variable(31));
    for (int i = 0; i < 40; ++i) package.addEntry(25, {31, twice, 0, 0, 0, 0});
    EXPECT_FALSE(openBytes(package.build()));
}

TEST_F(ItemNames, BeyondAllMeasureTogetherMakeThePackageUnreadable) {
    support::SyntheticPackage package;
    const int32_t offset = package.addItem("x");
    package.setOutPath(package.addText(std::string(20000, 'd')));
    const int32_t name = package.addText("n");
    for (int i = 0; i < 10000; ++i) package.extractFile(name, offset);
    EXPECT_FALSE(openBytes(package.build()));
}

}  // namespace
