// A backup that is a plain copy of files in one directory.
#pragma once

#include <string>

#include "IBackup.h"

namespace Tarnwick::OrvUpdate {

/// The directory's content is the whole of the backup's state, so it survives a restart; two objects over one directory
/// are the same backup.
class ORV_UPDATE_API OrvBackup : public IBackup {
public:
    /// @param backupDir made by the first backup by name
    explicit OrvBackup(const std::string& backupDir);

    ErrorInfo backup(const std::string& dir, const FileCallback& callback) override;
    ErrorInfo backup(const std::string& name, const std::string& dir) override;
    ErrorInfo restore(const std::string& dir, const FileCallback& callback) override;
    ErrorInfo restore(const std::string& name, const std::string& dir) override;
    ErrorInfo clear() override;

private:
    void backupLevel(const std::string& dir, const FileCallback& callback);
    void restoreLevel(const std::string& level, const std::string& dir, const FileCallback& callback);

    std::string mBackupDir;
};

}  // namespace Tarnwick::OrvUpdate
