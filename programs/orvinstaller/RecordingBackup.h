// A backup that remembers what an unpacking touches, so that all of it can be undone.
#pragma once

#include <string>
#include <vector>

#include "OrvBackup.h"

/// Saves files by name in an OrvBackup and notes which ones were there before and which are new. Used by one thread; read
/// after that thread has ended.
class RecordingBackup : public Tarnwick::OrvUpdate::IBackup {
public:
    explicit RecordingBackup(const std::string& backupDir) : mBackup(backupDir) {}

    using ErrorInfo = Tarnwick::OrvUpdate::ErrorInfo;
    ErrorInfo backup(const std::string& dir, const FileCallback& callback) override;
    ErrorInfo backup(const std::string& name, const std::string& dir) override;
    ErrorInfo restore(const std::string& dir, const FileCallback& callback) override;
    ErrorInfo restore(const std::string& name, const std::string& dir) override;
    ErrorInfo clear() override;

    /// Puts back what was there and removes what was new. @return the first failure, code 0 when the directory is as before
    ErrorInfo undo(const std::string& dir);
    size_t saved() const { return mSaved.size(); }
    size_t added() const { return mAdded.size(); }

private:
    Tarnwick::OrvUpdate::OrvBackup mBackup;
    std::vector<std::string> mSaved;
    std::vector<std::string> mAdded;
};
