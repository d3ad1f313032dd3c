#include "Upgrade.h"

#include <memory>

#include "AnnouncedBackup.h"
#include "Journal.h"
#include "OrvInstaller.h"
#include "Paths.h"
#include "Plan.h"
#include "Public/Base/Clock.h"
#include "Public/Base/Directory.h"
#include "Public/Base/DirectoryLock.h"
#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/Process.h"
#include "Public/Base/Thread.h"
#include "Recovery.h"
#include "Rollback.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::DirectoryLock;
using Public::Base::File;

namespace {

constexpr unsigned kLookEveryMs = 5;

ErrorInfo failed(const std::string& reason) { return {Public::Base::ErrorCode_Failed, reason}; }

/// A directory that is not there yet cannot be locked, nor need it be.
ErrorInfo lockDirectory(const std::string& directory, DirectoryLock& lock) {
    if (!File::access(directory, Public::Base::AccessMode_Exists)) return {};
    switch (lock.take(directory)) {
        case DirectoryLock::Result::Taken:
            return {};
        case DirectoryLock::Result::Held:
            return failed("another installer is at work on " + directory);
        case DirectoryLock::Result::Failed:
            break;
    }
    return ErrorInfo::getLastError();
}

/// The backup directory itself stays, since it is locked.
ErrorInfo emptyDirectory(const std::string& path) {
    Public::Base::Directory directory(path);
    for (Public::Base::Dirent entry; directory.read(entry);) {
        const bool isDirectory = entry.type == Public::Base::Dirent::Type_Directory;
        const bool removed = isDirectory ? File::removeDirectory(entry.fullPath) : File::remove(entry.fullPath);
        if (!removed) return ErrorInfo::getLastError();
    }
    return {};
}

/// A program that has just ended lets go of its files a moment later, and so does one that looks through new files.
ErrorInfo waitForFiles(const Journal& journal, unsigned int withinMs) {
    const uint64_t deadline = Public::Base::Clock::current()->milliseconds() + withinMs;
    for (const auto& entry : journal.entries) {
        if (entry.kind != JournalEntry::Kind::ReplacedFile) continue;
        while (Public::Base::FileEntry::isInUse(below(journal.installDir, entry.name))) {
            if (Public::Base::Clock::current()->milliseconds() >= deadline) {
                return {Public::Base::ErrorCode_OutputOpen, entry.name + " is in use by another program"};
            }
            Public::Base::Thread::sleep(kLookEveryMs);
        }
    }
    return {};
}

/// The error of the unpacking. A reader that failed shows only in a progress that stopped short.
ErrorInfo unpack(const UpgradeOrder& order, const std::shared_ptr<OrvInstaller>& installer) {
    if (const ErrorInfo refused = installer->start(order.installDir, order.flag, {})) return refused;
    while (!installer->finish()) Public::Base::Thread::sleep(kLookEveryMs);
    installer->stop();
    if (const ErrorInfo error = installer->getError()) return error;
    float progress = 0;
    installer->getProgress(progress);
    return progress < 1.0F ? ErrorInfo(Public::Base::ErrorCode_PackageUnreadable, "") : ErrorInfo();
}

/// One unpacking with the journal around it.
class Change {
public:
    Change(const UpgradeOrder& order, DirectoryLock& lock)
        : mOrder(order),
          mLock(lock),
          mFile(order.backupDir),
          mBackup(std::make_shared<AnnouncedBackup>(order.backupDir)),
          mInstaller(std::make_shared<OrvInstaller>(mBackup, order.package, static_cast<VersionType>(order.role))) {}

    /// Upgrades the directory, up to the moment when the new version holds, which is the journal's end.
    ErrorInfo run() {
        if (mInstaller->getPackageVersion() == 0) return failed("");
        if (ErrorInfo error = emptyDirectory(mOrder.backupDir)) return error;
        if (ErrorInfo error = claimNewDirectory()) return error;
        if (ErrorInfo error = announce()) return error;
        if (ErrorInfo error = unpack(mOrder, mInstaller)) return error;
        if (ErrorInfo error = keepChanges(mBegun)) return error;
        return mFile.remove();
    }

    /// After a failure, leaves the directory as it was.
    ErrorInfo takeBack() {
        if (ErrorInfo error = undo(mBegun, mOrder.backupDir)) return error;
        return mFile.remove();
    }

    const AnnouncedBackup& backup() const { return *mBackup; }

private:
    /// Makes the install directory, told in a journal of its own, since a plan needs it there and locked.
    ErrorInfo claimNewDirectory() {
        if (File::access(mOrder.installDir, Public::Base::AccessMode_Exists)) return {};
        const std::string whole = toText(resolved(mOrder.installDir));
        if (whole.empty()) return failed(mOrder.installDir + " cannot be looked at");
        Journal journal{whole, {{JournalEntry::Kind::MadeDirectory, "", 0, 0, {}}}};
        if (ErrorInfo error = mFile.write(journal)) return error;
        const ErrorInfo error = makeLastingDirectory(mOrder.installDir);
        // One that is locked is somebody else's, who made it at the same time.
        const ErrorInfo refused = error ? ErrorInfo() : lockDirectory(mOrder.installDir, mLock);
        if (!refused) mBegun = journal;
        return error ? error : refused;
    }

    /// Saves what will be replaced, then tells of all that will be done. The install directory stays as it is.
    ErrorInfo announce() {
        Journal journal;
        const auto names = mInstaller->getOutputNames();
        if (ErrorInfo error = planUpgrade(mOrder.installDir, mOrder.backupDir, names, journal)) return error;
        if (ErrorInfo error = waitForFiles(journal, mOrder.filesFreeWithinMs)) return error;
        journal.entries.insert(journal.entries.begin(), mBegun.entries.begin(), mBegun.entries.end());
        if (ErrorInfo error = saveReplaced(journal, mOrder.backupDir)) return error;
        mBackup->announce(journal);
        mBegun = journal;
        return mFile.write(journal);
    }

    const UpgradeOrder& mOrder;
    DirectoryLock& mLock;
    const JournalFile mFile;
    const std::shared_ptr<AnnouncedBackup> mBackup;
    const std::shared_ptr<OrvInstaller> mInstaller;
    Journal mBegun;  // what has to be undone
};

void install(const UpgradeOrder& order, DirectoryLock& lock, UpgradeOutcome& outcome) {
    Change change(order, lock);
    outcome.error = change.run();
    outcome.filesReplaced = change.backup().replaced();
    outcome.filesAdded = change.backup().added();
    if (!outcome.error) {
        outcome.result = UpgradeOutcome::Result::Installed;
    } else if (const ErrorInfo left = change.takeBack()) {
        outcome.result = UpgradeOutcome::Result::Damaged;
        outcome.error = left;
    }
}

std::string reasonOf(const ErrorInfo& error) {
    if (!error || !error.errorMessage().empty()) return error.errorMessage();
    switch (static_cast<int>(error.errorCode())) {
        case Public::Base::ErrorCode_OutputOpen:
            return "an output file cannot be opened";
        case Public::Base::ErrorCode_OutputWrite:
            return "an output file cannot be written";
        case Public::Base::ErrorCode_PackageUnreadable:
            return "the package cannot be read to its end";
        default:
            return "the package cannot be opened";
    }
}

}  // namespace

UpgradeOutcome upgrade(const UpgradeOrder& order) {
    UpgradeOutcome outcome;
    outcome.result = UpgradeOutcome::Result::Restored;  // nothing has been touched
    DirectoryLock backupLock;
    DirectoryLock installLock;
    outcome.error = makeLastingDirectory(order.backupDir);
    if (!outcome.error) outcome.error = lockDirectory(order.backupDir, backupLock);
    if (!outcome.error) outcome.error = lockDirectory(order.installDir, installLock);
    if (outcome.error) return outcome;

    const bool hostEnded = Public::Base::Process::waitForExit(order.hostProcess, order.hostEndsWithinMs);
    // Also under a host that did not end: it may be another process of that number, a restart later.
    const Recovery recovery = recover(order.backupDir, order.installDir);
    outcome.recovered = recovery.undone;
    if (recovery.error) {
        outcome.result = UpgradeOutcome::Result::Damaged;
        outcome.error = recovery.error;
    } else if (!hostEnded) {
        outcome.error = failed("the host did not end");
    } else {
        install(order, installLock, outcome);
    }
    return outcome;
}

bool writeReport(const std::string& path, const UpgradeOutcome& outcome) {
    static constexpr const char* kResults[] = {"installed", "restored", "damaged"};
    Public::Base::JsonValue report;
    report["result"] = kResults[static_cast<size_t>(outcome.result)];
    report["error"] = static_cast<int>(outcome.error.errorCode());
    report["reason"] = reasonOf(outcome.error);
    report["replaced"] = static_cast<int>(outcome.filesReplaced);
    report["added"] = static_cast<int>(outcome.filesAdded);
    report["recovered"] = outcome.recovered;
    return File::save(path, report.toStyledString(Public::Base::WriteStyle_Indented));
}
