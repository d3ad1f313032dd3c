// The launched installer: PACKAGE INSTALL_DIR ROLE HOST_PROCESS REPORT_FILE BACKUP_DIR FLAG
#include <csignal>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Order.h"
#include "Public/Base/File.h"
#include "Public/Base/Printer.h"
#include "Public/Base/Process.h"
#include "Upgrade.h"

namespace {

/// The log lies beside the program, since nobody watches its output.
void logToFile() {
    struct Log {
        std::mutex mutex;
        Public::Base::File file{Public::Base::File::getExcutableFileFullPath() + "/orvinstaller.log"};
    };
    const auto log = std::make_shared<Log>();
    log->file.open(Public::Base::OpenMode_CreateKeep);
    Public::Base::setLogSink([log](const Public::Base::LogEntry& entry) {
        const std::string text = entry.text.substr(0, entry.text.find_last_not_of("\r\n") + 1);
        std::lock_guard lock(log->mutex);
        log->file.seek(0, Public::Base::SeekPosition_End);
        log->file.puts(std::to_string(static_cast<int>(entry.level)) + " " + text + "\n");
    });
}

/// What has begun must end, installed or restored: a service manager that stops the host must not stop it half-way.
void ignoreRequestsToEnd() {
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
#ifdef SIGHUP
    std::signal(SIGHUP, SIG_IGN);
#endif
#ifdef SIGBREAK
    std::signal(SIGBREAK, SIG_IGN);
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
    std::vector<std::string> arguments = Public::Base::Process::arguments(argc, argv);
    if (!arguments.empty()) arguments.erase(arguments.begin());
    UpgradeOrder order;
    if (const std::string wrong = readOrder(arguments, order); !wrong.empty()) return refuse(order, wrong);
    logToFile();
    ignoreRequestsToEnd();
    const UpgradeOutcome outcome = upgrade(order);
    const bool reported = order.reportFile.empty() || writeReport(order.reportFile, outcome);
    return outcome.result == UpgradeOutcome::Result::Installed && reported ? 0 : 1;
}
