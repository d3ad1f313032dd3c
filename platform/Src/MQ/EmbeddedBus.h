// The bus of one process, and what tests may do to its links.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MQ/Deadlines.h"
#include "MQ/FaultDice.h"
#include "MQ/WorkPool.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::MQ {

/// What may befall the frames of a link; the chances are from 0 to 1 and each frame draws anew.
struct LinkFaults {
    double drop = 0;
    double duplicate = 0;
    double reorder = 0;         ///< the frame waits until the next one has passed it, or 100 ms of the clock have gone
    unsigned delayAtLeast = 0;  ///< milliseconds of the clock; delayed frames keep their order
    unsigned delayAtMost = 0;

    bool any() const { return drop > 0 || duplicate > 0 || reorder > 0 || delayAtLeast > 0 || delayAtMost > 0; }
};

/// Every pair of nodes has a queue of frames, which a task of the pool empties one by one. Faults break what Bus
/// promises (once, in order): they are there to show that the queue bears it.
class EmbeddedBus : public Bus, public std::enable_shared_from_this<EmbeddedBus> {
public:
    static constexpr size_t kMaxFrame = 8 * 1024 * 1024;

    /// @param threads None: nothing runs but in step and settle, on the thread that calls them, in the order of
    /// posting. What nodes do is then the same each time, as far as they use no other threads.
    explicit EmbeddedBus(WorkPool::Threads threads = WorkPool::Threads::Own);

    bool join(const std::string& id, const Endpoint& endpoint) override;
    void leave(const std::string& id) override;
    bool send(const std::string& from, const std::string& to, const std::string& frame) override {
        return sendParts(from, to, frame, {});
    }
    bool sendParts(const std::string& from, const std::string& to, const std::string& head,
                   const Public::Base::SharedBuffer& tail) override;
    bool linked(const std::string& from, const std::string& to) override;
    std::vector<std::string> peers(const std::string& id) override;
    size_t maxFrame() const override { return kMaxFrame; }
    bool post(std::function<void()> task) override { return mPool.post(std::move(task)); }

    /// Every link without faults of its own has these. What befalls a frame depends on the seed, its link, and how many
    /// frames went that way since this call, so that frames of other links make no difference; announcements, greetings
    /// and lists are counted apart from requests and answers.
    void setFaults(const LinkFaults& faults, uint32_t seed);
    void setLinkFaults(const std::string& from, const std::string& to, const LinkFaults& faults);
    /// Cuts the link in both directions, with a notice to both ends; frames under way are lost.
    void cutLink(const std::string& a, const std::string& b);
    void restoreLink(const std::string& a, const std::string& b);
    /// The node hangs: frames to and from it vanish, without a notice to anyone.
    void stopNode(const std::string& id);
    void resumeNode(const std::string& id);
    /// Waits until no frame is under way other than those that wait for the clock, no task runs, and nothing of the
    /// process's nodes is due. Not from a task.
    void settle();
    /// On a bus without threads: waits until nothing of the process's nodes is due, then runs one task. @return false
    /// when there was none
    bool step();
    size_t threads() const { return mPool.threads(); }
    /// Tasks posted since the start.
    size_t posted() const { return mPool.posted(); }

private:
    struct Node {
        Endpoint endpoint;
        size_t running = 0;  ///< of its functions
        bool stopped = false;
    };
    struct Item {
        std::shared_ptr<Node> target;  ///< as joined when the item was sent: a successor gets nothing of it
        std::string head;              ///< of the frame
        Public::Base::SharedBuffer tail = {};
        bool lost = false;  ///< the notice that the sender's link has failed
    };
    struct Link {
        std::deque<Item> items;
        bool draining = false;
        std::deque<Item> held;   ///< a frame that is to be overtaken
        uint64_t lastDelay = 0;  ///< when the last delayed frame is due
        size_t delayed = 0;
    };
    /// Frames of a link since the faults were set.
    struct Sent {
        uint64_t messages = 0;
        uint64_t presences = 0;
    };
    using LinkKey = std::pair<std::string, std::string>;

    void enqueue(const LinkKey& key, Item item);
    FaultDice diceFor(const LinkKey& key, const std::string& frame);
    void submit(const LinkKey& key, Item item, FaultDice& dice);
    void delay(const LinkKey& key, Item item, uint64_t due);
    void release(const LinkKey& key);
    void drain(const LinkKey& key);
    void notifyLost(const std::string& gone, const std::string& other);
    void run(const LinkKey& key, Item& item);
    const LinkFaults& faultsOf(const LinkKey& key) const;
    bool isCut(const std::string& a, const std::string& b) const;

    const std::shared_ptr<Deadlines> mDeadlines;
    std::mutex mMutex;
    std::condition_variable mLeft;
    std::map<std::string, std::shared_ptr<Node>> mNodes;
    std::map<LinkKey, Link> mLinks;
    std::set<LinkKey> mCut;  ///< both directions
    LinkFaults mFaults;
    std::map<LinkKey, LinkFaults> mLinkFaults;
    std::map<LinkKey, Sent> mSent;  ///< of links with faults
    uint32_t mSeed = 0;
    WorkPool mPool;  ///< ends first
};

}  // namespace Tarnwick::MQ
