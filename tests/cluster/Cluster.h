// The nodes of a run, the bus between them, and the run's time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Book.h"
#include "ClusterNode.h"
#include "MQ/EmbeddedBus.h"
#include "Machine.h"
#include "RunDice.h"

namespace cluster {

/// How the cluster's work is done.
enum class Pace {
    Steps,    ///< one thing after another, on the run's thread: a seed gives the same run each time
    Threads,  ///< on the bus's threads: what happens at the same moment may come in any order
};

/// All operations on the run's thread, when nothing runs.
class Cluster {
public:
    Cluster(Machine& machine, Book& book, Pace pace);
    /// Ends the nodes and looks for what they leave behind.
    ~Cluster();

    ClusterNode& add(const NodePlan& plan);
    std::vector<std::unique_ptr<ClusterNode>>& nodes() { return mNodes; }
    std::vector<ClusterNode*> alive() const;
    ClusterNode* find(const std::string& id) const;
    std::vector<std::string> ids(bool servers) const;

    Machine& machine() { return mMachine; }
    Book& book() { return mBook; }
    RunLog& log() { return *mMachine.log(); }

    /// Returns when nothing runs and nothing is due.
    void settle();
    /// Settles, or, where something has gone wrong in the run already, perhaps lets only some of the work be done: what
    /// comes next meets the rest of it under way.
    void goOn(RunDice& dice);
    /// Lets the time pass, in steps shorter than a beat, with all that it brings about.
    void elapse(unsigned milliseconds);
    /// Lets it pass at one stroke, as for a machine that was suspended.
    void jump(unsigned milliseconds);

    void setFaults(const Tarnwick::MQ::LinkFaults& faults, uint32_t seed);
    void cut(const std::string& a, const std::string& b);
    void mend(const std::string& a, const std::string& b);
    void hang(const std::string& node);
    void wake(const std::string& node);
    /// As when a process dies: its links fail, and nothing of it is left.
    void end(ClusterNode& node);
    void begin(ClusterNode& node);
    /// Everything works again, and those that died live.
    void healAll();
    /// True once anything of the above has been done to links or nodes.
    bool troubled() const { return mTroubled; }
    void noteTrouble() { mTroubled = true; }
    Pace pace() const { return mPace; }

private:
    void settleInSteps();
    void settleOnThreads();
    /// Ends pulls that ask for ever, as a host would that watches them.
    void cancelEveryPull();

    Machine& mMachine;
    Book& mBook;
    const Pace mPace;
    const std::shared_ptr<Tarnwick::MQ::EmbeddedBus> mBus;
    const std::shared_ptr<Tarnwick::MQ::Bus> mWatched;
    const std::shared_ptr<Public::Network::IOWorker> mWorker;
    std::vector<std::unique_ptr<ClusterNode>> mNodes;
    bool mTroubled = false;
};

}  // namespace cluster
