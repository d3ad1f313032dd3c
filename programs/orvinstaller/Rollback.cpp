#include "Rollback.h"

#include <filesystem>
#include <set>

#include "OrvBackup.h"
#include "Paths.h"
#include "Public/Base/Durability.h"
#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"

namespace fs = std::filesystem;
using Public::Base::Durability;
using Public::Base::ErrorInfo;
using Public::Base::File;
using Public::Base::FileEntry;
using Kind = JournalEntry::Kind;

namespace {

constexpr size_t kPiece = 1 << 18;

ErrorInfo failed(const std::string& path, const char* what) {
    return {Public::Base::ErrorCode_Failed, path + " " + what + ": " + ErrorInfo::getLastError().errorMessage()};
}

FileEntry::Kind kindOf(const fs::path& path) { return FileEntry::at(toText(path)).kind; }

ErrorInfo syncAll(const std::set<fs::path>& paths) {
    std::vector<std::string> texts;
    for (const auto& path : paths) texts.push_back(toText(path));
    return Durability::syncAll(texts) ? ErrorInfo() : ErrorInfo::getLastError();
}

bool haveSameContent(const std::string& one, const std::string& other) {
    File first(one);
    File second(other);
    if (!first.open(Public::Base::OpenMode_Read) || !second.open(Public::Base::OpenMode_Read)) return false;
    uint64_t left = File::getLength(one);
    if (File::getLength(other) != left) return false;
    std::string piece(kPiece, '\0');
    std::string otherPiece(kPiece, '\0');
    while (left != 0) {
        const size_t got = first.read(piece.data(), piece.size());
        if (got == 0 || got > left || second.read(otherPiece.data(), got) != got) return false;
        if (piece.compare(0, got, otherPiece, 0, got) != 0) return false;
        left -= got;
    }
    return true;
}

/// Writes to the file itself, which so keeps its owner and its other names, and leaves nothing beside it when it is
/// broken off; the journal sees to a file that is half written.
ErrorInfo writeContent(const std::string& from, File& output) {
    File input(from);
    if (!input.open(Public::Base::OpenMode_Read)) return ErrorInfo::getLastError();
    const uint64_t length = File::getLength(from);
    std::string piece(kPiece, '\0');
    for (uint64_t done = 0; done < length;) {
        const size_t got = input.read(piece.data(), piece.size());
        if (got == 0) return {Public::Base::ErrorCode_Failed, from + " cannot be read to its end"};
        if (output.write(piece.data(), got) != got) return ErrorInfo::getLastError();
        done += got;
    }
    return output.close() ? ErrorInfo() : ErrorInfo::getLastError();
}

ErrorInfo restoreContent(const JournalEntry& entry, const FileEntry& there, const std::string& saved,
                         const std::string& path) {
    if (!File::access(saved, Public::Base::AccessMode_Exists)) return ErrorInfo::getLastError();
    File output;
    if (!output.open(path, Public::Base::OpenMode_Create)) {
        const ErrorInfo refused = ErrorInfo::getLastError();
        // What kept it from being replaced, being read-only or a running program, keeps it from being restored too.
        const bool isUntouched = there == FileEntry{FileEntry::Kind::File, entry.permissions, entry.modified};
        if (isUntouched && haveSameContent(saved, path)) return {};
        if (!File::remove(path) || !output.open(path, Public::Base::OpenMode_Create)) return refused;
    }
    return writeContent(saved, output);
}

/// Bits beyond those for reading, writing and executing lend the owner's rights, so they go only where the owner
/// stayed.
ErrorInfo restoreFile(const JournalEntry& entry, const std::string& installDir, const std::string& backupDir) {
    const fs::path place = toPath(below(installDir, entry.name));
    const std::string path = toText(place);
    const std::string saved = below(backupDir, entry.name);
    const FileEntry there = FileEntry::at(path);
    if (there.kind == FileEntry::Kind::Link && !File::remove(path)) return ErrorInfo::getLastError();
    if (!File::makeDirectory(toText(place.parent_path()))) return ErrorInfo::getLastError();
    if (ErrorInfo error = restoreContent(entry, there, saved, path)) return error;
    constexpr unsigned kLendRights = 07000;
    const bool stayed = there.kind == FileEntry::Kind::File;
    if (!FileEntry::setPermissions(path, stayed ? entry.permissions : entry.permissions & ~kLendRights)) {
        return failed(path, "gets no permissions");
    }
    return FileEntry::setModified(path, entry.modified) ? ErrorInfo() : failed(path, "gets no time");
}

ErrorInfo restoreLink(const JournalEntry& entry, const std::string& installDir) {
    const std::string path = below(installDir, entry.name);
    const FileEntry::Kind there = FileEntry::at(path).kind;
    std::string target;
    if (there == FileEntry::Kind::Link && FileEntry::readLink(path, target) && target == entry.target) return {};
    if (there != FileEntry::Kind::Absent && !File::remove(path)) return ErrorInfo::getLastError();
    return FileEntry::makeLink(entry.target, path) ? ErrorInfo() : failed(path, "cannot be made a link again");
}

ErrorInfo removeFile(const std::string& path) {
    const FileEntry::Kind there = FileEntry::at(path).kind;
    // A directory in its place is not of this entry's making.
    if (there == FileEntry::Kind::Absent || there == FileEntry::Kind::Directory) return {};
    return File::remove(path) ? ErrorInfo() : ErrorInfo::getLastError();
}

ErrorInfo removeDirectory(const std::string& path) {
    if (FileEntry::at(path).kind != FileEntry::Kind::Directory) return {};
    return FileEntry::removeEmptyDirectory(path) ? ErrorInfo() : failed(path, "cannot be removed");
}

ErrorInfo undoEntry(const JournalEntry& entry, const std::string& installDir, const std::string& backupDir) {
    switch (entry.kind) {
        case Kind::MadeDirectory:
            return removeDirectory(below(installDir, entry.name));
        case Kind::AddedFile:
            return removeFile(below(installDir, entry.name));
        case Kind::ReplacedFile:
            return restoreFile(entry, installDir, backupDir);
        case Kind::ReplacedLink:
            return restoreLink(entry, installDir);
    }
    return {};
}

}  // namespace

ErrorInfo makeLastingDirectory(const std::string& path) {
    const fs::path whole = resolved(path);
    if (whole.empty()) return {Public::Base::ErrorCode_Failed, path + " cannot be looked at"};
    std::set<fs::path> changed;
    for (fs::path at = whole; kindOf(at) == FileEntry::Kind::Absent; at = at.parent_path()) {
        changed.insert({at, at.parent_path()});
    }
    if (!File::makeDirectory(path)) return ErrorInfo::getLastError();
    return syncAll(changed);
}

ErrorInfo saveReplaced(const Journal& journal, const std::string& backupDir) {
    Tarnwick::OrvUpdate::OrvBackup backup(backupDir);
    const fs::path top = toPath(backupDir);
    std::set<fs::path> files;
    std::set<fs::path> directories{top};
    for (const auto& entry : journal.entries) {
        if (entry.kind != Kind::ReplacedFile) continue;
        if (ErrorInfo error = backup.backup(entry.name, journal.installDir)) return error;
        const fs::path name = toPath(entry.name);
        files.insert(top / name);
        for (fs::path level = name.parent_path(); !level.empty(); level = level.parent_path()) {
            directories.insert(top / level);
        }
    }
    if (ErrorInfo error = syncAll(files)) return error;
    return syncAll(directories);
}

ErrorInfo keepChanges(const Journal& journal) {
    std::set<fs::path> files;
    std::set<fs::path> directories;
    for (const auto& entry : journal.entries) {
        const fs::path path = toPath(below(journal.installDir, entry.name));
        const FileEntry::Kind there = kindOf(path);
        if (there == FileEntry::Kind::File) files.insert(path);
        if (there == FileEntry::Kind::Directory) directories.insert(path);
        if (kindOf(path.parent_path()) == FileEntry::Kind::Directory) directories.insert(path.parent_path());
    }
    if (ErrorInfo error = syncAll(files)) return error;
    return syncAll(directories);
}

ErrorInfo undo(const Journal& journal, const std::string& backupDir) {
    ErrorInfo first;
    for (auto entry = journal.entries.rbegin(); entry != journal.entries.rend(); ++entry) {
        const ErrorInfo error = undoEntry(*entry, journal.installDir, backupDir);
        if (error && !first) first = error;
    }
    if (const ErrorInfo error = keepChanges(journal); error && !first) first = error;
    return first;
}
