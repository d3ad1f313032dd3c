// An application of real modules, and what its program tells when it runs.
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "DescribedTrees.h"
#include "TempDir.h"

namespace support {

/// What came of a run.
struct TreeRun {
    static constexpr uint32_t kLibraryNotFound = 0xC0000135;  ///< the program was not begun
    static constexpr uint32_t kDelayedNotFound = 0xC06D007E;  ///< a delayed library was called and was not there

    uint32_t code = 0;              ///< of a sound run: how many modules answered
    std::set<std::string> reached;  ///< places of those that answered, and "no NAME" for what was missed
    std::set<std::string> loaded;   ///< paths of what the system loaded from outside of its own directory, with "/"
};

/// Runs the program as if its directory were all that it has: nothing else is searched but the system's directories
/// and, behind them, those given. Throws std::runtime_error when it cannot be run.
/// @param output where to put all that it prints
TreeRun runTree(const std::string& program, const std::vector<std::string>& searched = {}, std::string* output = {});

/// An application as it was built, in a directory of the test's own, beside an empty one for the copy.
class TreeFixture : public testing::Test {
protected:
    TreeFixture();
    /// Puts the application there, its hidden files hidden.
    void install(const DescribedTree& tree);
    void install(const std::string& name) { install(describedTree(name)); }

    static std::string built(const DescribedTree& tree, const std::string& place);
    /// Copies the program with what it needs.
    bool copy() const;
    std::set<std::string> copied() const;
    std::string source(const std::string& place) const { return mSource + "/" + place; }
    std::string target(const std::string& name) const { return mTarget + "/" + name; }
    /// The directories in which the engine looks, in its order, the application's own among them.
    std::vector<std::string> searched() const;

    TempDir mDir;
    std::string mSource = mDir.path() + "/app";
    std::string mTarget = mDir.path() + "/installer";
};

}  // namespace support
