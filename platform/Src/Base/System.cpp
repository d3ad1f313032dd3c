// What is the same of the seam to the operating system everywhere: the settings.
#include "Public/Base/System.h"

#include <mutex>

#include "Base/NativeSystem.h"

namespace Public::Base {

namespace {

std::mutex sMutex;  // guards sDirectory
std::string sDirectory;

Function<bool(const ProgramStart&)>& starter() {
    static Function<bool(const ProgramStart&)> function;
    return function;
}

}  // namespace

std::string System::getSystemDirectory() {
    {
        std::lock_guard lock(sMutex);
        if (!sDirectory.empty()) return sDirectory;
    }
    return nativeSystemDirectory();
}

void System::setSystemDirectory(const std::string& path) {
    std::lock_guard lock(sMutex);
    sDirectory = path;
}

bool System::startElevated(const ProgramStart& start) {
    const auto replaced = starter();
    return replaced ? replaced(start) : nativeStartElevated(start);
}

bool System::startPlain(const ProgramStart& start) {
    const auto replaced = starter();
    return replaced ? replaced(start) : nativeStartPlain(start);
}

void System::setProgramStarter(const Function<bool(const ProgramStart&)>& function) { starter() = function; }

}  // namespace Public::Base
