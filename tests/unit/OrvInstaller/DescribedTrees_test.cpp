// The trees of tests/trees, built of small modules here; the Windows build makes them of real ones besides.
#include "DescribedTrees.h"

#include "DependencyCopyFixture.h"
#include "FileKinds.h"

using namespace Tarnwick::OrvUpdate;
using support::DescribedModule;
using support::DescribedTree;

namespace {

class DescribedTreeTest : public DependencyCopy, public testing::WithParamInterface<DescribedTree> {
protected:
    DescribedTreeTest() {
        for (const DescribedModule& one : GetParam().modules) {
            support::writeText(source(one.place), content(one));
            if (one.place.front() == '.') support::hide(source(one.place.substr(0, one.place.find('/'))));
        }
    }
    static std::string content(const DescribedModule& module) {
        if (module.isText) return "the text " + module.place;
        return support::buildPe({module.is64, module.imports, {}, module.place}).bytes;
    }
};

std::vector<DescribedTree> treesOfUtf8Names() {
    std::vector<DescribedTree> trees = support::describedTrees();
    std::erase_if(trees, [](const DescribedTree& tree) { return tree.kind == "western"; });
    return trees;
}

std::string nameOf(const testing::TestParamInfo<DescribedTree>& info) { return info.param.name; }

}  // namespace

TEST_P(DescribedTreeTest, IsCopiedAsDescribed) {
    EXPECT_TRUE(copy());
    std::set<std::string> expected;
    for (const auto& [name, place] : GetParam().copied) {
        expected.insert(name);
        EXPECT_EQ(support::readText(target(name)), support::readText(source(place))) << name;
    }
    EXPECT_EQ(copied(), expected);
}

INSTANTIATE_TEST_SUITE_P(Trees, DescribedTreeTest, testing::ValuesIn(treesOfUtf8Names()), nameOf);
