#include "RecordingBackup.h"

#include <filesystem>

#include "Public/Base/Directory.h"
#include "Public/Base/File.h"

using namespace Public::Base;

namespace {

/// All directories below one, each before those in it.
std::vector<std::string> directoriesBelow(const std::string& path) {
    std::vector<std::string> found;
    Directory directory(path);
    for (Dirent entry; directory.read(entry);) {
        if (entry.type != Dirent::Type_Directory) continue;
        found.push_back(entry.fullPath);
        for (const auto& below : directoriesBelow(entry.fullPath)) found.push_back(below);
    }
    return found;
}

/// One spelling for each name.
std::string plain(std::string name) {
    for (char& c : name) {
        if (c == '\\') c = '/';
    }
    return std::filesystem::path(std::u8string(name.begin(), name.end())).lexically_normal().generic_string();
}

}  // namespace

RecordingBackup::RecordingBackup(const std::string& backupDir, const std::string& installDir)
    : mBackup(backupDir), mBackupDir(backupDir), mInstallDir(installDir) {
    if (File::access(installDir, AccessMode_Exists)) mDirectories.insert(installDir);
    for (const auto& directory : directoriesBelow(installDir)) mDirectories.insert(directory);
}

RecordingBackup::ErrorInfo RecordingBackup::backup(const std::string& dir, const FileCallback& callback) {
    return mBackup.backup(dir, callback);
}

RecordingBackup::ErrorInfo RecordingBackup::backup(const std::string& name, const std::string& dir) {
    const std::string item = plain(name);
    if (mAdded.contains(item) || File::access(mBackupDir + "/" + item, AccessMode_Exists)) return {};
    const bool there = File::access(dir + "/" + item, AccessMode_Exists);
    const ErrorInfo result = mBackup.backup(item, dir);
    if (result) return result;
    if (there) {
        mSaved.push_back(item);
    } else {
        mAdded.insert(item);
    }
    return {};
}

RecordingBackup::ErrorInfo RecordingBackup::restore(const std::string& dir, const FileCallback& callback) {
    return mBackup.restore(dir, callback);
}

RecordingBackup::ErrorInfo RecordingBackup::restore(const std::string& name, const std::string& dir) {
    return mBackup.restore(name, dir);
}

RecordingBackup::ErrorInfo RecordingBackup::clear() { return mBackup.clear(); }

RecordingBackup::ErrorInfo RecordingBackup::undo() {
    ErrorInfo first;
    const auto note = [&first](const ErrorInfo& result) {
        if (result && !first) first = result;
    };
    for (const auto& name : mSaved) note(mBackup.restore(name, mInstallDir));
    for (const auto& name : mAdded) {
        const std::string path = mInstallDir + "/" + name;
        if (File::access(path, AccessMode_Exists) && !File::remove(path)) note(ErrorInfo::getLastError());
    }
    auto directories = directoriesBelow(mInstallDir);
    directories.insert(directories.begin(), mInstallDir);
    for (const auto& directory : directories) {
        if (mDirectories.contains(directory) || !File::access(directory, AccessMode_Exists)) continue;
        if (!File::removeDirectory(directory)) note(ErrorInfo::getLastError());
    }
    return first;
}
