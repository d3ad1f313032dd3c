// The copy of a program with its libraries, held against what the system's loader needs: real modules, really run.
#include "FileText.h"
#include "OrvInstaller/DependencyCopy.h"
#include "Public/Base/File.h"
#include "TreeFixture.h"

using Public::Base::File;
using support::DescribedTree;
using support::readText;
using support::runTree;
using support::TreeFixture;
using support::TreeRun;
using Names = std::set<std::string>;

namespace {

class RealTree : public TreeFixture, public testing::WithParamInterface<DescribedTree> {
protected:
    RealTree() {
        install(GetParam());
        EXPECT_TRUE(copy());
    }
    Names expected() const {
        Names names;
        for (const auto& [name, place] : GetParam().copied) names.insert(name);
        return names;
    }
    /// Which module of the application a file is a copy of: each has its own place in it.
    std::string placeOf(const std::string& path) const {
        for (const support::DescribedModule& one : GetParam().modules) {
            if (readText(path) == readText(built(GetParam(), one.place))) return one.place;
        }
        return "none of the application's: " + path;
    }
};

Names below(const std::string& directory, const Names& names) {
    Names paths;
    for (const std::string& name : names) paths.insert(directory + "/" + name);
    return paths;
}

auto treesOf(const std::string& kind) { return testing::ValuesIn(support::describedTrees(kind)); }
auto inexactTrees() {
    std::vector<DescribedTree> trees = support::describedTrees();
    std::erase_if(trees, [](const DescribedTree& tree) { return tree.kind == "exact"; });
    return testing::ValuesIn(trees);
}
std::string nameOf(const testing::TestParamInfo<DescribedTree>& info) { return info.param.name; }

using InexactTree = RealTree;
using ExactTree = RealTree;
using BrokenTree = RealTree;

}  // namespace

TEST_P(InexactTree, IsCopiedAsDescribed) {
    EXPECT_EQ(copied(), expected());
    for (const auto& [name, place] : GetParam().copied) {
        EXPECT_EQ(readText(target(name)), readText(source(place))) << name;
    }
}

TEST_P(ExactTree, TheCopyHoldsWhatTheLoaderTakesFromTheApplication) {
    const TreeRun run = runTree(source("app.exe"), searched());
    EXPECT_EQ(run.code, expected().size());
    EXPECT_EQ(copied(), expected());
    Names taken;
    for (const std::string& name : copied()) taken.insert(placeOf(target(name)));
    Names loaded;
    for (const std::string& path : run.loaded) loaded.insert(placeOf(path));
    EXPECT_EQ(loaded, taken);
}

TEST_P(ExactTree, TheCopyRunsByItselfAsTheApplicationDoes) {
    const TreeRun whole = runTree(source("app.exe"), searched());
    ASSERT_TRUE(File::removeDirectory(mSource));
    const TreeRun run = runTree(target("app.exe"));
    EXPECT_EQ(run.code, expected().size());
    EXPECT_EQ(run.reached, whole.reached);
    EXPECT_EQ(run.loaded, below(mTarget, copied()));
}

TEST_P(ExactTree, TheCopyDoesNotStartWithoutAnyOneOfItsLibraries) {
    for (const std::string& name : copied()) {
        if (name == "app.exe") continue;
        ASSERT_TRUE(File::copy(target(name), mDir.path() + "/aside") && File::remove(target(name))) << name;
        const TreeRun run = runTree(target("app.exe"));
        EXPECT_EQ(run.code, TreeRun::kLibraryNotFound) << name;
        EXPECT_EQ(run.reached, Names()) << name;
        ASSERT_TRUE(File::copy(mDir.path() + "/aside", target(name))) << name;
    }
    EXPECT_EQ(runTree(target("app.exe")).code, expected().size());
}

TEST_P(BrokenTree, TheCopyFailsAsTheApplicationDoes) {
    const TreeRun whole = runTree(source("app.exe"), searched());
    EXPECT_GE(whole.code, 0xC0000000U);
    EXPECT_EQ(runTree(target("app.exe")).code, whole.code);
}

INSTANTIATE_TEST_SUITE_P(Trees, InexactTree, inexactTrees(), nameOf);
INSTANTIATE_TEST_SUITE_P(Trees, ExactTree, treesOf("exact"), nameOf);
INSTANTIATE_TEST_SUITE_P(Trees, BrokenTree, treesOf("broken"), nameOf);

// Where the copy and the loader part.

namespace {

class TreeDifference : public TreeFixture {
protected:
    /// @return how the program ends where it lies
    TreeRun copyAndRun(const std::string& name) {
        install(name);
        EXPECT_TRUE(copy());
        return runTree(source("app.exe"), searched());
    }
    TreeRun runCopy() const { return runTree(target("app.exe")); }
};

}  // namespace

TEST_F(TreeDifference, AHiddenLibraryIsLeftBehindAndTheCopyDoesNotStart) {
    EXPECT_EQ(copyAndRun("Hidden").reached, (Names{".hidden.dll", "a.dll", "app.exe"}));
    EXPECT_EQ(runCopy().code, TreeRun::kLibraryNotFound);
}

TEST_F(TreeDifference, WhatLiesInAHiddenDirectoryIsLeftBehindAndTheCopyDoesNotStart) {
    EXPECT_EQ(copyAndRun("HiddenDirectory").reached, (Names{".secret/a.dll", "app.exe"}));
    EXPECT_EQ(runCopy().code, TreeRun::kLibraryNotFound);
}

TEST_F(TreeDifference, ALibraryThatIsLinkedWhenFirstCalledIsLeftBehindAndMissedThen) {
    EXPECT_EQ(copyAndRun("Delayed").reached, (Names{"a.dll", "app.exe", "deeper.dll", "slow.dll"}));
    const TreeRun run = runCopy();
    EXPECT_EQ(run.code, TreeRun::kDelayedNotFound);
    EXPECT_EQ(run.reached, (Names{"a.dll", "app.exe"}));
}

TEST_F(TreeDifference, ALibraryThatARunningProgramAsksForIsLeftBehind) {
    EXPECT_EQ(copyAndRun("Later").reached, (Names{"a.dll", "app.exe", "plugin.dll"}));
    const TreeRun run = runCopy();
    EXPECT_EQ(run.code, 2U);
    EXPECT_EQ(run.reached, (Names{"a.dll", "app.exe", "no plugin.dll"}));
}

TEST_F(TreeDifference, ALibraryThatAnotherOneForwardsToIsLeftBehindAndTheCopyFails) {
    EXPECT_EQ(copyAndRun("Forwarded").reached, (Names{"app.exe", "behind.dll"}));
    const TreeRun run = runCopy();
    EXPECT_GE(run.code, 0x80000000U);  // some systems miss it at the start, others when it is called
    EXPECT_FALSE(run.reached.contains("behind.dll"));
}

TEST_F(TreeDifference, AFileThatALibraryReadsIsLeftBehind) {
    EXPECT_EQ(copyAndRun("DataFile").reached, (Names{"app.exe", "codec.dll"}));
    EXPECT_EQ(runCopy().reached, (Names{"app.exe", "codec.dll", "no codec.dat"}));
}

TEST_F(TreeDifference, OfTwoWordSizesTheNearerFileIsTakenAlthoughTheProgramCannotUseIt) {
    install("OtherWordSizeNearer");
    EXPECT_TRUE(copy());
    const TreeRun run = runCopy();
    EXPECT_GE(run.code, 0xC0000000U);
    EXPECT_EQ(run.reached, Names());
}

// Names and places in other scripts.

TEST_F(TreeDifference, NamesInTheSystemsCodePageAreThoseOfTheLoader) {
    EXPECT_EQ(copyAndRun("WesternName").reached, (Names{"Bänder/Übung.dll", "Größe.dll", "app.exe"}));
    const TreeRun run = runCopy();
    EXPECT_EQ(run.code, 3U);
    EXPECT_EQ(run.loaded, below(mTarget, {"Größe.dll", "app.exe", "Übung.dll"}));
}

TEST_F(TreeDifference, AnApplicationInAChineseDirectoryRunsFromAnother) {
    mSource = mDir.path() + "/应用 程序/bin";
    mTarget = mDir.path() + "/安装 程序/installer";
    ASSERT_TRUE(File::makeDirectory(mTarget));
    const TreeRun whole = copyAndRun("Product");
    EXPECT_EQ(whole.code, 12U);
    const TreeRun run = runCopy();
    EXPECT_EQ(run.reached, whole.reached);
    EXPECT_EQ(run.loaded, below(mTarget, copied()));
}
