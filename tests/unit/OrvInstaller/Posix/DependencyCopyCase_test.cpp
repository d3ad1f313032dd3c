// Modules whose names differ in case alone.
#include "../DependencyCopyFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::readText;
using Names = std::set<std::string>;

TEST_F(DependencyCopy, PrefersTheLowerCaseFileOfTwoSpellings) {
    module("app.exe", {"Core.dll"});
    module("CORE.dll");
    module("core.dll");
    module("coRe.dll");
    EXPECT_TRUE(copy());
    EXPECT_EQ(readText(target("Core.dll")), image("core.dll"));
}
