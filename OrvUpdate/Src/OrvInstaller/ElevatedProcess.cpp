#include "ElevatedProcess.h"

#include <cstdio>

#include "EngineLog.h"
#include "OrvInstaller.h"

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

bool startInstallerProgram(ProgramStart start, bool canRaiseRights) {
    start.elevated = canRaiseRights;
    if (!canRaiseRights) return System::startPlain(start);
    std::printf("appname:%s", start.program.c_str());
    if (System::startElevated(start)) return true;
    ORV_LOG(2, "OrvInstaller", "RunApp Error: %d", lastNativeError());
    return false;
}

bool OrvInstaller::createAdminisratorProcess(const std::string& program, const std::vector<Value>& arguments,
                                             bool show) {
    return startInstallerProgram({program, commandLine(arguments), show, true}, System::isVersionOrLater(6, 0, 0));
}

}  // namespace Tarnwick::OrvUpdate
