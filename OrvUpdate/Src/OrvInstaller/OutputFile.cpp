#include "OutputFile.h"

#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"
#include "RelativeName.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Base::FileEntry;

bool liesInside(const std::string& directory, const std::string& name) {
    if (directory.empty() || !isPlainRelativeName(name)) return false;
    std::string root = FileEntry::resolved(directory);
    if (root.empty()) return false;
    const size_t end = name.find_last_of("/\\");
    const std::string parent = end == std::string::npos ? root : FileEntry::resolved(root + "/" + name.substr(0, end));
    if (parent == root) return true;
    if (!root.ends_with('/')) root += '/';
    return parent.starts_with(root);
}

bool removeLink(const std::string& path) {
    const FileEntry::Kind kind = FileEntry::at(path).kind;
    return kind == FileEntry::Kind::Link ? File::remove(path) : kind != FileEntry::Kind::Unknown;
}

}  // namespace Tarnwick::OrvUpdate
