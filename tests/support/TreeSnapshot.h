// A directory as a whole, to be compared with another time.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "FileText.h"
#include "FileTimes.h"

namespace support {

/// One thing in a directory.
struct TreeEntry {
    std::string text;  ///< kind and permissions, and a link's target or a file's content
    int64_t time = 0;  ///< of a file
    bool operator==(const TreeEntry&) const = default;
};

/// What lies under each relative name. Empty for a directory that is not there.
using Tree = std::map<std::string, TreeEntry>;

inline std::string permissionsText(const std::filesystem::file_status& status) {
    std::ostringstream text;
    text << std::oct << (static_cast<unsigned>(status.permissions()) & 07777U);
    return text.str();
}

inline TreeEntry fileEntry(const std::string& permissions, int64_t time, const std::string& content) {
    return {"file " + permissions + " " + content, time};
}

/// Names of the first level begin with "./".
inline Tree snapshot(const std::string& directory) {
    namespace fs = std::filesystem;
    Tree tree;
    if (!fs::exists(directory)) return tree;
    tree["."].text = "directory " + permissionsText(fs::status(directory));
    for (const auto& found : fs::recursive_directory_iterator(directory)) {
        const std::string path = found.path().generic_string();
        const std::string name = path.substr(directory.size() + 1);
        TreeEntry& entry = tree[name.find('/') == std::string::npos ? "./" + name : name];
        const auto status = found.symlink_status();
        if (fs::is_symlink(status)) {
            entry.text = "link " + fs::read_symlink(found.path()).string();
        } else if (fs::is_directory(status)) {
            entry.text = "directory " + permissionsText(status);
        } else {
            entry = fileEntry(permissionsText(status), modifiedTime(path), readText(path).value_or("unreadable"));
        }
    }
    return tree;
}

inline Tree withoutTimes(Tree tree) {
    for (auto& [name, entry] : tree) entry.time = 0;
    return tree;
}

/// Which names differ, with the beginnings of what is there; for the message of a failed test.
inline std::string difference(const Tree& expected, const Tree& found) {
    std::set<std::string> names;
    for (const auto* tree : {&expected, &found}) {
        for (const auto& [name, entry] : *tree) names.insert(name);
    }
    const auto brief = [](const Tree& tree, const std::string& name) {
        const auto at = tree.find(name);
        if (at == tree.end()) return std::string("nothing");
        return "\"" + at->second.text.substr(0, 60) + "\" of " + std::to_string(at->second.time);
    };
    std::string out;
    for (const auto& name : names) {
        const auto one = expected.find(name), other = found.find(name);
        if (one != expected.end() && other != found.end() && one->second == other->second) continue;
        out += name + ": expected " + brief(expected, name) + ", found " + brief(found, name) + "\n";
    }
    return out;
}

}  // namespace support
