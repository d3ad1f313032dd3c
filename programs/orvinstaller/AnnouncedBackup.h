// The backup that an unpacking asks, where everything has been saved already.
#pragma once

#include <set>
#include <string>

#include "Journal.h"
#include "OrvBackup.h"

/// Lets the unpacking touch only what the journal announces, and counts it. Used by one thread; read after that thread
/// has ended.
class AnnouncedBackup : public Tarnwick::OrvUpdate::OrvBackup {
public:
    explicit AnnouncedBackup(const std::string& backupDir) : OrvBackup(backupDir) {}

    using ErrorInfo = Tarnwick::OrvUpdate::ErrorInfo;
    using OrvBackup::backup;
    /// @return -602 for a name that was not announced
    ErrorInfo backup(const std::string& name, const std::string& dir) override;

    void announce(const Journal& journal);
    size_t replaced() const { return mReplaced.size(); }
    size_t added() const { return mAdded.size(); }

private:
    std::set<std::string> mToReplace, mToAdd;
    std::set<std::string> mReplaced, mAdded;
};
