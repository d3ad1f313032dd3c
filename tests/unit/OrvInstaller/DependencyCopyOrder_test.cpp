// Imports that go in circles, and the order in which modules are copied.
#include "DependencyCopyFixture.h"
#include "FileKinds.h"

using namespace Tarnwick::OrvUpdate;
using support::writeText;
using Names = std::set<std::string>;

// Loops.

TEST_F(DependencyCopy, EndsWithTwoLibrariesThatImportEachOther) {
    module("app.exe", {"a.dll"});
    module("a.dll", {"b.dll"});
    module("b.dll", {"a.dll"});
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll"}));
}

TEST_F(DependencyCopy, EndsWithALibraryThatImportsItself) {
    module("app.exe", {"a.dll", "b.dll"});
    module("a.dll", {"a.dll"});
    module("b.dll", {"B.DLL"});
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll"}));
}

TEST_F(DependencyCopy, EndsWithALibraryThatImportsTheProgram) {
    module("app.exe", {"a.dll"});
    module("a.dll", {"APP.EXE"});
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
}

TEST_F(DependencyCopy, EndsWithManyRoadsToTheSameLibraries) {
    // Every level imports both modules of the next: a walk of all roads would take 2 to the 40th steps.
    constexpr int kLevels = 40;
    module("app.exe", {"a0.dll", "b0.dll"});
    for (int i = 0; i < kLevels; ++i) {
        const std::string next = std::to_string(i + 1) + ".dll";
        module("a" + std::to_string(i) + ".dll", {"a" + next, "b" + next});
        module("b" + std::to_string(i) + ".dll", {"a" + next, "b" + next});
    }
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied().size(), 2U * kLevels + 1);
}

TEST_F(DependencyCopy, FollowsALongChain) {
    constexpr int kLength = 600;
    module("app.exe", {"m0.dll"});
    for (int i = 0; i < kLength; ++i) module("m" + std::to_string(i) + ".dll", {"m" + std::to_string(i + 1) + ".dll"});
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied().size(), kLength + 1U);
}

TEST_F(DependencyCopy, EndsWithALoopOfLinkedDirectories) {
    module("app.exe", {"a.dll", "b.dll"});
    module("sub/a.dll");
    module("z/b.dll");
    support::makeDirectoryLink(mSource, source("sub/up"));
    support::makeDirectoryLink(mSource, source("sub/up2"));
    support::makeDirectoryLink(mSource, source("here"));
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "b.dll"}));
}

TEST_F(DependencyCopy, DoesNotDescendWithoutEnd) {
    module("app.exe", {"near.dll", "far.dll"});
    std::string path;
    for (int i = 0; i < 30; ++i) path += "d/";
    module(path + "near.dll");
    for (int i = 0; i < 90; ++i) path += "d/";
    module(path + "far.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"app.exe", "near.dll"}));
}

// Order, and symbol files.

TEST_F(DependencyCopy, ListsEachModuleBehindWhatItImportsAndTheProgramLast) {
    module("app.exe", {"z.dll", "a.dll", "b.dll"});
    module("z.dll", {"c.dll"});
    module("b.dll", {"c.dll", "a.dll"});
    module("a.dll");
    module("c.dll");
    EXPECT_EQ(listed(), (std::vector<std::string>{"c.dll", "z.dll", "a.dll", "b.dll", "app.exe"}));
}

TEST_F(DependencyCopy, ListsNoModuleThatCannotBeOpened) {
    module("app.exe", {"a.dll", "b.dll"});
    module("a.dll", {"c.dll"});
    module("b.dll");
    module("c.dll");
    const support::WithheldFile withheld(source("a.dll"));
    EXPECT_EQ(listed(), (std::vector<std::string>{"b.dll", "app.exe"}));
}

TEST_F(DependencyCopy, CopiesNoSymbolFiles) {
    module("app.exe", {"a.dll"});
    module("a.dll");
    writeText(source("app.pdb"), "symbols");
    writeText(source("a.pdb"), "symbols");
    EXPECT_TRUE(copy());
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe"}));
}

TEST_F(DependencyCopy, CopiesSymbolFilesWhenAskedTo) {
    module("app.exe");
    module("a.dll");
    writeText(source("app.pdb"), "symbols");
    copyModules({{source("a.dll"), "a.dll"}, {source("app.exe"), "app.exe"}}, mTarget, true);
    EXPECT_EQ(copied(), (Names{"a.dll", "app.exe", "app.pdb"}));
}

TEST_F(DependencyCopy, AModuleWithoutAPointHasNoSymbolFile) {
    writeText(mRoot + "/app.pdb", "symbols of another");
    writeText(mRoot + "/app.d/tool", "T");
    copyModules({{mRoot + "\\app.d\\tool", "tool"}}, mTarget, true);
    EXPECT_EQ(copied(), Names{"tool"});
}
