// Upgrades, broken off at a change of the file system: AT FAULT ATTIC PACKAGE INSTALL_DIR ROLE BACKUP_DIR
// Exit status: how many changes there were.
#include <string>

#include "KillPoints.h"
#include "Public/Base/Printer.h"
#include "Public/Base/Process.h"
#include "Upgrade.h"

int main(int argc, char** argv) {
    const auto words = Public::Base::Process::arguments(argc, argv);
    if (words.size() != 8) return -2;
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    UpgradeOrder order;
    order.package = words[4];
    order.installDir = words[5];
    order.role = std::stoi(words[6]);
    order.backupDir = words[7];
    killpoints::arm(std::stoi(words[1]), static_cast<killpoints::Fault>(std::stoi(words[2])), words[3].c_str());
    upgrade(order);
    return killpoints::counted();
}
