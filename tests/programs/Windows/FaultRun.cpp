#include "FaultRun.h"

#include "Program.h"

FaultRun upgradeToFault(const UpgradeOrder& order, int at, killpoints::Fault fault, const std::string& attic) {
    support::RunningProgram program(
        {{ORV_BROKEN_OFF, std::to_string(at), std::to_string(static_cast<int>(fault)), attic, order.package,
          order.installDir, std::to_string(order.role), order.backupDir}});
    const int status = program.wait();  // the number of changes, unless it was broken off
    EXPECT_GE(status, -1) << "at " << at;
    return {status >= 0, status};
}
