// Files by path: saved, copied, loaded, removed.
#include <sys/stat.h>

#include "FaultTest.h"
#include "FileText.h"
#include "Public/Base/File.h"

using namespace faults;
using Public::Base::File;
using Public::Base::SharedBuffer;
using support::readText;
using support::writeText;

namespace {

const std::string kOld(5000, 'o');
const std::string kNew(300000, 'n');

ErrorInfo resultOf(bool done) { return done ? ErrorInfo() : ErrorInfo::getLastError(); }

/// An operation on one file that is done wholly or not at all.
class OneFile : public Attempt {
public:
    void prepare() override {
        writeText(at("source"), kNew);
        std::filesystem::create_directory(at("d"));
        putOld();
        mBefore = treeOf(root());
    }
    virtual void putOld() { writeText(at("d/file"), kOld); }
    void check(const ErrorInfo& result) override {
        if (!result) return;
        EXPECT_TRUE(equal(treeOf(root()), mBefore));
        EXPECT_LE(result.errorCode(), -10000);
    }
    void checkReached() override { EXPECT_TRUE(equal(treeOf(root()), (Tree{{"source", kNew}, {"d/file", kNew}}))); }

protected:
    Tree mBefore;
};

class Save : public OneFile {
public:
    ErrorInfo run() override { return resultOf(File::save(at("d/file"), SharedBuffer(kNew))); }
};

class SaveAnew : public Save {
public:
    void putOld() override {}
};

class SaveThroughALink : public Save {
public:
    void putOld() override {
        writeText(at("d/file"), kOld);
        std::filesystem::create_symlink("d/file", at("link"));
    }
    ErrorInfo run() override { return resultOf(File::save(at("link"), SharedBuffer(kNew))); }
    void checkReached() override {
        EXPECT_TRUE(equal(treeOf(root()), (Tree{{"source", kNew}, {"d/file", kNew}, {"link", "-> d/file"}})));
    }
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

class FileSave : public FaultTest {};
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
TEST_P(FileSave, ThroughALinkKeepsTheLink) {
    exhaust([] { return std::make_unique<SaveThroughALink>(); });
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
