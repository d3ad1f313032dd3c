#include <cstdio>

#include "EngineLog.h"
#include "OrvInstaller.h"
#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

std::string commandLine(const std::vector<Value>& arguments) {
    std::string line;
    for (const Value& argument : arguments) {
        if (!line.empty()) line += ' ';
        line += '"' + argument.toString() + '"';
    }
    return line;
}

/// The operating system's own number of the last failure.
int lastNativeError() { return -ErrorInfo::getLastError().errorCode() - 10000; }

}  // namespace

bool OrvInstaller::createAdminisratorProcess(const std::string& program, const std::vector<Value>& arguments,
                                             bool show) {
    ProgramStart start{program, commandLine(arguments), show, true};
    if (!System::isVersionOrLater(6, 0, 0)) {  // older systems know no raised rights
        start.elevated = false;
        return System::startPlain(start);
    }
    std::printf("appname:%s", program.c_str());
    if (System::startElevated(start)) return true;
    ORV_LOG(2, "OrvInstaller", "RunApp Error: %d", lastNativeError());
    return false;
}

}  // namespace Tarnwick::OrvUpdate
