// The launched installer: PACKAGE INSTALL_DIR ROLE HOST_PROCESS REPORT_FILE BACKUP_DIR FLAG
#include <cstdio>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "Public/Base/File.h"
#include "Public/Base/Printer.h"
#include "Public/Base/Value.h"
#include "Upgrade.h"

namespace {

/// The log lies beside the program, since nobody watches its output.
void logToFile() {
    struct Log {
        std::mutex mutex;
        std::ofstream file{Public::Base::File::getExcutableFileFullPath() + "/orvinstaller.log", std::ios::app};
    };
    Public::Base::setLogSink([log = std::make_shared<Log>()](const Public::Base::LogEntry& entry) {
        std::lock_guard lock(log->mutex);
        log->file << static_cast<int>(entry.level) << ' '
                  << entry.text.substr(0, entry.text.find_last_not_of("\r\n") + 1) << std::endl;
    });
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 7) {
        std::fprintf(stderr,
                     "usage: orvinstaller PACKAGE INSTALL_DIR ROLE HOST_PROCESS REPORT_FILE BACKUP_DIR FLAG\n"
                     "ROLE: 1 all, 2 client, 3 server, 4 video wall, 5 analytics\n");
        return 2;
    }
    logToFile();
    using Public::Base::Value;
    UpgradeOrder order;
    order.package = arguments[0];
    order.installDir = arguments[1];
    order.role = Value(arguments[2]).toInt();
    order.hostProcess = static_cast<unsigned int>(Value(arguments[3]).toUint64());
    order.reportFile = arguments[4];
    order.backupDir = arguments[5];
    order.flag = arguments[6] == "1";

    const UpgradeOutcome outcome = upgrade(order);
    const bool reported = order.reportFile.empty() || writeReport(order.reportFile, outcome);
    return outcome.result == UpgradeOutcome::Result::Installed && reported ? 0 : 1;
}
