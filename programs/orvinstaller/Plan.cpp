#include "Plan.h"

#include <filesystem>
#include <set>

#include "Paths.h"
#include "Public/Base/FileEntry.h"
#include "Public/Base/StringEx.h"

namespace fs = std::filesystem;
using Public::Base::ErrorInfo;
using Public::Base::FileEntry;

namespace {

ErrorInfo refused(const std::string& name, const char* reason) {
    return {Public::Base::ErrorCode_OutputOpen, name + " " + reason};
}

/// Its copy in the backup directory would be in the journal's place, in the eyes of some systems in any case of
/// letters.
bool isOfJournal(const fs::path& first) {
    return Public::Base::StringEx::toLower(toText(first)).starts_with(JournalFile::kName);
}

class Planner {
public:
    Planner(const std::string& installDir, const std::string& backupDir, Journal& journal)
        : mJournal(journal), mInstallDir(resolved(installDir)), mBackupDir(resolved(backupDir)) {
        journal.installDir = toText(mInstallDir);
        journal.entries.clear();
    }

    ErrorInfo add(const std::string& name) {
        const fs::path relative = toPath(name);
        const fs::path parent = relative.parent_path();
        if (name.empty() || relative.has_root_path() || *relative.begin() == "..")
            return refused(name, "leads outside");
        if (isOfJournal(*relative.begin())) return refused(name, "is the name of the journal");
        if (!mParents.contains(parent)) {
            const fs::path leadsTo = resolved(toText(mInstallDir / parent));
            if (leadsTo.empty()) return refused(name, "cannot be looked at");
            if (!holds(mInstallDir, leadsTo)) return refused(name, "leads outside");
            if (holds(mBackupDir, leadsTo)) return refused(name, "leads into the backup");
            fs::path level;
            for (const auto& part : parent) {
                if (!noteDirectory(level /= part)) return refused(name, "cannot be looked at");
            }
            mParents.insert(parent);
        }
        return mNames.insert(name).second ? noteFile(name) : ErrorInfo();
    }

    /// Directories first, each before those in it, since they are the last to be undone; added files last, so that
    /// their space is free again by the time that others are restored.
    void finish() {
        mJournal.entries = std::move(mDirectories);
        mJournal.entries.insert(mJournal.entries.end(), mReplaced.begin(), mReplaced.end());
        mJournal.entries.insert(mJournal.entries.end(), mAdded.begin(), mAdded.end());
    }

private:
    bool noteDirectory(const fs::path& relative) {
        if (!mLookedAt.insert(relative).second) return true;
        const FileEntry::Kind kind = FileEntry::at(toText(mInstallDir / relative)).kind;
        if (kind == FileEntry::Kind::Absent) {
            mDirectories.push_back({JournalEntry::Kind::MadeDirectory, toText(relative), 0, 0, {}});
        }
        return kind != FileEntry::Kind::Unknown;
    }

    ErrorInfo noteFile(const std::string& name) {
        const std::string path = toText(mInstallDir / toPath(name));
        JournalEntry entry{JournalEntry::Kind::AddedFile, name, 0, 0, {}};
        const FileEntry there = FileEntry::at(path);
        if (there.kind == FileEntry::Kind::Link) {
            entry.kind = JournalEntry::Kind::ReplacedLink;
            if (!FileEntry::readLink(path, entry.target)) return refused(name, "cannot be looked at");
        } else if (there.kind == FileEntry::Kind::File) {
            entry.kind = JournalEntry::Kind::ReplacedFile;
            entry.permissions = there.permissions;
            entry.modified = there.modified;
        } else if (there.kind != FileEntry::Kind::Absent) {
            const bool isUnknown = there.kind == FileEntry::Kind::Unknown;
            return refused(name, isUnknown ? "cannot be looked at" : "is there already and no file");
        }
        (entry.kind == JournalEntry::Kind::AddedFile ? mAdded : mReplaced).push_back(entry);
        return {};
    }

    Journal& mJournal;
    const fs::path mInstallDir, mBackupDir;
    std::set<fs::path> mLookedAt, mParents;
    std::set<std::string> mNames;
    std::vector<JournalEntry> mDirectories, mReplaced, mAdded;
};

}  // namespace

std::string plainName(const std::string& name) {
    const fs::path path = toPath(name).lexically_normal();
    return toText(path.has_filename() ? path : path.parent_path());
}

ErrorInfo planUpgrade(const std::string& installDir, const std::string& backupDir,
                      const std::vector<std::string>& names, Journal& journal) {
    for (const std::string& directory : {installDir, backupDir}) {
        if (resolved(directory).empty()) return refused(directory, "cannot be looked at");
    }
    Planner planner(installDir, backupDir, journal);
    for (const auto& name : names) {
        if (ErrorInfo error = planner.add(plainName(name))) return error;
    }
    planner.finish();
    return {};
}
