// Applications with many libraries, as tests/trees/trees.txt describes them.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace support {

struct DescribedModule {
    std::string place;  ///< below the application directory, with "/"
    bool is64 = true;
    bool isText = false;               ///< no module at all
    std::vector<std::string> imports;  ///< as its import table names them
};

struct DescribedTree {
    std::string name;
    std::string kind;
    std::vector<DescribedModule> modules;
    std::map<std::string, std::string> copied;  ///< name of a copy to the place of what it is a copy of
};

/// In the order of the file. Throws std::runtime_error for a line that it cannot read.
std::vector<DescribedTree> describedTrees();
/// Those of one kind.
std::vector<DescribedTree> describedTrees(const std::string& kind);
/// Throws std::runtime_error when there is none of the name.
DescribedTree describedTree(const std::string& name);

/// For the names of a test that runs for each.
void PrintTo(const DescribedTree& tree, std::ostream* out);

}  // namespace support
