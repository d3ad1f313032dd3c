// Backup and restore, one file and whole trees.
#include "FaultTest.h"
#include "FileText.h"
#include "OrvBackup.h"

using namespace faults;
using support::writeText;
using Tarnwick::OrvUpdate::OrvBackup;

namespace {

const Tree kApp = {{"one.txt", "first"}, {"lang/two.txt", std::string(3000, '2')}};

void write(const std::string& directory, const Tree& tree) {
    for (const auto& [name, content] : tree) writeText(directory + "/" + name, content);
}

/// What was in the directory before an upgrade spoilt it lies in the backup.
class BackupAttempt : public Attempt {
public:
    void prepare() override { write(at("app"), kApp); }
    void check(const ErrorInfo&) override {
        EXPECT_TRUE(equal(treeOf(at("app")), kApp));
        expectOldOrNew({}, treeOf(at("saved")), kApp);
    }
    void checkReached() override {
        EXPECT_TRUE(equal(treeOf(at("app")), kApp));
        EXPECT_TRUE(equal(treeOf(at("saved")), kApp));
    }

protected:
    OrvBackup backup() const { return OrvBackup(at("saved")); }
};

class BackupByName : public BackupAttempt {
public:
    ErrorInfo run() override {
        for (const auto& [name, content] : kApp) {
            if (const ErrorInfo error = backup().backup(name, at("app"))) return error;
        }
        return {};
    }
};

class RestoreByName : public BackupAttempt {
public:
    void prepare() override {
        write(at("saved"), kApp);
        write(at("app"), kSpoilt);
    }
    ErrorInfo run() override {
        for (const auto& [name, content] : kApp) {
            if (const ErrorInfo error = backup().restore(name, at("app"))) return error;
        }
        return {};
    }
    void check(const ErrorInfo&) override {
        EXPECT_TRUE(equal(treeOf(at("saved")), kApp));
        expectOldOrNew(kSpoilt, treeOf(at("app")), kApp);
    }

protected:
    const Tree kSpoilt = {{"one.txt", "spo"}, {"lang/two.txt", ""}};
};

/// A walk tells each file's result; a directory that cannot be read counts as empty.
class RestoreTree : public RestoreByName {
public:
    ErrorInfo run() override {
        ErrorInfo first;
        mRestored.clear();
        const ErrorInfo walk = backup().restore(at("app"), [&](const std::string& name, const ErrorInfo& result) {
            if (!result) mRestored.insert(std::filesystem::path(name.substr(1)).generic_string());
            if (result && !first) first = result;
        });
        EXPECT_EQ(walk.errorCode(), 0);
        // A directory that cannot be read counts as empty, so a caller must count what was told.
        const bool whole = mRestored.size() == kApp.size();
        return first || whole ? first : ErrorInfo(-1, "not all files were told");
    }
    void check(const ErrorInfo& result) override {
        RestoreByName::check(result);
        const Tree now = treeOf(at("app"));
        for (const auto& name : mRestored) EXPECT_EQ(now.at(name), kApp.at(name)) << name;
    }

private:
    std::set<std::string> mRestored;
};

/// The walk flattens, and makes no directory.
class BackupTree : public BackupAttempt {
public:
    void prepare() override {
        BackupAttempt::prepare();
        std::filesystem::create_directory(at("saved"));
    }
    ErrorInfo run() override {
        ErrorInfo first;
        mSaved.clear();
        const ErrorInfo walk = backup().backup(at("app"), [&](const std::string& name, const ErrorInfo& result) {
            if (!result) mSaved.insert(name.substr(1));
            if (result && !first) first = result;
        });
        EXPECT_EQ(walk.errorCode(), 0);
        const bool whole = mSaved.size() == kFlat.size();
        return first || whole ? first : ErrorInfo(-1, "not all files were told");
    }
    void check(const ErrorInfo&) override {
        EXPECT_TRUE(equal(treeOf(at("app")), kApp));
        const Tree now = treeOf(at("saved"));
        expectOldOrNew({}, now, kFlat);
        for (const auto& name : mSaved) EXPECT_TRUE(now.contains(name)) << name;
    }
    void checkReached() override { EXPECT_TRUE(equal(treeOf(at("saved")), kFlat)); }

private:
    const Tree kFlat = {{"one.txt", "first"}, {"two.txt", std::string(3000, '2')}};
    std::set<std::string> mSaved;
};

class ClearBackup : public BackupAttempt {
public:
    void prepare() override {
        BackupAttempt::prepare();
        write(at("saved"), kApp);
    }
    ErrorInfo run() override {
        // What is gone cannot be removed again.
        const ErrorInfo result = mDone ? ErrorInfo() : backup().clear();
        mDone = !result;
        return result;
    }
    void check(const ErrorInfo&) override {
        EXPECT_TRUE(equal(treeOf(at("app")), kApp));
        expectOldOrNew(kApp, treeOf(at("saved")), {});
    }
    void checkReached() override { EXPECT_FALSE(std::filesystem::exists(at("saved"))); }

private:
    bool mDone = false;
};

class BackupFile : public FaultTest {};
class BackupWalk : public FaultTest {};
class BackupClear : public FaultTest {};

}  // namespace

TEST_P(BackupFile, IsSavedWholeOrNotAtAll) {
    exhaust([] { return std::make_unique<BackupByName>(); });
}
TEST_P(BackupFile, IsRestoredWholeOrStaysAsItIs) {
    exhaust([] { return std::make_unique<RestoreByName>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, BackupFile, testing::ValuesIn(kWriting), titleOf);

TEST_P(BackupWalk, TellsOfEachFileWhatBecameOfIt) {
    exhaust([] { return std::make_unique<BackupTree>(); });
}
TEST_P(BackupWalk, RestoresEachFileThatItTellsOf) {
    exhaust([] { return std::make_unique<RestoreTree>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, BackupWalk, testing::ValuesIn(kWriting), titleOf);

TEST_P(BackupClear, CanBeRepeated) {
    exhaust([] { return std::make_unique<ClearBackup>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, BackupClear,
                         testing::Values(Kind::InputOutputError, Kind::NoRight, Kind::TooManyOpen, Kind::OutOfMemory,
                                         Kind::Interrupted),
                         titleOf);
