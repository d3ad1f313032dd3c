// The machine that a run takes place on.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ManualClock.h"
#include "ProgramRecorder.h"
#include "RunLog.h"
#include "TempDir.h"
#include "UpdateCloud.h"

namespace cluster {

/// A directory that holds all that the run may touch, a clock that only the run advances, an installer program that is
/// never really started, an update cloud on loopback, and the engine's log, which goes to the run's. One at a time in a
/// process.
class Machine {
public:
    Machine();
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// Offers these packages on the cloud.
    void offer(const std::vector<std::string>& versions);
    /// From now on every request to the cloud fails.
    void breakCloud();

    std::string storeOf(const std::string& node) const { return mRoot.path() + "/stores/" + node; }
    std::string stores() const { return mRoot.path() + "/stores"; }
    std::string root() const { return mRoot.path(); }
    std::string programDir() const { return mCloud.programDir(); }
    /// A package that a user has chosen. @return its path
    std::string chosenPackage(const std::string& version) const;
    /// Packages of that node's store that an installer was started with.
    std::vector<std::string> launches(const std::string& node) const;
    /// Version in the path of a package.
    static std::string versionIn(const std::string& packagePath);

    support::ManualClock& clock() { return mClock; }
    const std::shared_ptr<RunLog>& log() const { return mLog; }
    /// Waits until no request to the cloud is under way and no thread that nobody joins is awake.
    static void settle();

private:
    support::TempDir mRoot;
    support::ManualClock mClock;
    const std::shared_ptr<RunLog> mLog;
    support::UpdateCloud mCloud;
    support::ProgramRecorder mPrograms;
};

}  // namespace cluster
