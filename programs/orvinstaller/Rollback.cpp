#include "Rollback.h"

#include <filesystem>
#include <set>

#include "OrvBackup.h"
#include "Paths.h"
#include "Public/Base/Durability.h"
#include "Public/Base/File.h"

namespace fs = std::filesystem;
using Public::Base::Durability;
using Public::Base::ErrorInfo;
using Public::Base::File;
using Kind = JournalEntry::Kind;

namespace {

ErrorInfo failed(const fs::path& path, const char* what, const std::error_code& error) {
    if (!error) return {};
    return {Public::Base::ErrorCode_Failed, toText(path) + " " + what + ": " + error.message()};
}

fs::file_type typeOf(const fs::path& path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type();
}

ErrorInfo syncAll(const std::set<fs::path>& paths) {
    std::vector<std::string> texts;
    for (const auto& path : paths) texts.push_back(toText(path));
    return Durability::syncAll(texts) ? ErrorInfo() : ErrorInfo::getLastError();
}

bool openForRestore(File& file, const std::string& path) {
    if (file.open(path, Public::Base::OpenMode_Create)) return true;
    // One that may not be written, being read-only or a running program, is made anew.
    return File::remove(path) && file.open(path, Public::Base::OpenMode_Create);
}

/// Writes to the file itself, which so keeps its owner and its other names, and leaves nothing beside it when it is
/// broken off; the journal sees to a file that is half written.
ErrorInfo writeContent(const std::string& from, const std::string& to) {
    File input(from);
    if (!input.open(Public::Base::OpenMode_Read)) return ErrorInfo::getLastError();
    File output;
    if (!openForRestore(output, to)) return ErrorInfo::getLastError();
    const uint64_t length = File::getLength(from);
    std::string piece(1 << 18, '\0');
    for (uint64_t done = 0; done < length;) {
        const size_t got = input.read(piece.data(), piece.size());
        if (got == 0) return {Public::Base::ErrorCode_Failed, from + " cannot be read to its end"};
        if (output.write(piece.data(), got) != got) return ErrorInfo::getLastError();
        done += got;
    }
    return output.close() ? ErrorInfo() : ErrorInfo::getLastError();
}

/// Bits beyond those for reading, writing and executing lend the owner's rights, so they go only where the owner
/// stayed.
ErrorInfo restoreFile(const JournalEntry& entry, const std::string& installDir, const std::string& backupDir) {
    const fs::path path = toPath(below(installDir, entry.name));
    const fs::file_type there = typeOf(path);
    if (there == fs::file_type::symlink && !File::remove(toText(path))) return ErrorInfo::getLastError();
    if (!File::makeDirectory(toText(path.parent_path()))) return ErrorInfo::getLastError();
    if (ErrorInfo error = writeContent(below(backupDir, entry.name), toText(path))) return error;
    auto permissions = static_cast<fs::perms>(entry.permissions);
    if (there != fs::file_type::regular) permissions &= fs::perms::all;
    std::error_code error;
    fs::permissions(path, permissions, error);
    if (error) return failed(path, "gets no permissions", error);
    fs::last_write_time(path, fs::file_time_type(fs::file_time_type::duration(entry.modified)), error);
    return failed(path, "gets no time", error);
}

ErrorInfo restoreLink(const JournalEntry& entry, const std::string& installDir) {
    const fs::path path = toPath(below(installDir, entry.name));
    const fs::path target(std::u8string(entry.target.begin(), entry.target.end()));  // as it was, "\\" too
    std::error_code error;
    if (typeOf(path) == fs::file_type::symlink && fs::read_symlink(path, error) == target) return {};
    if (typeOf(path) != fs::file_type::not_found && !File::remove(toText(path))) return ErrorInfo::getLastError();
    fs::create_symlink(target, path, error);
    return failed(path, "cannot be made a link again", error);
}

ErrorInfo removeFile(const std::string& path) {
    const fs::file_type there = typeOf(toPath(path));
    // A directory in its place is not of this entry's making.
    if (there == fs::file_type::not_found || there == fs::file_type::directory) return {};
    return File::remove(path) ? ErrorInfo() : ErrorInfo::getLastError();
}

ErrorInfo removeEmptyDirectory(const fs::path& path) {
    if (typeOf(path) != fs::file_type::directory) return {};
    std::error_code error;
    if (!fs::is_empty(path, error) && !error) return {};
    fs::remove(path, error);
    return failed(path, "cannot be removed", error);
}

ErrorInfo undoEntry(const JournalEntry& entry, const std::string& installDir, const std::string& backupDir) {
    switch (entry.kind) {
        case Kind::MadeDirectory:
            return removeEmptyDirectory(toPath(below(installDir, entry.name)));
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
    for (fs::path at = whole; typeOf(at) == fs::file_type::not_found; at = at.parent_path()) {
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
        const fs::file_type there = typeOf(path);
        if (there == fs::file_type::regular) files.insert(path);
        if (there == fs::file_type::directory) directories.insert(path);
        if (typeOf(path.parent_path()) == fs::file_type::directory) directories.insert(path.parent_path());
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
