#include "Recovery.h"

#include "Journal.h"
#include "Paths.h"
#include "Public/Base/DirectoryLock.h"
#include "Public/Base/FileEntry.h"
#include "Public/Base/Printer.h"
#include "Rollback.h"

using Public::Base::DirectoryLock;
using Public::Base::ErrorInfo;
using Public::Base::FileEntry;

namespace {

ErrorInfo failed(const std::string& reason) { return {Public::Base::ErrorCode_Failed, reason}; }

/// A directory that was there and is not, such as one of a disk that is missing, must not be made of a few old files.
bool hasGone(const Journal& journal) {
    const bool wasThere = journal.entries.empty() || !journal.entries.front().name.empty();
    return wasThere && FileEntry::at(toText(resolved(journal.installDir))).kind != FileEntry::Kind::Directory;
}

ErrorInfo undoJournal(const JournalFile& file, const std::string& backupDir, const std::string& lockedDir) {
    Journal journal;
    if (ErrorInfo damaged = file.read(journal)) return damaged;
    if (hasGone(journal)) return failed("the directory of an unfinished upgrade, " + journal.installDir + ", has gone");
    DirectoryLock lock;
    const bool isLocked = toPath(journal.installDir) == resolved(lockedDir);
    if (!isLocked && lock.take(journal.installDir) == DirectoryLock::Result::Held) {
        return failed("another installer is at work on " + journal.installDir + ", where an upgrade is unfinished");
    }
    if (ErrorInfo error = undo(journal, backupDir)) return error;
    return file.remove();
}

void log(Public::Base::LOG_Level level, const char* format, const std::string& value) {
    Public::Base::printer(level, "programs/orvinstaller", "recover", __LINE__, format, {value});
}

}  // namespace

Recovery recover(const std::string& backupDir, const std::string& lockedDir) {
    const JournalFile file(backupDir);
    if (!file.exists()) return {};
    Recovery recovery;
    recovery.error = undoJournal(file, backupDir, lockedDir);
    recovery.undone = !recovery.error;
    if (recovery.undone) {
        log(Public::Base::LOG_Level_Progress, "an unfinished upgrade was undone from %s", backupDir);
    } else {
        log(Public::Base::LOG_Level_Error, "an unfinished upgrade cannot be undone: %s",
            recovery.error.errorMessage().empty() ? std::to_string(static_cast<int>(recovery.error.errorCode()))
                                                  : recovery.error.errorMessage());
    }
    return recovery;
}
