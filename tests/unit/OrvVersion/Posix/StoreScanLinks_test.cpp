// What a scan of the store makes of what is neither a file nor a directory.
#include <sys/stat.h>

#include "../StoreScanFixture.h"

using namespace Tarnwick::OrvUpdate;

INSTANTIATE_TEST_SUITE_P(Kinds, StoreScanDamage,
                         testing::Values(Damage{"Pipe",
                                                [](const std::string& path) {
                                                    std::filesystem::remove(path);
                                                    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
                                                }},
                                         Damage{"DanglingLink",
                                                [](const std::string& path) {
                                                    std::filesystem::remove(path);
                                                    std::filesystem::create_symlink("nowhere", path);
                                                }}),
                         [](const auto& test) { return test.param.name; });
