#include "OrvBackup.h"

#include <algorithm>

#include "EngineLog.h"
#include "ParentDirectory.h"
#include "Public/Base/Directory.h"
#include "Public/Base/File.h"
#include "RelativeName.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

/// A name that climbs out of its directory is refused, and so is a directory without a name, which would be the root.
bool isRefused(const std::string& sourceDir, const std::string& targetDir, const std::string& name) {
    return sourceDir.empty() || targetDir.empty() || leadsUp(name);
}

ErrorInfo copyFile(const std::string& sourceDir, const std::string& targetDir, const std::string& name) {
    ErrorInfo error;
    if (isRefused(sourceDir, targetDir, name)) {
        error = ErrorInfo(ErrorCode_OutputOpen, "");
    } else if (!File::copy(sourceDir + "/" + name, targetDir + "/" + name)) {
        error = ErrorInfo::getLastError();
    }
    if (error) ORV_LOG(6, "OrvBackup", "backup fail, name:%s", name);
    return error;
}

/// Also makes the directory that the copy lies in.
ErrorInfo copyNamed(const std::string& sourceDir, const std::string& targetDir, const std::string& name) {
    if (!isRefused(sourceDir, targetDir, name)) makeParentDirectory(targetDir + "/" + name);
    return copyFile(sourceDir, targetDir, name);
}

/// What stands behind the directory's path, its separator included.
std::string behind(const std::string& dir, const std::string& path) {
    return path.substr(std::min(dir.size(), path.size()));
}

}  // namespace

OrvBackup::OrvBackup(const std::string& backupDir) : mBackupDir(backupDir) {}

ErrorInfo OrvBackup::backup(const std::string& dir, const FileCallback& callback) {
    backupLevel(dir, callback);
    return {};
}

void OrvBackup::backupLevel(const std::string& dir, const FileCallback& callback) {
    Directory directory(dir);
    Dirent entry;
    while (directory.read(entry)) {
        if (entry.type != Dirent::Type_File) {
            backupLevel(entry.fullPath, callback);
            continue;
        }
        // Cut at this level's path, not at the walk's root: the backup is flat.
        const std::string name = behind(dir, entry.fullPath);
        callback(name, copyFile(dir, mBackupDir, name));
    }
}

ErrorInfo OrvBackup::backup(const std::string& name, const std::string& dir) {
    // One that cannot be looked at must be saved all the same, or its replacement could not be undone.
    if (File::isAbsent(dir + "/" + name)) return {};
    return copyNamed(dir, mBackupDir, name);
}

ErrorInfo OrvBackup::restore(const std::string& dir, const FileCallback& callback) {
    restoreLevel(mBackupDir, dir, callback);
    return {};
}

void OrvBackup::restoreLevel(const std::string& level, const std::string& dir, const FileCallback& callback) {
    Directory directory(level);
    Dirent entry;
    while (directory.read(entry)) {
        if (entry.type != Dirent::Type_File) {
            restoreLevel(entry.fullPath, dir, callback);
            continue;
        }
        const std::string name = behind(mBackupDir, entry.fullPath);
        callback(name, copyFile(mBackupDir, dir, name));
    }
}

ErrorInfo OrvBackup::restore(const std::string& name, const std::string& dir) {
    return copyNamed(mBackupDir, dir, name);
}

ErrorInfo OrvBackup::clear() {
    ORV_LOG(2, "OrvBackup", "removeDirectory() fileName:%s\r\n", mBackupDir);
    if (!File::removeDirectory(mBackupDir)) return ErrorInfo::getLastError();
    return {};
}

}  // namespace Tarnwick::OrvUpdate
