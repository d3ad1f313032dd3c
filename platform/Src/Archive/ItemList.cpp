#include "ItemList.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "Limits.h"
#include "Strings.h"

namespace Archive {
namespace {

enum Opcode : uint32_t { CreateDirectory = 11, ExtractFile = 20, AssignVariable = 25, WriteUninstaller = 62 };

struct NamedItem {
    uint32_t offset;
    PackageItem::Kind kind;
    std::string name;
};

/// Follows the script from entry to entry with the current directory in mind. Which section an entry belongs to does
/// not matter: a package is looked at as if all of it were wanted.
class ScriptWalk {
public:
    explicit ScriptWalk(const HeaderBlock& header) : mStrings(header) {}

    bool take(const unsigned char* entry) {
        for (size_t i = 0; i < 6; ++i) mField[i] = static_cast<int32_t>(le32(entry + 4 + i * 4));
        switch (le32(entry)) {
            case CreateDirectory:
                return mField[1] == 0 || setFolder(mFolders.current, mField[0]);
            case AssignVariable:
                return assign();
            case ExtractFile:
                return addFile();
            case WriteUninstaller:
                return addUninstaller();
            default:
                return true;
        }
    }

    std::vector<NamedItem>& items() { return mItems; }

private:
    bool setFolder(PathText& folder, int32_t string) {
        PathText value;
        if (!mStrings.expand(string, mFolders, value)) return false;
        folder = std::move(value);
        return true;
    }

    bool assign() {
        if (mField[0] == Strings::kCurrentFolder) return setFolder(mFolders.current, mField[1]);
        if (mField[0] == Strings::kSavedFolder) return setFolder(mFolders.saved, mField[1]);
        return true;
    }

    bool addFile() {
        PathText path;
        if (!mStrings.expand(mField[1], mFolders, path)) return false;
        if (path.root == PathText::Relative) path = inCurrentFolder(path.text);
        return add(mField[2], PackageItem::File, path);
    }

    bool addUninstaller() {
        PathText path;
        if (!mStrings.expand(mField[0], mFolders, path)) return false;
        if (path.root == PathText::Relative && !mStrings.expand(mField[3], mFolders, path)) return false;
        return add(mField[1], mField[2] == 0 ? PackageItem::WholeUninstaller : PackageItem::Uninstaller, path);
    }

    PathText inCurrentFolder(const std::string& name) const {
        PathText path = mFolders.current;
        const bool separated = !path.text.empty() && path.text.back() == '\\';
        if (!separated && !name.starts_with('\\') && !(path.text.empty() && path.root == PathText::Relative)) {
            path.text += '\\';
        }
        path.text += name;
        return path;
    }

    bool add(int32_t offset, PackageItem::Kind kind, const PathText& path) {
        if (offset < 0) return false;
        std::string name = path.spelled();
        if (path.root == PathText::InstallDir && path.text.starts_with('\\')) {
            name = path.text.substr(std::min(path.text.find_first_not_of('\\'), path.text.size()));
        }
        mNameBytes += name.size();
        if (mItems.size() == kNameLimit || mNameBytes > kNameBytesLimit) return false;
        mItems.push_back({static_cast<uint32_t>(offset), kind, std::move(name)});
        return true;
    }

    Strings mStrings;
    ScriptFolders mFolders;
    int32_t mField[6] = {};
    std::vector<NamedItem> mItems;
    size_t mNameBytes = 0;
};

}  // namespace

bool listItems(const HeaderBlock& header, std::vector<PackageItem>& items) {
    ScriptWalk walk(header);
    const ByteView entries = header.entries();
    for (size_t at = 0; at + HeaderBlock::kEntrySize <= entries.size(); at += HeaderBlock::kEntrySize) {
        if (!walk.take(&entries[at])) return false;
    }
    std::vector<NamedItem>& named = walk.items();
    auto place = [](const NamedItem& item) { return std::tuple(item.offset, item.kind); };
    std::stable_sort(named.begin(), named.end(),
                     [&](const NamedItem& a, const NamedItem& b) { return place(a) < place(b); });
    items.clear();
    std::set<std::string> known;  // names of the last item: a plug-in is extracted under the same name again and again
    for (NamedItem& item : named) {
        if (items.empty() || items.back().offset != item.offset || items.back().kind != item.kind) {
            items.push_back({item.offset, item.kind, {}});
            known.clear();
        }
        if (known.insert(item.name).second) items.back().names.push_back(std::move(item.name));
    }
    return true;
}

}  // namespace Archive
