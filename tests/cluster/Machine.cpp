#include "Machine.h"

#include "Network/Exchange.h"
#include "Packages.h"
#include "PeBuilder.h"
#include "Public/Base/DetachedThread.h"
#include "Public/Base/Printer.h"
#include "Public/Base/System.h"
#include "Received.h"

namespace cluster {

using Public::Base::LogEntry;

namespace {

bool cloudIsAsked() { return Public::Network::Exchange::live() > 0; }

}  // namespace

Machine::Machine()
    : mLog(std::make_shared<RunLog>([clock = Public::Base::Clock::current(),
                                     beginning = mClock.now()] { return clock->milliseconds() - beginning; },
                                    mRoot.path())) {
    Public::Base::setLogSink([log = mLog](const LogEntry& entry) {
        if (entry.level <= Public::Base::LOG_Level_Error) log->add("    engine: " + entry.text);
    });
    std::filesystem::create_directories(mRoot.path() + "/drive");
    std::filesystem::create_directories(stores());
    Public::Base::System::setSystemDirectory(mRoot.path() + "/drive/Windows/system32");
    support::writeText(mCloud.programDir() + "/orvInstaller.exe", support::buildPe({true, {}, {}, "installer"}).bytes);
    for (const auto& package : packages()) {
        support::writeText(chosenPackage(package.version), package.bytes);
        mCloud.serve("/packages/" + package.version, package.bytes);
    }
}

Machine::~Machine() {
    Public::Base::System::setSystemDirectory({});
    Public::Base::setLogSink({});
}

void Machine::offer(const std::vector<std::string>& versions) {
    std::string list, notes;
    for (const auto& version : versions) {
        const std::string comma = list.empty() ? "" : ",";
        list += comma + support::cloudRecord(version, mCloud.url("/packages/" + version));
        notes += comma + support::noteRecord(version);
    }
    mCloud.versions("[" + list + "]");
    mCloud.notes(support::noteList(notes));
}

void Machine::breakCloud() {
    mCloud.versions("", 500);
    mCloud.notes("", 500);
    for (const auto& package : packages()) mCloud.serve("/packages/" + package.version, "", 500);
}

std::string Machine::chosenPackage(const std::string& version) const {
    return mRoot.path() + "/chosen/" + version + ".exe";
}

std::vector<std::string> Machine::launches(const std::string& node) const {
    std::vector<std::string> found;
    const std::string store = storeOf(node) + "/";
    for (const auto& start : mPrograms.starts()) {
        // The package is the first of the quoted arguments.
        const auto package = start.parameters.substr(1, start.parameters.find('"', 1) - 1);
        if (package.starts_with(store)) found.push_back(package);
    }
    return found;
}

std::string Machine::versionIn(const std::string& packagePath) {
    return std::filesystem::path(packagePath).stem().string();
}

void Machine::settle() {
    do {
        Public::Base::settleDetached();
        support::eventually([] { return !cloudIsAsked(); });
        Public::Base::settleDetached();
    } while (cloudIsAsked());
}

}  // namespace cluster
