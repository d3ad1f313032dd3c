#include "DescribedTrees.h"

#include <algorithm>
#include <fstream>
#include <ostream>
#include <stdexcept>

namespace support {

namespace {

using Texts = std::vector<std::string>;

Texts split(const std::string& text, const std::string& separator) {
    Texts parts;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(separator, at), text.size());
        if (end > at) parts.push_back(text.substr(at, end - at));
        at = end + separator.size();
    }
    return parts;
}

std::string lowerCase(std::string text) {
    for (char& letter : text) letter = 'A' <= letter && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    return text;
}

/// What its import table names: not what is linked or asked for later, and of a function only its module.
Texts importTable(const Texts& imports) {
    Texts names;
    for (const std::string& text : imports) {
        if (text.starts_with("delayed ") || text.starts_with("later ")) continue;
        names.push_back(text.substr(0, text.find('!')));
    }
    return names;
}

DescribedModule module(const std::string& head, const Texts& imports) {
    const Texts parts = split(head, " [");
    DescribedModule module{parts.at(0), true, false, importTable(imports)};
    for (const std::string& flag : parts) {
        if (flag == "32-bit]") module.is64 = false;
        if (flag == "text]") module.isText = true;
    }
    return module;
}

/// The file of that name in the application directory itself, whatever its case.
std::string placeAtTheTop(const DescribedTree& tree, const std::string& name) {
    for (const DescribedModule& one : tree.modules) {
        if (lowerCase(one.place) == lowerCase(name)) return one.place;
    }
    throw std::runtime_error(tree.name + ": no " + name + " in the application directory itself");
}

void describeCopy(DescribedTree& tree, const Texts& copies) {
    for (const std::string& text : copies) {
        const Texts parts = split(text, " < ");
        tree.copied[parts.at(0)] = parts.size() > 1 ? parts[1] : placeAtTheTop(tree, parts[0]);
    }
}

}  // namespace

std::vector<DescribedTree> describedTrees() {
    const std::string path = ORV_SOURCE_DIR "/tests/trees/trees.txt";
    std::ifstream file(path, std::ios::binary);
    std::vector<DescribedTree> trees;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#') continue;
        if (line.starts_with("tree ")) {
            const Texts words = split(line, " ");
            trees.push_back({words.at(1), words.size() > 2 ? words[2] : "exact", {}, {}});
            continue;
        }
        const size_t colon = line.find(':');
        if (colon == std::string::npos || trees.empty()) throw std::runtime_error(path + ": " + line);
        const std::string head = line.substr(0, colon);
        const Texts items = colon + 2 < line.size() ? split(line.substr(colon + 2), ", ") : Texts();
        if (head == "copied") {
            describeCopy(trees.back(), items);
        } else {
            trees.back().modules.push_back(module(head, items));
        }
    }
    if (trees.empty()) throw std::runtime_error("nothing in " + path);
    return trees;
}

std::vector<DescribedTree> describedTrees(const std::string& kind) {
    std::vector<DescribedTree> trees = describedTrees();
    std::erase_if(trees, [&](const DescribedTree& tree) { return tree.kind != kind; });
    return trees;
}

DescribedTree describedTree(const std::string& name) {
    const std::vector<DescribedTree> trees = describedTrees();
    for (const DescribedTree& tree : trees) {
        if (tree.name == name) return tree;
    }
    throw std::runtime_error("no tree " + name);
}

void PrintTo(const DescribedTree& tree, std::ostream* out) { *out << tree.name; }

}  // namespace support
