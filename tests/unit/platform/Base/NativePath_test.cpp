// Every operation that takes a path, given paths that lead nowhere and paths of both separators.
#include "Base/Posix/NativePath.h"

#include "FileText.h"
#include "Public/Base/Directory.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"
#include "TempDir.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

struct Operation {
    const char* name;
    std::function<bool(const std::string& path, const std::string& spare)> succeeds;
};

// In each, spare is the path of a file that is there.
const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = {
        {"OpenToRead", [](const auto& path, const auto&) { return File().open(path, OpenMode_Read); }},
        {"OpenToCreate", [](const auto& path, const auto&) { return File().open(path, OpenMode_Create); }},
        {"OpenToKeep", [](const auto& path, const auto&) { return File().open(path, OpenMode_CreateKeep); }},
        {"Access", [](const auto& path, const auto&) { return File::access(path, AccessMode_Exists); }},
        {"Load", [](const auto& path, const auto&) { return !File::load(path).empty(); }},
        {"Save", [](const auto& path, const auto&) { return File::save(path, SharedBuffer("x")); }},
        {"GetLength", [](const auto& path, const auto&) { return File::getLength(path) != 0; }},
        {"Remove", [](const auto& path, const auto&) { return File::remove(path); }},
        {"CopyFrom", [](const auto& path, const auto& spare) { return File::copy(path, spare); }},
        {"CopyTo", [](const auto& path, const auto& spare) { return File::copy(spare, path); }},
        {"MapFile",
         [](const auto& path, const auto&) { return MappedFile().open(path) == MappedFile::Result::Mapped; }},
        {"SystemCopyFrom", [](const auto& path, const auto& spare) { return System::copyFile(path, spare); }},
        {"SystemCopyTo", [](const auto& path, const auto& spare) { return System::copyFile(spare, path); }},
    };
    return all;
}

const std::vector<Operation>& directoryOperations() {
    static const std::vector<Operation> all = {
        {"MakeDirectory", [](const auto& path, const auto&) { return File::makeDirectory(path); }},
        {"RemoveDirectory", [](const auto& path, const auto&) { return File::removeDirectory(path); }},
        {"ReadDirectory", [](const auto& path, const auto&) { return Directory(path).isOpen(); }},
        {"ListFiles",
         [](const auto& path, const auto&) {
             ListedFile file;
             return FileListing(path).next(file);
         }},
    };
    return all;
}

struct Place {
    const char* name;
    std::string below;  // of the test's directory; empty stands for no path at all
    int error;
};

const std::vector<Place>& places() {
    static const std::vector<Place> all = {
        {"EmptyPath", "", EINVAL},
        {"ZeroByte", std::string("a\0b", 3), EINVAL},
        {"BelowAFile", "file/x", ENOTDIR},
        {"BehindALinkLoop", "loop/x", ELOOP},
        {"TooLongAName", std::string(300, 'n') + "/x", ENAMETOOLONG},
        {"TooLongAPath", std::string(5000, '/') + "x", ENAMETOOLONG},
    };
    return all;
}

struct Attempt {
    Operation operation;
    Place place;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
void PrintTo(const Attempt& attempt, std::ostream* out) { *out << attempt.operation.name << " " << attempt.place.name; }

std::vector<Attempt> attempts() {
    std::vector<Attempt> all;
    for (const auto& list : {operations(), directoryOperations()}) {
        for (const auto& operation : list) {
            for (const auto& place : places()) all.push_back({operation, place});
        }
    }
    return all;
}

class PathThatLeadsNowhere : public testing::TestWithParam<Attempt> {
protected:
    support::TempDir mDir;
    support::TempDir mLoops;
};

TEST_P(PathThatLeadsNowhere, IsRefusedWithTheReason) {
    const auto& [operation, place] = GetParam();
    writeText(mDir.path() + "/file", "kept");
    std::filesystem::create_symlink("loop", mLoops.path() + "/loop");
    const std::string root = place.error == ELOOP ? mLoops.path() : mDir.path();
    const std::string path = place.below.empty() ? std::string() : root + "/" + place.below;
    // A loop that stands in the way of a new directory is an entry that is no directory.
    const bool inTheWay = place.error == ELOOP && std::string(operation.name) == "MakeDirectory";
    EXPECT_FALSE(operation.succeeds(path, mDir.path() + "/file"));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + (inTheWay ? ENOTDIR : place.error)));
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"file"});
    EXPECT_EQ(readText(mDir.path() + "/file"), "kept");
}

INSTANTIATE_TEST_SUITE_P(All, PathThatLeadsNowhere, testing::ValuesIn(attempts()), [](const auto& test) {
    return std::string(test.param.operation.name) + "_" + test.param.place.name;
});

class PathOfBackslashes : public testing::TestWithParam<Operation> {
protected:
    support::TempDir mDir;
};

TEST_P(PathOfBackslashes, NamesWhatSlashesName) {
    writeText(mDir.path() + "/sub/target", "content");
    writeText(mDir.path() + "/spare", "other");
    EXPECT_TRUE(GetParam().succeeds(mDir.path() + "\\sub\\target", mDir.path() + "\\spare"));
    for (const std::string& name : support::filesBelow(mDir.path())) EXPECT_EQ(name.find('\\'), name.npos) << name;
}

INSTANTIATE_TEST_SUITE_P(All, PathOfBackslashes, testing::ValuesIn(operations()),
                         [](const auto& test) { return test.param.name; });

class DirectoryOfBackslashes : public PathOfBackslashes {};

TEST_P(DirectoryOfBackslashes, NamesWhatSlashesName) {
    writeText(mDir.path() + "/sub/below/file", "content");
    EXPECT_TRUE(GetParam().succeeds(mDir.path() + "\\sub\\below", ""));
    for (const std::string& name : support::filesBelow(mDir.path())) EXPECT_EQ(name.find('\\'), name.npos) << name;
}

INSTANTIATE_TEST_SUITE_P(All, DirectoryOfBackslashes, testing::ValuesIn(directoryOperations()),
                         [](const auto& test) { return test.param.name; });

class RegardlessOfCase : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

TEST_F(RegardlessOfCase, FindsTheOneOfAnotherCase) {
    writeText(at("LibX.DLL"), "");
    EXPECT_EQ(findRegardlessOfCase(at("libx.dll")), at("LibX.DLL"));
}

TEST_F(RegardlessOfCase, PrefersTheExactName) {
    writeText(at("LIB"), "");
    writeText(at("lib"), "");
    EXPECT_EQ(findRegardlessOfCase(at("lib")), at("lib"));
}

TEST_F(RegardlessOfCase, TakesTheFirstByNameOfSeveral) {
    for (const char* name : {"lIB", "LIb", "Lib"}) writeText(at(name), "");
    EXPECT_EQ(findRegardlessOfCase(at("lib")), at("LIb"));
}

TEST_F(RegardlessOfCase, LeavesAPathAloneThatIsNotThereInAnyCase) {
    writeText(at("other"), "");
    EXPECT_EQ(findRegardlessOfCase(at("lib")), at("lib"));
    EXPECT_EQ(findRegardlessOfCase(at("none/lib")), at("none/lib"));
}

TEST_F(RegardlessOfCase, TakesDirectoriesAsTheyAreGiven) {
    writeText(at("Sub/lib"), "");
    EXPECT_EQ(findRegardlessOfCase(at("sub/lib")), at("sub/lib"));
}

TEST_F(RegardlessOfCase, LooksInTheCurrentDirectoryForABareName) {
    EXPECT_EQ(findRegardlessOfCase("no such name anywhere"), "no such name anywhere");
}

}  // namespace
