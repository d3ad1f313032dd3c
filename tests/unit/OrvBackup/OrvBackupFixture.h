// A directory to be saved and a place for its backup.
#pragma once

#include "FileText.h"
#include "OrvBackup.h"
#include "TempDir.h"

namespace Tarnwick::OrvUpdate {

/// A directory to be saved, a place for the backup that is not there yet, and what a walk told.
class OrvBackupTest : public testing::Test {
protected:
    std::string app(const std::string& name = {}) const { return mRoot + "/app" + (name.empty() ? "" : "/" + name); }
    std::string saved(const std::string& name = {}) const {
        return mRoot + "/saved" + (name.empty() ? "" : "/" + name);
    }

    IBackup::FileCallback note() {
        return [this](const std::string& name, const ErrorInfo& result) { mResults[name] = result; };
    }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    OrvBackup mBackup{saved()};
    std::map<std::string, ErrorInfo> mResults;
};

}  // namespace Tarnwick::OrvUpdate
