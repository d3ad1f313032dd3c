// What the disk itself does not hold yet.
#pragma once

#include <filesystem>
#include <set>
#include <vector>

/// As bad as it may be: a file whose content or permissions changed since it was last brought to the disk, and every
/// name that changed since its directory was. Paths are whole and in one spelling each.
class Unsynced {
public:
    using Path = std::filesystem::path;

    void setAttic(const Path& path) { mAttic = path; }
    void spoil(const Path& path) { mSpoilt.insert(path); }
    void created(const Path& path) { mNames.push_back({path, {}, false}); }
    /// Keeps what lies under a name that is about to go.
    void removing(const Path& path);
    void renaming(const Path& from, const Path& to);
    void synced(const Path& path);

    /// Makes of the files what a disk without power would hold. @param names also of those that changed
    void lose(bool names) const;

private:
    struct Name {
        Path path;
        Path kept;  // where what lay under it can be had; empty when nothing did, or a directory
        bool wasDirectory = false;
    };
    Path mAttic;
    std::set<Path> mSpoilt;
    std::vector<Name> mNames;
};
