// An installed version, the package of the next one, and what the directory must look like before and after.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "TempDir.h"
#include "TreeSnapshot.h"
#include "Upgrade.h"

/// The old version has files of several permissions, files that the package knows nothing of, an empty directory, and
/// symbolic links of which some lie where the package puts a file; files where the
/// system makes no links. The package also adds files and directories.
class UpgradeSite {
public:
    /// @param files of the package's server part beside the special ones; sizes vary from empty to a few times `size`
    /// @param parent where to make all this; empty: the system's directory for such things
    UpgradeSite(size_t files, size_t size, const std::string& parent = {});

    /// A parent in memory where the system has one: what is killed loses nothing, and need not wait, for a disk.
    static std::string memory();

    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    /// Makes the old version anew, whatever was there, and an empty backup.
    void reset();

    enum class State { Old, New, Mixed };
    /// Which version the directory is, as a whole.
    State state() const;
    bool isOld() const { return state() == State::Old; }
    bool isNew() const { return state() == State::New; }
    /// What differs from the version that it is closer to.
    std::string differences() const;
    bool hasJournal() const;

    UpgradeOrder order;

private:
    void addToPackage(const std::string& name, const std::string& content);
    void writeOld(const std::string& name, const std::string& content, unsigned permissions);
    void makeNew();

    support::TempDir mDir;
    std::vector<std::pair<std::string, std::string>> mPackage;  // names below the role's directory, with "/"
    struct OldFile {
        std::string name, content;
        unsigned permissions;
    };
    std::vector<OldFile> mOldFiles;
    std::string mUsualPermissions;  // of a new file
    support::Tree mOld, mNew;
};
