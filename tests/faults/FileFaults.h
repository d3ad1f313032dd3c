// One file that is done wholly or not at all, for the tests of what fails on the way.
#pragma once

#include "FaultTest.h"
#include "FileText.h"
#include "Public/Base/File.h"

namespace faults {

inline const std::string kOld(5000, 'o');
inline const std::string kNew(300000, 'n');

inline ErrorInfo resultOf(bool done) { return done ? ErrorInfo() : ErrorInfo::getLastError(); }

/// An operation on one file that is done wholly or not at all.
class OneFile : public Attempt {
public:
    void prepare() override {
        support::writeText(at("source"), kNew);
        std::filesystem::create_directory(at("d"));
        putOld();
        mBefore = treeOf(root());
    }
    virtual void putOld() { support::writeText(at("d/file"), kOld); }
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
    ErrorInfo run() override {
        return resultOf(Public::Base::File::save(at("d/file"), Public::Base::SharedBuffer(kNew)));
    }
};

class FileSave : public FaultTest {};

}  // namespace faults
