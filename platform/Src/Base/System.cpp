// What is the same of the seam to the operating system everywhere: the settings.
#include "Public/Base/System.h"

#include <mutex>

#include "Base/NativeSystem.h"

namespace Public::Base {

namespace {

std::mutex sMutex;  // guards the directory

// Neither is ever destroyed: a thread may still ask while the process ends.
std::string& directoryInForce() {
    static auto& directory = *new std::string;
    return directory;
}

Function<bool(const ProgramStart&)>& starter() {
    static auto& function = *new Function<bool(const ProgramStart&)>;
    return function;
}

}  // namespace

std::string System::getSystemDirectory() {
    {
        std::lock_guard lock(sMutex);
        if (!directoryInForce().empty()) return directoryInForce();
    }
    return nativeSystemDirectory();
}

void System::setSystemDirectory(const std::string& path) {
    std::lock_guard lock(sMutex);
    directoryInForce() = path;
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
