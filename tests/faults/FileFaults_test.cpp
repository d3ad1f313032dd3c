// Files by path: saved, copied, loaded, removed.
#include "FileFaults.h"

using namespace faults;
using Public::Base::File;
using Public::Base::SharedBuffer;
using support::readText;
using support::writeText;

namespace {

class SaveAnew : public Save {
public:
    void putOld() override {}
};

class Copy : public OneFile {
public:
    ErrorInfo run() override { return resultOf(File::copy(at("source"), at("d/file"))); }
};

class CopyAnew : public Copy {
public:
    void putOld() override {}
};

class MakeDirectories : public Attempt {
public:
    void prepare() override { std::filesystem::create_directory(at("a")); }
    ErrorInfo run() override { return resultOf(File::makeDirectory(at("a/b/c"))); }
    void check(const ErrorInfo& result) override { EXPECT_LE(result.errorCode(), 0); }
    void checkReached() override { EXPECT_TRUE(std::filesystem::is_directory(at("a/b/c"))); }
};

class RemoveTree : public Attempt {
public:
    void prepare() override {
        writeText(at("d/one"), kOld);
        writeText(at("d/below/two"), kOld);
        writeText(at("d/below/deep/three"), kOld);
        writeText(at("kept"), kOld);
        mBefore = treeOf(root());
    }
    ErrorInfo run() override {
        // What is gone cannot be removed again.
        const ErrorInfo result = mDone ? ErrorInfo() : resultOf(File::removeDirectory(at("d")));
        mDone = !result;
        return result;
    }
    void check(const ErrorInfo&) override { expectOldOrNew(mBefore, treeOf(root()), {{"kept", kOld}}); }
    void checkReached() override {
        EXPECT_TRUE(equal(treeOf(root()), (Tree{{"kept", kOld}})));
        EXPECT_FALSE(std::filesystem::exists(at("d")));
    }

private:
    bool mDone = false;
    Tree mBefore;
};

class Load : public Attempt {
public:
    void prepare() override { writeText(at("file"), kNew); }
    ErrorInfo run() override {
        mText = File::load(at("file")).toStdString();
        return mText.empty() ? ErrorInfo::getLastError() : ErrorInfo();
    }
    void check(const ErrorInfo& result) override {
        EXPECT_EQ(readText(at("file")), kNew);
        EXPECT_EQ(mText.empty(), bool(result));
    }
    void checkReached() override { EXPECT_EQ(mText, kNew); }

private:
    std::string mText;
};

const std::vector<Kind> kReading = {Kind::InputOutputError, Kind::NoRight,     Kind::TooManyOpen,
                                    Kind::OutOfMemory,      Kind::Interrupted, Kind::ShortTransfer};
const std::vector<Kind> kMaking = {Kind::InputOutputError, Kind::DiskFull, Kind::DiskStaysFull, Kind::NoRight};
const std::vector<Kind> kRemoving = {Kind::InputOutputError, Kind::NoRight, Kind::TooManyOpen, Kind::OutOfMemory,
                                     Kind::Interrupted};

class FileCopy : public FaultTest {};
class FileLoad : public FaultTest {};
class FileMakeDirectory : public FaultTest {};
class FileRemoveDirectory : public FaultTest {};

}  // namespace

TEST_P(FileSave, KeepsTheOldFileOrHasTheNewOne) {
    exhaust([] { return std::make_unique<Save>(); });
}
TEST_P(FileSave, LeavesNothingWhereNothingWas) {
    exhaust([] { return std::make_unique<SaveAnew>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, FileSave, testing::ValuesIn(kWriting), titleOf);

TEST_P(FileCopy, KeepsTheOldTargetOrHasTheNewOne) {
    exhaust([] { return std::make_unique<Copy>(); });
}
TEST_P(FileCopy, LeavesNothingWhereNothingWas) {
    exhaust([] { return std::make_unique<CopyAnew>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, FileCopy, testing::ValuesIn(kWriting), titleOf);

TEST_P(FileLoad, GivesTheWholeFileOrNothing) {
    exhaust([] { return std::make_unique<Load>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, FileLoad, testing::ValuesIn(kReading), titleOf);

TEST_P(FileMakeDirectory, CanBeRepeated) {
    exhaust([] { return std::make_unique<MakeDirectories>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, FileMakeDirectory, testing::ValuesIn(kMaking), titleOf);

TEST_P(FileRemoveDirectory, TouchesNothingElseAndCanBeRepeated) {
    exhaust([] { return std::make_unique<RemoveTree>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, FileRemoveDirectory, testing::ValuesIn(kRemoving), titleOf);
