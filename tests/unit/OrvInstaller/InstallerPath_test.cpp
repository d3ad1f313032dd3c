#include "OrvInstaller/InstallerPath.h"

using namespace Tarnwick::OrvUpdate;

namespace {

struct PathCase {
    const char* title;
    std::string systemDirectory;
    int role;
    std::string path;
};
void PrintTo(const PathCase& one, std::ostream* out) { *out << one.title; }

class InstallerPath : public testing::TestWithParam<PathCase> {};

}  // namespace

TEST_P(InstallerPath, LiesBelowTheProgramDataOfTheSystemsDrive) {
    EXPECT_EQ(installerPath(GetParam().systemDirectory, "Acme", static_cast<VersionType>(GetParam().role)),
              GetParam().path);
}

INSTANTIATE_TEST_SUITE_P(
    Directories, InstallerPath,
    testing::Values(
        PathCase{"UsualMachine", "C:\\Windows\\system32", 2, "C:\\ProgramData\\Acme\\Client\\installer"},
        PathCase{"AnyCase", "D:\\WINDOWS\\System32", 3, "D:\\ProgramData\\Acme\\Server\\installer"},
        PathCase{"ForwardSeparators", "/mnt/c/windows/system32", 4, "/mnt/c\\ProgramData\\Acme\\VideoWall\\installer"},
        PathCase{"BackslashesBeforeForwardSeparators", "/Windows/system32/x\\Windows\\system32", 5,
                 "/Windows/system32/x\\ProgramData\\Acme\\Analytics\\installer"},
        PathCase{"MixedSeparatorsHaveNoDrive", "C:\\Windows/system32", 1, "\\ProgramData\\Acme\\Server\\installer"},
        PathCase{"AnotherFormHasNoDrive", "C:\\WINNT\\system32", 0, "\\ProgramData\\Acme\\Server\\installer"},
        PathCase{"EmptyHasNoDrive", "", 2, "\\ProgramData\\Acme\\Client\\installer"}),
    [](const auto& one) { return one.param.title; });
