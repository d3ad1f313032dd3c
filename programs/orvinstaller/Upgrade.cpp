#include "Upgrade.h"

#include <memory>

#include "OrvInstaller.h"
#include "Public/Base/File.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/Process.h"
#include "Public/Base/Thread.h"
#include "RecordingBackup.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;

namespace {

constexpr unsigned kHostEndsWithinMs = 60000;
constexpr unsigned kLookEveryMs = 20;

/// The error of the unpacking. A reader that failed shows only in a progress that stopped short.
ErrorInfo unpack(const UpgradeOrder& order, const std::shared_ptr<RecordingBackup>& backup) {
    const auto installer = std::make_shared<OrvInstaller>(backup, order.package, static_cast<VersionType>(order.role));
    if (const ErrorInfo refused = installer->start(order.installDir, order.flag, {})) return refused;
    while (!installer->finish()) Public::Base::Thread::sleep(kLookEveryMs);
    installer->stop();
    if (const ErrorInfo error = installer->getError()) return error;
    float progress = 0;
    installer->getProgress(progress);
    return progress < 1.0F ? ErrorInfo(Public::Base::ErrorCode_PackageUnreadable, "") : ErrorInfo();
}

/// Saved files of an earlier upgrade must not be taken for those of this one.
ErrorInfo prepareBackup(const UpgradeOrder& order, RecordingBackup& backup) {
    return File::access(order.backupDir, Public::Base::AccessMode_Exists) ? backup.clear() : ErrorInfo();
}

std::string reasonOf(const ErrorInfo& error) {
    if (!error || !error.errorMessage().empty()) return error.errorMessage();
    switch (static_cast<int>(error.errorCode())) {
        case Public::Base::ErrorCode_OutputOpen:
            return "an output file cannot be opened";
        case Public::Base::ErrorCode_OutputWrite:
            return "an output file cannot be written";
        case Public::Base::ErrorCode_PackageUnreadable:
            return "the package cannot be read to its end";
        default:
            return "the package cannot be opened";
    }
}

}  // namespace

UpgradeOutcome upgrade(const UpgradeOrder& order) {
    UpgradeOutcome outcome;
    if (!Public::Base::Process::waitForExit(order.hostProcess, kHostEndsWithinMs)) {
        outcome.result = UpgradeOutcome::Result::Restored;  // nothing was touched
        outcome.error = ErrorInfo(Public::Base::ErrorCode_Failed, "the host did not end");
        return outcome;
    }
    const auto backup = std::make_shared<RecordingBackup>(order.backupDir, order.installDir);
    outcome.error = prepareBackup(order, *backup);
    if (!outcome.error) outcome.error = unpack(order, backup);
    outcome.filesReplaced = backup->saved();
    outcome.filesAdded = backup->added();
    if (!outcome.error) {
        outcome.result = UpgradeOutcome::Result::Installed;
        return outcome;
    }
    const ErrorInfo undone = backup->undo();
    outcome.result = undone ? UpgradeOutcome::Result::Damaged : UpgradeOutcome::Result::Restored;
    if (undone) outcome.error = undone;
    return outcome;
}

bool writeReport(const std::string& path, const UpgradeOutcome& outcome) {
    static constexpr const char* kResults[] = {"installed", "restored", "damaged"};
    Public::Base::JsonValue report;
    report["result"] = kResults[static_cast<size_t>(outcome.result)];
    report["error"] = static_cast<int>(outcome.error.errorCode());
    report["reason"] = reasonOf(outcome.error);
    report["replaced"] = static_cast<int>(outcome.filesReplaced);
    report["added"] = static_cast<int>(outcome.filesAdded);
    return File::save(path, report.toStyledString(Public::Base::WriteStyle_Indented));
}
