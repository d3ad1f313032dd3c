// What a run of the unpacking writes, told beforehand.
#include "FileText.h"
#include "LogRecorder.h"
#include "OrvInstaller.h"
#include "PackageMaker.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using Names = std::vector<std::string>;

namespace {

struct OutputCase {
    const char* name;
    support::PackageSpec::Layout layout;
    VersionType role;
    Names names;
};
void PrintTo(const OutputCase& one, std::ostream* out) { *out << one.name; }

class OutputNames : public testing::TestWithParam<OutputCase> {};

TEST_P(OutputNames, AreThoseThatARunWrites) {
    const support::TempDir dir;
    const support::LogRecorder log;
    support::PackageSpec spec;
    spec.layout = GetParam().layout;
    if (spec.layout == support::PackageSpec::Tree) {
        spec.files = {{"Orv Client\\app.exe", "c"}, {"Orv Server\\lib\\a.dll", "a"}, {"Orv Server\\b.dll", "b"}};
    } else {
        spec.files = {{"Client.msi", "c"}, {"Server.msi", "s"}};
    }
    const auto installer = std::make_shared<OrvInstaller>(
        nullptr, support::makePackage(spec, dir.path() + "/package.exe"), GetParam().role);
    EXPECT_EQ(installer->getOutputNames(), GetParam().names);

    ASSERT_FALSE(installer->start(dir.path() + "/out", false, {}));
    while (!installer->finish()) std::this_thread::yield();
    std::set<std::string> expected;
    for (std::string name : GetParam().names) {
        std::replace(name.begin(), name.end(), '\\', '/');
        expected.insert(name);
    }
    EXPECT_EQ(support::filesBelow(dir.path() + "/out"), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Roles, OutputNames,
    testing::Values(
        OutputCase{"ServerOfATree", support::PackageSpec::Tree, VersionType_Server, {"lib\\a.dll", "b.dll"}},
        OutputCase{"ClientOfATree", support::PackageSpec::Tree, VersionType_Client, {"app.exe"}},
        OutputCase{"RoleThatATreeLacks", support::PackageSpec::Tree, VersionType_VideoWall, {}},
        OutputCase{"AllOfATree",
                   support::PackageSpec::Tree,
                   VersionType_All,
                   {"Orv Client\\app.exe", "Orv Server\\lib\\a.dll", "Orv Server\\b.dll"}},
        OutputCase{"ServerOfMsi", support::PackageSpec::Msi, VersionType_Server, {"Server.msi"}}),
    [](const auto& one) { return one.param.name; });

TEST(OutputNames, OfWhatIsNoPackageAreNone) {
    const support::TempDir dir;
    EXPECT_TRUE(
        std::make_shared<OrvInstaller>(nullptr, dir.path() + "/none.exe", VersionType_All)->getOutputNames().empty());
}

}  // namespace
