#include "ModuleTree.h"

#include <set>

#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"
#include "Public/Base/StringEx.h"
#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

constexpr int kDeepestLevel = 64;  // no installation is as deep; where links cannot be told, this ends a loop of them

class ModuleScan {
public:
    void scan(const std::string& directory, int level) {
        if (level > kDeepestLevel || !isNew(directory)) return;
        std::map<std::string, ModulePlace> files;
        std::set<std::string> subDirectories;
        list(directory, files, subDirectories);
        mModules.merge(files);  // what is known already stays
        for (const std::string& name : subDirectories) scan(directory + "\\" + name, level + 1);
    }

    std::map<std::string, ModulePlace> take() { return std::move(mModules); }

private:
    static void list(const std::string& directory, std::map<std::string, ModulePlace>& files,
                     std::set<std::string>& subDirectories) {
        FileListing listing(directory);
        ListedFile entry;
        if (!listing.next(entry)) return;  // the first entry is dropped unseen
        while (listing.next(entry)) {
            if (entry.attributes & ListedFile::Hidden) continue;
            if (entry.attributes & ListedFile::SubDirectory) {
                if (!entry.name.empty() && entry.name != "." && entry.name != "..") subDirectories.insert(entry.name);
                continue;
            }
            const std::string lowerName = StringEx::toLower(entry.name);
            ModulePlace& place = files[lowerName];
            // Of files that differ in case alone, the one in lower case is meant, as when a module is opened.
            if (place.fileName != lowerName) place = {directory, entry.name};
        }
    }

    /// Remembers where the directory really is.
    bool isNew(const std::string& directory) {
        const std::string real = FileEntry::resolved(directory);
        return real.empty() || mSeen.insert(real).second;
    }

    std::map<std::string, ModulePlace> mModules;
    std::set<std::string> mSeen;
};

}  // namespace

std::map<std::string, ModulePlace> scanModules(const std::string& directory) {
    ModuleScan scan;
    scan.scan(directory, 0);
    return scan.take();
}

}  // namespace Tarnwick::OrvUpdate
