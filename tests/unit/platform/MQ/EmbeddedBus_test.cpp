// What the embedded bus itself promises, and what it does to frames when it is told to.
#include "MQ/EmbeddedBus.h"

#include "ManualClock.h"
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;
using Public::Base::ErrorInfo;

/// What a node heard.
struct Ear {
    Bus::Endpoint endpoint() {
        return {[this](const std::string& from, const std::string& frame) {
                    std::lock_guard lock(mutex);
                    heard.push_back(from + ":" + frame);
                },
                [this](const std::string& id) {
                    std::lock_guard lock(mutex);
                    heard.push_back(id + " lost");
                }};
    }
    std::vector<std::string> take() {
        std::lock_guard lock(mutex);
        return std::exchange(heard, {});
    }
    std::mutex mutex;
    std::vector<std::string> heard;
};

using Heard = std::vector<std::string>;

class EmbeddedBusTest : public testing::Test {
protected:
    ~EmbeddedBusTest() override { bus->settle(); }
    Heard numbered(int count, const std::string& from = "a") {
        Heard expected;
        for (int i = 0; i < count; ++i) expected.push_back(from + ":" + std::to_string(i));
        return expected;
    }
    void sendNumbered(int count) {
        for (int i = 0; i < count; ++i) EXPECT_TRUE(bus->send("a", "b", std::to_string(i)));
    }

    ManualClock clock;
    Ear earA;
    Ear earB;
    std::shared_ptr<EmbeddedBus> bus = std::make_shared<EmbeddedBus>();
};

class EmbeddedBusPair : public EmbeddedBusTest {
protected:
    EmbeddedBusPair() {
        bus->join("a", earA.endpoint());
        bus->join("b", earB.endpoint());
    }
};

TEST_F(EmbeddedBusTest, TakesAnIdOnce) {
    EXPECT_TRUE(bus->join("a", earA.endpoint()));
    EXPECT_FALSE(bus->join("a", earB.endpoint()));
    EXPECT_FALSE(bus->join("", earB.endpoint()));
    bus->leave("a");
    EXPECT_TRUE(bus->join("a", earB.endpoint()));
    bus->leave("nobody");
}

TEST_F(EmbeddedBusTest, IsWhatTheFactoryMakes) {
    const auto made = Bus::embedded();
    EXPECT_TRUE(std::dynamic_pointer_cast<EmbeddedBus>(made));
    EXPECT_NE(made, Bus::embedded()) << "each is a world of its own";
}

TEST_F(EmbeddedBusPair, CarriesFramesInOrder) {
    sendNumbered(2000);
    bus->settle();
    EXPECT_EQ(earB.take(), numbered(2000));
    EXPECT_EQ(earA.take(), Heard{});
}

TEST_F(EmbeddedBusPair, KeepsTheOrderWhileReceiversAreSlow) {
    Ear slow;
    auto endpoint = slow.endpoint();
    const auto listen = endpoint.onFrame;
    endpoint.onFrame = [listen](const std::string& from, const std::string& frame) {
        std::this_thread::yield();
        listen(from, frame);
    };
    bus->join("c", endpoint);
    Heard expected;
    for (int i = 0; i < 200; ++i) {
        bus->send("a", "c", std::to_string(i));
        expected.push_back("a:" + std::to_string(i));
    }
    bus->settle();
    EXPECT_EQ(slow.take(), expected);
}

TEST_F(EmbeddedBusPair, KnowsWhenAFrameWillNotArrive) {
    EXPECT_FALSE(bus->send("a", "nobody", "x"));
    EXPECT_FALSE(bus->send("nobody", "a", "x"));
    EXPECT_FALSE(bus->send("a", "b", std::string(bus->maxFrame() + 1, 'x')));
    EXPECT_TRUE(bus->send("a", "b", std::string(bus->maxFrame(), 'x')));
    EXPECT_TRUE(bus->linked("a", "b"));
    EXPECT_FALSE(bus->linked("a", "nobody"));
}

TEST_F(EmbeddedBusPair, NamesTheOthers) {
    Ear earC;
    bus->join("c", earC.endpoint());
    EXPECT_EQ(bus->peers("b"), (Heard{"a", "c"}));
    bus->cutLink("b", "c");
    EXPECT_EQ(bus->peers("b"), (Heard{"a"}));
    EXPECT_EQ(bus->peers("nobody"), Heard{});
    bus->settle();
}

TEST_F(EmbeddedBusPair, TellsOfALeaveAfterTheFramesUnderWay) {
    sendNumbered(100);
    bus->leave("a");
    bus->settle();
    auto expected = numbered(100);
    expected.push_back("a lost");
    EXPECT_EQ(earB.take(), expected);
}

TEST_F(EmbeddedBusPair, TellsBothEndsOfACutOnce) {
    bus->cutLink("a", "b");
    bus->cutLink("b", "a");
    EXPECT_FALSE(bus->send("a", "b", "x"));
    EXPECT_FALSE(bus->linked("b", "a"));
    bus->settle();
    EXPECT_EQ(earA.take(), Heard{"b lost"});
    EXPECT_EQ(earB.take(), Heard{"a lost"});
    bus->restoreLink("b", "a");
    EXPECT_TRUE(bus->send("a", "b", "y"));
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{"a:y"});
}

TEST_F(EmbeddedBusPair, LetsAStoppedNodeHearAndSayNothing) {
    bus->stopNode("b");
    EXPECT_TRUE(bus->send("a", "b", "to it"));
    EXPECT_TRUE(bus->send("b", "a", "from it"));
    EXPECT_TRUE(bus->linked("a", "b"));
    bus->settle();
    EXPECT_EQ(earA.take(), Heard{});
    EXPECT_EQ(earB.take(), Heard{});
    bus->resumeNode("b");
    bus->send("a", "b", "again");
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{"a:again"});
}

TEST_F(EmbeddedBusPair, LeaveWaitsForAFunctionThatRuns) {
    Gate gate;
    std::atomic<bool> left{false};
    std::atomic<bool> leftWhileRunning{false};
    bus->join("c", {[&](const std::string&, const std::string&) {
                        gate.pass();
                        leftWhileRunning = left.load();
                    },
                    {}});
    bus->send("a", "c", "x");
    gate.waitForVisitors(1);
    std::thread leaver([&] {
        bus->leave("c");
        left = true;
    });
    while (bus->linked("a", "c")) std::this_thread::yield();
    EXPECT_FALSE(left);
    gate.open();
    leaver.join();
    EXPECT_TRUE(left);
    EXPECT_FALSE(leftWhileRunning);
}

TEST_F(EmbeddedBusPair, LeaveInsideTheNodesOwnFunctionDoesNotWait) {
    Gate gone;
    bus->join("c", {[&](const std::string&, const std::string&) {
                        bus->leave("c");
                        gone.open();
                    },
                    {}});
    bus->send("a", "c", "x");
    gone.pass();
    EXPECT_FALSE(bus->linked("a", "c"));
    bus->settle();
}

TEST_F(EmbeddedBusPair, NothingBeginsAfterLeave) {
    std::atomic<int> calls{0};
    bus->join("c", {[&](const std::string&, const std::string&) { ++calls; }, {}});
    for (int i = 0; i < 1000; ++i) bus->send("a", "c", "x");
    bus->leave("c");
    const int atTheEnd = calls;
    bus->settle();
    EXPECT_EQ(calls, atTheEnd);
}

TEST_F(EmbeddedBusPair, ASuccessorGetsNoFramesOfItsPredecessor) {
    Gate gate;
    bus->join("c", {[&](const std::string&, const std::string&) { gate.pass(); }, {}});
    for (int i = 0; i < 10; ++i) bus->send("a", "c", "old");
    gate.waitForVisitors(1);
    std::thread leaver([&] { bus->leave("c"); });
    while (bus->linked("a", "c")) std::this_thread::yield();
    Ear successor;
    bus->join("c", successor.endpoint());
    gate.open();
    leaver.join();
    bus->send("a", "c", "new");
    bus->settle();
    EXPECT_EQ(successor.take(), Heard{"a:new"});
}

TEST_F(EmbeddedBusPair, AReceiverThatBlocksHoldsUpNoOtherLink) {
    Gate gate;
    for (int i = 0; i < 10; ++i) {
        const auto id = "blocked" + std::to_string(i);
        bus->join(id, {[&](const std::string&, const std::string&) { gate.pass(); }, {}});
        bus->send("a", id, "x");
    }
    gate.waitForVisitors(10);
    Gate heard;
    bus->join("c", {[&](const std::string&, const std::string&) { heard.open(); }, {}});
    bus->send("a", "c", "x");
    heard.pass();
    EXPECT_GE(bus->threads(), 10u);
    gate.open();
    bus->settle();
}

TEST_F(EmbeddedBusPair, DropsItsShareOfFramesTheSameForTheSameSeed) {
    Heard first;
    for (int round = 0; round < 2; ++round) {
        bus->setFaults({0.5, 0, 0, 0, 0}, 42);
        sendNumbered(200);
        bus->settle();
        const auto heard = earB.take();
        EXPECT_GT(heard.size(), 50u);
        EXPECT_LT(heard.size(), 150u);
        if (round == 0)
            first = heard;
        else
            EXPECT_EQ(heard, first);
    }
}

TEST_F(EmbeddedBusPair, DropsOnOneLinkOnlyWhenToldSo) {
    bus->setLinkFaults("a", "b", {1, 0, 0, 0, 0});
    bus->send("a", "b", "x");
    bus->send("b", "a", "y");
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{});
    EXPECT_EQ(earA.take(), Heard{"b:y"});
}

TEST_F(EmbeddedBusPair, Duplicates) {
    bus->setFaults({0, 1, 0, 0, 0}, 1);
    bus->send("a", "b", "x");
    bus->settle();
    EXPECT_EQ(earB.take(), (Heard{"a:x", "a:x"}));
}

TEST_F(EmbeddedBusPair, DelaysAndKeepsTheOrder) {
    bus->setFaults({0, 0, 0, 100, 400}, 3);
    sendNumbered(50);
    clock.advance(99);
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{});
    bus->setFaults({}, 3);
    bus->send("a", "b", "50");
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{}) << "a later frame does not pass the delayed ones";
    clock.advance(301);
    bus->settle();
    EXPECT_EQ(earB.take(), numbered(51));
}

TEST_F(EmbeddedBusPair, ACutLosesDelayedFrames) {
    bus->setFaults({0, 0, 0, 100, 100}, 3);
    sendNumbered(3);
    bus->cutLink("a", "b");
    clock.advance(100);
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{"a lost"});
}

TEST_F(EmbeddedBusPair, LetsTheNextFrameOvertake) {
    bus->setFaults({0, 0, 1, 0, 0}, 1);
    bus->send("a", "b", "0");
    bus->setFaults({}, 1);
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{});
    bus->send("a", "b", "1");
    bus->settle();
    EXPECT_EQ(earB.take(), (Heard{"a:1", "a:0"}));
}

TEST_F(EmbeddedBusPair, HoldsAnOvertakenFrame100MillisecondsAtMost) {
    bus->setFaults({0, 0, 1, 0, 0}, 1);
    bus->send("a", "b", "0");
    clock.advance(99);
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{});
    clock.advance(1);
    bus->settle();
    EXPECT_EQ(earB.take(), Heard{"a:0"});
}

TEST_F(EmbeddedBusTest, EveryRequestEndsOnceWhateverTheLinksDo) {
    NodeOptions options;
    options.systemId = "system";
    options.id = "a";
    auto a = TWMQSystemServer::create(bus, options);
    options.id = "b";
    auto b = TWMQSystemServer::create(bus, options);
    b->subscribe("topic", nullptr, answering("x"), {});
    bus->settle();
    bus->setFaults({0.2, 0.2, 0.2, 0, 50}, 11);
    constexpr size_t kRequests = 300;
    std::vector<Answers> answers(kRequests);
    size_t sent = 0;
    for (auto& answer : answers) {
        sent += a->connectionTo("b", "")->pushMessageRequest("topic", nullptr, nullptr,
                                                             Tarnwick::Protocol::TWProtoMessageLevel_Normal,
                                                             answer.callback(), 5000) != 0;
        clock.advance(1);
    }
    for (int i = 0; i < 25; ++i) {
        clock.advance(250);
        bus->settle();
    }
    EXPECT_EQ(sent, kRequests);
    size_t answered = 0;
    size_t timedOut = 0;
    for (const auto& answer : answers) {
        ASSERT_EQ(answer.count(), 1u);
        answered += answer.code() == 0;
        timedOut += answer.code() == -202;
    }
    EXPECT_EQ(answered + timedOut, kRequests);
    EXPECT_GT(answered, 100u);
    EXPECT_GT(timedOut, 50u);
}

}  // namespace
