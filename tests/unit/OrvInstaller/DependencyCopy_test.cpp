// Which modules are copied with a program, and from where.
#include "OrvInstaller/DependencyCopy.h"

#include "DependencyCopyFixture.h"
#include "FileKinds.h"
#include "Public/Base/File.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::writeText;
using Names = std::set<std::string>;

TEST_F(DependencyCopy, CopiesAProgramWithoutImports) {
    module("app.exe");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), Names{"app.exe"});
    EXPECT_EQ(readText(target("app.exe")), image("app.exe"));
}

TEST_F(DependencyCopy, CopiesWhatTheProgramImports) {
    module("app.exe", {"a.dll", "b.dll"});
    module("a.dll");
    module("b.dll");
    module("unused.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll"}));
    EXPECT_EQ(readText(target("b.dll")), image("b.dll"));
}

TEST_F(DependencyCopy, CopiesWhatLibrariesImport) {
    module("app.exe", {"a.dll"});
    module("a.dll", {"b.dll"});
    module("b.dll", {"c.dll"});
    module("c.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll", "c.dll"}));
}

TEST_F(DependencyCopy, LeavesOutLibrariesOfTheSystem) {
    module("app.exe", {"KERNEL32.dll", "a.dll"});
    module("a.dll", {"msvcrt.dll"});
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
}

TEST_F(DependencyCopy, FindsAnImportOfAnotherSpelling) {
    module("app.exe", {"CORE.DLL"});
    module("core.dll", {"Media.dll"});
    module("MEDIA.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"CORE.DLL", "Media.dll", "app.exe"}));
    EXPECT_EQ(readText(target("Media.dll")), image("MEDIA.dll", {}));
}

TEST_F(DependencyCopy, CopiesALibraryOfASubDirectoryToTheTop) {
    module("app.exe", {"codec.dll"});
    module("plugins/deep/codec.dll", {"util.dll"});
    module("plugins/util.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"app.exe", "codec.dll", "util.dll"}));
    EXPECT_EQ(readText(target("codec.dll")), image("plugins/deep/codec.dll", {"util.dll"}));
}

TEST_F(DependencyCopy, PrefersTheApplicationDirectoryItself) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    module("0/a.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("a.dll")), image("a.dll"));
}

TEST_F(DependencyCopy, PrefersTheFirstSubDirectoryByName) {
    module("app.exe", {"x.dll"});
    module("b/x.dll");
    module("a/x.dll");
    module("c/x.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("x.dll")), image("a/x.dll"));
}

TEST_F(DependencyCopy, SearchesSubDirectoriesDepthFirst) {
    module("app.exe", {"x.dll"});
    module("a/deep/er/x.dll");
    module("b/x.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("x.dll")), image("a/deep/er/x.dll"));
}

TEST_F(DependencyCopy, DoesNotFindAHiddenLibrary) {
    module("app.exe", {".hidden.dll", "a.dll"});
    module(".hidden.dll");
    support::hide(source(".hidden.dll"));
    module("a.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
}

TEST_F(DependencyCopy, DoesNotLookIntoAHiddenDirectory) {
    module("app.exe", {"a.dll"});
    module(".secret/a.dll");
    support::hide(source(".secret"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), Names{"app.exe"});
}

TEST_F(DependencyCopy, FindsModulesOfAnyExtension) {
    module("app.exe", {"native-program", "libengine.so.1"});
    module("native-program");
    writeText(source("libengine.so.1"),
              "\x7F"
              "ELF and no program of this format");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"app.exe", "libengine.so.1", "native-program"}));
}

TEST_F(DependencyCopy, CopiesALibraryThatIsNoProgramButDoesNotFollowIt) {
    module("app.exe", {"broken.dll"});
    support::PeFile broken = support::buildPe({true, {"a.dll"}, {}, ""});
    broken.set16(0, 0x4D5A);
    writeText(source("broken.dll"), broken.bytes);
    module("a.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"app.exe", "broken.dll"}));
}

TEST_F(DependencyCopy, CopiesAnEmptyLibraryThatCannotBeMapped) {
    module("app.exe", {"empty.dll"});
    writeText(source("empty.dll"), "");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"app.exe", "empty.dll"}));
}

TEST_F(DependencyCopy, OverwritesFilesThatAreThere) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    writeText(target("a.dll"), std::string(100000, 'x'));
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("a.dll")), image("a.dll"));
}

TEST_F(DependencyCopy, LeavesOtherFilesOfTheTarget) {
    module("app.exe");
    writeText(target("old.dll"), "old");
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("old.dll")), "old");
}

TEST_F(DependencyCopy, DoesNotReportAFailedCopy) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    std::filesystem::create_directories(target("a.dll"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), Names{"app.exe"});
}

TEST_F(DependencyCopy, OverwritesAReadOnlyFileThatIsThere) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    writeText(target("a.dll"), "old");
    support::makeReadOnly(target("a.dll"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("a.dll")), image("a.dll"));
}

TEST_F(DependencyCopy, CopiesReadOnlyFilesAndCanDoSoAgain) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    support::makeReadOnly(source("a.dll"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("a.dll")), image("a.dll"));
    ASSERT_TRUE(Public::Base::File::remove(source("a.dll")));
    writeText(source("a.dll"), image("newer"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("a.dll")), image("newer"));
}

TEST_F(DependencyCopy, SucceedsAndCopiesNothingWithoutATarget) {
    module("app.exe");
    EXPECT_TRUE(copyDependens(source("app.exe"), mSource, mRoot + "/nowhere"));
    EXPECT_FALSE(std::filesystem::exists(mRoot + "/nowhere"));
}

TEST_F(DependencyCopy, KeepsThePermissionToExecute) {
    module("app.exe");
    std::filesystem::permissions(source("app.exe"), std::filesystem::perms(0755));
    EXPECT_TRUE(copy());
    EXPECT_EQ(std::filesystem::status(target("app.exe")).permissions() & std::filesystem::perms::owner_exec,
              std::filesystem::perms::owner_exec);
}

TEST_F(DependencyCopy, TakesAProgramFromOutsideOfTheSourceDirectory) {
    writeText(mRoot + "/elsewhere/app.exe", image("outer", {"a.dll", "b.dll"}));
    module("a.dll");
    writeText(mRoot + "/elsewhere/b.dll", image("b"));
    EXPECT_TRUE(copyDependens(mRoot + "/elsewhere/app.exe", mSource, mTarget));
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
}

TEST_F(DependencyCopy, TheProgramItselfBeatsAModuleOfItsName) {
    writeText(mRoot + "/elsewhere/app.exe", image("outer", {"APP.exe"}));
    module("app.exe", {"a.dll"});
    module("a.dll");
    EXPECT_TRUE(copyDependens(mRoot + "/elsewhere/app.exe", mSource, mTarget));
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
    EXPECT_EQ(readText(target("app.exe")), image("outer", {"APP.exe"}));
}

TEST_F(DependencyCopy, AModuleThatImportsItselfInLowerCaseIsNotFollowed) {
    writeText(mRoot + "/elsewhere/app.exe", image("outer", {"app.exe"}));
    module("app.exe", {"a.dll"});
    module("a.dll");
    EXPECT_TRUE(copyDependens(mRoot + "/elsewhere/app.exe", mSource, mTarget));
    EXPECT_EQ(copied(), Names{"app.exe"});
}

TEST_F(DependencyCopy, TakesBackslashesInAllPaths) {
    module("app.exe", {"codec.dll"});
    module("plugins/codec.dll");
    const auto back = [](std::string path) {
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    };
    EXPECT_TRUE(copyDependens(back(source("app.exe")), back(mSource), back(mTarget)));
    EXPECT_EQ(copied(), (Names{"app.exe", "codec.dll"}));
}

TEST_F(DependencyCopy, RefusesEmptyArguments) {
    module("app.exe");
    EXPECT_FALSE(copyDependens("", mSource, mTarget));
    EXPECT_FALSE(copyDependens(source("app.exe"), "", mTarget));
    EXPECT_FALSE(copyDependens(source("app.exe"), mSource, ""));
    EXPECT_TRUE(copied().empty());
}

TEST_F(DependencyCopy, FailsForAnAbsentProgram) {
    module("a.dll");
    EXPECT_FALSE(copy("gone.exe"));
    EXPECT_TRUE(copied().empty());
}

TEST_F(DependencyCopy, FailsForAProgramThatIsADirectory) {
    module("app.exe/a.dll");
    EXPECT_FALSE(copy());
    EXPECT_TRUE(copied().empty());
}

TEST_F(DependencyCopy, FailsForAnEmptyProgram) {
    writeText(source("app.exe"), "");
    EXPECT_FALSE(copy());
    EXPECT_TRUE(copied().empty());
}

TEST_F(DependencyCopy, FailsForAProgramThatDoesNotBeginAsOne) {
    writeText(source("app.exe"), "#!/bin/sh\nexit 0\n");
    EXPECT_FALSE(copy());
    EXPECT_TRUE(copied().empty());
}

TEST_F(DependencyCopy, WorksWithoutASourceDirectory) {
    writeText(mRoot + "/elsewhere/app.exe", image("app.exe", {"a.dll"}));
    EXPECT_TRUE(copyDependens(mRoot + "/elsewhere/app.exe", mRoot + "/nowhere", mTarget));
    EXPECT_EQ(copied(), Names{"app.exe"});
}

// Names that lead elsewhere.

TEST_F(DependencyCopy, ImportNamesDoNotLeadOutOfTheTarget) {
    module("app.exe", {"..\\a.dll", "sub\\b.dll", "../c.dll", "C:\\d.dll", "..", ".", "sub/e.dll"});
    for (const char* name : {"a.dll", "b.dll", "c.dll", "d.dll", "sub/e.dll"}) module(name);
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll", "d.dll"}));
    EXPECT_EQ(filesBelow(mRoot).size(), 6U + 4U);  // the application directory and the target, nothing beside them
}

TEST_F(DependencyCopy, ImportNamesDoNotLeadOutOfTheSource) {
    module("app.exe", {"..\\secret.dll", "../secret.dll", mRoot + "/secret.dll"});
    writeText(mRoot + "/secret.dll", image("secret"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), Names{"app.exe"});
}

// Modules of the other word size, and what they export.

TEST_F(DependencyCopy, ReadsTheImportTableWhereA64BitModuleHasIt) {
    const support::PeFile small = support::buildPe({false, {"a.dll"}, {}, ""});
    writeText(source("app.exe"), small.bytes);
    module("a.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), Names{"app.exe"});  // a 32-bit module keeps it elsewhere, so nothing is found
}

TEST_F(DependencyCopy, FindsTheImportsOfA32BitModuleThatNamesThemAtThe64BitPlace) {
    support::PeFile small = support::buildPe({false, {"a.dll"}, {}, ""});
    small.set32(small.ntHeader + 144, small.addressOf(small.importTable));
    writeText(source("app.exe"), small.bytes);
    module("a.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
}

TEST_F(DependencyCopy, WhatALibraryExportsPlaysNoPart) {
    module("app.exe", {"none.dll", "some.dll", "small.dll", "lying.dll"});
    module("none.dll");
    writeText(source("some.dll"), support::buildPe({true, {}, {"run", "stop"}, ""}).bytes);
    writeText(source("small.dll"), support::buildPe({false, {}, {"run"}, ""}).bytes);
    support::PeFile lying = support::buildPe({false, {}, {"run"}, ""});
    lying.set32(lying.exportDirectoryField(), 0xFFFFFFF0);
    writeText(source("lying.dll"), lying.bytes);
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"app.exe", "lying.dll", "none.dll", "small.dll", "some.dll"}));
}
