// Every operation that takes a path, given paths that lead nowhere and paths of both separators.
#include "FileText.h"
#include "PathOperations.h"
#include "Places.h"
#include "Public/Base/Directory.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"
#include "SystemErrors.h"
#include "TempDir.h"

using namespace Public::Base;
using support::directoryOperations;
using support::Operation;
using support::operations;
using support::readText;
using support::writeText;

namespace {

std::vector<Place> places() {
    using support::errorOf;
    using support::SystemError;
    std::vector<Place> all = {
        {"EmptyPath", "", errorOf(SystemError::BadPath)},
        {"ZeroByte", std::string("a\0b", 3), errorOf(SystemError::BadPath)},
        {"BelowAFile", "file/x", errorOf(SystemError::BelowAFile), errorOf(SystemError::NoDirectory)},
        {"TooLongAName", std::string(300, 'n') + "/x", errorOf(SystemError::NameTooLong)},
    };
    for (const Place& place : placesOfThisSystem()) all.push_back(place);
    return all;
}

struct Attempt {
    Operation operation;
    Place place;
};

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
};

TEST_P(PathThatLeadsNowhere, IsRefusedWithTheReason) {
    const auto& [operation, place] = GetParam();
    writeText(mDir.path() + "/file", "kept");
    layOut(mDir.path());
    const std::string path = place.below.empty() ? std::string() : mDir.path() + "/" + place.below;
    const bool making = std::string(operation.name) == "MakeDirectory" && place.errorOfMaking != 0;
    EXPECT_FALSE(operation.succeeds(path, mDir.path() + "/file"));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), making ? place.errorOfMaking : place.error);
    EXPECT_EQ(readText(mDir.path() + "/file"), "kept");
    takeAway(mDir.path());
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"file"});
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

}  // namespace
