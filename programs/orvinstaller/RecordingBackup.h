// A backup that remembers what an unpacking touches, so that all of it can be undone.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "OrvBackup.h"

/// Saves files by name in an OrvBackup and notes which ones were there before and which are new. An item that comes
/// twice is saved the first time only, since what lies there then is the package's own. Used by one thread; read after
/// that thread has ended.
class RecordingBackup : public Tarnwick::OrvUpdate::IBackup {
public:
    /// @param backupDir holds no saved files yet   @param installDir as it is before the unpacking
    RecordingBackup(const std::string& backupDir, const std::string& installDir);

    using ErrorInfo = Tarnwick::OrvUpdate::ErrorInfo;
    ErrorInfo backup(const std::string& dir, const FileCallback& callback) override;
    ErrorInfo backup(const std::string& name, const std::string& dir) override;
    ErrorInfo restore(const std::string& dir, const FileCallback& callback) override;
    ErrorInfo restore(const std::string& name, const std::string& dir) override;
    ErrorInfo clear() override;

    /// Puts back what was there and removes what was new, directories too. @return the first failure, code 0 when the
    /// directory is as before
    ErrorInfo undo();
    size_t saved() const { return mSaved.size(); }
    size_t added() const { return mAdded.size(); }

private:
    Tarnwick::OrvUpdate::OrvBackup mBackup;
    std::string mBackupDir;
    std::string mInstallDir;
    std::set<std::string> mDirectories;  // those that were there before
    std::vector<std::string> mSaved;
    std::set<std::string> mAdded;
};
