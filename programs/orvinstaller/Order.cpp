#include "Order.h"

#include <charconv>

#include "Paths.h"
#include "Public/Base/File.h"

namespace {

bool readNumber(const std::string& text, unsigned int most, unsigned int& number) {
    const char* const behind = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), behind, number);
    return error == std::errc() && end == behind && number <= most;
}

}  // namespace

std::string readOrder(const std::vector<std::string>& arguments, UpgradeOrder& order) {
    constexpr unsigned kLastRole = 5;
    constexpr unsigned kLastProcess = 0x7FFFFFFF;
    if (arguments.size() != 7) return "there must be seven arguments";
    order.package = arguments[0];
    order.installDir = arguments[1];
    order.reportFile = arguments[4];
    order.backupDir = arguments[5].empty() ? Public::Base::File::getExcutableFileFullPath() + "/backup" : arguments[5];
    order.flag = arguments[6] == "1";

    unsigned role = 0;
    if (order.package.empty()) return "PACKAGE is empty";
    if (order.installDir.empty()) return "INSTALL_DIR is empty";
    if (!readNumber(arguments[2], kLastRole, role) || role == 0) return "ROLE is none of 1 to 5";
    if (!readNumber(arguments[3], kLastProcess, order.hostProcess)) return "HOST_PROCESS is no process id";
    if (!order.flag && arguments[6] != "0") return "FLAG is neither 0 nor 1";
    order.role = static_cast<int>(role);

    // It is emptied first.
    const std::filesystem::path backup = resolved(order.backupDir);
    if (backup.empty()) return "BACKUP_DIR cannot be looked at";
    for (const std::string& kept : {order.installDir, order.package, Public::Base::File::getExcutableFileFullPath()}) {
        const std::filesystem::path whole = resolved(kept);
        if (whole.empty()) return kept + " cannot be looked at";
        if (holds(backup, whole)) return "BACKUP_DIR holds " + kept;
    }
    return {};
}
