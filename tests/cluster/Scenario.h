// The story of one run.
#pragma once

#include <string>
#include <vector>

#include "Deeds.h"

namespace cluster {

/// Draws a cluster and what befalls it. The dice are thrown on the run's thread alone, when nothing runs.
class Scenario {
public:
    Scenario(Cluster& cluster, RunDice& dice) : mCluster(cluster), mDice(dice), mDeeds(cluster, dice) {}

    /// Three to nine nodes with their stores, and a cloud.
    void setUp();
    void play();
    /// Heals the cluster and lets every time-out pass.
    void calmDown();

private:
    struct Choice {
        unsigned weight;
        bool trouble;
        void (Scenario::*act)();
    };

    void addNodes();
    void fillStores();
    void step();
    ClusterNode* anyNode();
    void askSomething();
    void moveSomething();
    void installSomething();
    void pollSomething();
    void cancelSomething();
    void passTime();
    void passLongTime();
    void changeFaults();
    void cutSomething();
    void mendSomething();
    void hangSomething();
    void wakeSomething();
    void endSomething();
    void beginSomething();
    void restartAService();
    void breakTheCloud();

    Cluster& mCluster;
    RunDice& mDice;
    Deeds mDeeds;
    bool mQuiet = false;  ///< nothing fails in this run
    std::vector<std::pair<std::string, std::string>> mCut;
    std::vector<std::string> mHung;
};

}  // namespace cluster
