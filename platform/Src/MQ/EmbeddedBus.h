// The bus of one process, with the faults that tests ask of it.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>

#include "MQ/Deadlines.h"
#include "MQ/WorkerPool.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::MQ {

/// What happens to frames on their way, each drawn by chance from one seed. Probabilities are from 0 to 1.
struct BusFaults {
    uint64_t seed = 1;
    double drop = 0;
    double duplicate = 0;
    double reorder = 0;        ///< a frame waits until the next one of its link has passed
    uint32_t mostDelayMs = 0;  ///< each frame waits up to that long on the Clock; frames of a link keep their order
};

/// Frames of a link pass one after another through the pool; a receiver that blocks holds up its own link only.
class EmbeddedBus : public Bus, public std::enable_shared_from_this<EmbeddedBus> {
public:
    EmbeddedBus();
    ~EmbeddedBus() override;

    bool join(const std::string& id, const Endpoint& endpoint) override;
    void leave(const std::string& id) override;
    bool send(const std::string& from, const std::string& to, const std::string& frame) override;
    bool linked(const std::string& from, const std::string& to) override;
    std::vector<std::string> peers(const std::string& id) override;
    size_t maxFrame() const override;
    bool post(std::function<void()> task) override;

    void setFaults(const BusFaults& faults);
    /// Between two nodes, both ways; frames on their way are lost. Both are told.
    void cutLink(const std::string& a, const std::string& b);
    void mendLink(const std::string& a, const std::string& b);
    /// The node hears and says nothing, as if its process hung; nobody is told.
    void stopNode(const std::string& id);
    void startNode(const std::string& id);

private:
    struct Member {
        Endpoint endpoint;
        std::mutex mutex;  // guards what follows
        std::condition_variable quiet;
        std::multiset<std::thread::id> running;  // threads inside a function of the endpoint
        bool left = false;
    };
    struct Waiting {
        std::string frame;
        uint64_t due = 0;
    };
    struct Link {
        std::deque<Waiting> frames;
        std::string heldBack;  // by reorder
        bool draining = false;
    };
    using LinkName = std::pair<std::string, std::string>;

    bool canPass(const std::string& from, const std::string& to) const;
    void enqueue(const LinkName& name, const std::string& frame);
    void drain(const LinkName& name);
    bool chance(double probability);
    void tellLost(const std::string& to, const std::string& lost);
    static void call(const std::shared_ptr<Member>& member, const std::function<void(const Endpoint&)>& function);

    std::mutex mMutex;  // guards all below but the pool
    std::map<std::string, std::shared_ptr<Member>> mMembers;
    std::map<LinkName, Link> mLinks;
    std::set<LinkName> mCut;  // smaller id first
    std::set<std::string> mStopped;
    BusFaults mFaults;
    std::mt19937_64 mRandom{1};
    Deadlines mDelays{"OrvBusDelay"};
    WorkerPool mPool;
};

}  // namespace Tarnwick::MQ
