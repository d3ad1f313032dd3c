// The launched installer: PACKAGE INSTALL_DIR ROLE HOST_PROCESS REPORT_FILE BACKUP_DIR FLAG
#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Order.h"
#include "Public/Base/File.h"
#include "Public/Base/Printer.h"
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

/// What has begun must end, installed or restored: a service manager that stops the host must not stop it half-way.
void ignoreRequestsToEnd() {
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
#ifdef SIGHUP
    std::signal(SIGHUP, SIG_IGN);
#endif
}

/// Nobody may be watching, so the report tells it too.
int refuse(const UpgradeOrder& order, const std::string& reason) {
    std::fprintf(stderr,
                 "orvinstaller: %s\n"
                 "usage: orvinstaller PACKAGE INSTALL_DIR ROLE HOST_PROCESS REPORT_FILE BACKUP_DIR FLAG\n"
                 "ROLE: 1 all, 2 client, 3 server, 4 video wall, 5 analytics\n",
                 reason.c_str());
    UpgradeOutcome outcome;
    outcome.result = UpgradeOutcome::Result::Restored;  // nothing was touched
    outcome.error = Public::Base::ErrorInfo(Public::Base::ErrorCode_Failed, reason);
    if (!order.reportFile.empty()) writeReport(order.reportFile, outcome);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv, argv + argc);
    if (!arguments.empty()) arguments.erase(arguments.begin());
    UpgradeOrder order;
    if (const std::string wrong = readOrder(arguments, order); !wrong.empty()) return refuse(order, wrong);
    logToFile();
    ignoreRequestsToEnd();
    const UpgradeOutcome outcome = upgrade(order);
    const bool reported = order.reportFile.empty() || writeReport(order.reportFile, outcome);
    return outcome.result == UpgradeOutcome::Result::Installed && reported ? 0 : 1;
}
