// Where the queue's contract is tested: a bus, and what a suite may do to it.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "Asserting.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "Tarnwick/MQ.h"

namespace support {

/// One for each kind of bus; the same suites run on all of them.
class QueueBed {
public:
    virtual ~QueueBed() = default;
    /// The bus as that node sees it: in one process all share it, elsewhere each has its own.
    virtual std::shared_ptr<Tarnwick::MQ::Bus> busOf(const std::string& node) = 0;
    /// Lets go of the buses.
    virtual void drop() = 0;
    /// Returns when what is under way has arrived and nothing runs.
    virtual void settle() = 0;
    /// Lets that time pass, in steps shorter than a beat, with everything that it brings about.
    virtual void elapse(unsigned milliseconds) = 0;
    /// Lets that time pass at one stroke.
    virtual void jump(unsigned milliseconds) = 0;
    virtual void cut(const std::string& a, const std::string& b) = 0;
    virtual void mend(const std::string& a, const std::string& b) = 0;
    /// As a process that is stopped: it hears and says nothing, and nobody is told.
    virtual void hang(const std::string& node) = 0;
    virtual void wake(const std::string& node) = 0;
};

struct QueueBedKind {
    const char* name;
    std::function<std::unique_ptr<QueueBed>()> make;

    friend void PrintTo(const QueueBedKind& kind, std::ostream* out) { *out << kind.name; }
};

std::unique_ptr<QueueBed> makeEmbeddedBed();

/// The answers that came to one or more requests.
class Answers {
public:
    Tarnwick::MQ::ResponseCallback callback();
    size_t count() const;
    std::shared_ptr<Tarnwick::MQ::MQMessage> last() const;
    /// Of the last one; 1 while none has come.
    int code() const;
    /// The text of its body; "-" without one.
    std::string text() const;
    void waitFor(size_t count) const;

private:
    struct State {
        std::mutex mutex;
        std::condition_variable came;
        std::vector<std::shared_ptr<Tarnwick::MQ::MQMessage>> messages;
    };
    std::shared_ptr<State> mState = std::make_shared<State>();
};

/// A gate that handlers wait at until a test opens it.
class Gate {
public:
    ~Gate() { open(); }
    void open();
    /// Waits until opened.
    void pass();
    /// Waits until that many are inside pass.
    void waitForVisitors(size_t count);

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    size_t mVisitors = 0;
    bool mOpen = false;
};

Tarnwick::Protocol::TWProtoUpgradePkt packet(const std::string& text);
/// The text of a message's body; "-" without one.
std::string bodyText(const std::shared_ptr<Tarnwick::MQ::MQMessage>& message);
/// Answers every request with the text.
Tarnwick::MQ::RequestHandler answering(const std::string& text);

/// Base of the suites.
class QueueContract : public testing::TestWithParam<QueueBedKind> {
protected:
    QueueContract() : mBed(GetParam().make()) {}

    QueueBed& bed() { return *mBed; }
    std::shared_ptr<Tarnwick::MQ::TWMQClient> client(const std::string& id, const std::string& server);
    std::shared_ptr<Tarnwick::MQ::TWMQServer> plainServer(const std::string& id);
    std::shared_ptr<Tarnwick::MQ::TWMQSystemServer> server(const std::string& id, bool ready = true,
                                                           const std::string& systemId = "system");
    std::shared_ptr<Tarnwick::MQ::TWMQSystemServer> server(const Tarnwick::MQ::NodeOptions& options);
    /// Pushes a text to the node; time-out 60000. @return the message id
    unsigned ask(const std::shared_ptr<Tarnwick::MQ::MQConnection>& connection, const std::string& to,
                 const std::string& topic, const std::string& text, Answers& answers, unsigned timeoutMs = 60000);
    static void serve(Tarnwick::MQ::MQDispatcher& node, const std::string& topic,
                      const Tarnwick::MQ::RequestHandler& handler, void* owner = nullptr);

private:
    std::unique_ptr<QueueBed> mBed;
};

}  // namespace support

/// Runs the suites of the queue's contract on one kind of bus.
#define ORV_INSTANTIATE_QUEUE_SUITE(Prefix, Suite, makeBed)                                           \
    INSTANTIATE_TEST_SUITE_P(Prefix, Suite, testing::Values(support::QueueBedKind{#Prefix, makeBed}), \
                             [](const auto& row) { return std::string(row.param.name); })
