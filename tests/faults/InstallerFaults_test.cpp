// Unpacking with a backup of each file, and what the backup puts back.
#include "InstallerFaults.h"

using namespace faults;

TEST_P(Unpacking, EndsWithTheNewFilesOrWithAnErrorThatTheBackupUndoes) {
    exhaust([] { return std::make_unique<Unpack>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, Unpacking, testing::ValuesIn(kWriting), titleOf);
