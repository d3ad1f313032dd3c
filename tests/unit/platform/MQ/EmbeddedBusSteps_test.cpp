// The bus whose every step a test decides.
#include <gtest/gtest.h>

#include "MQ/EmbeddedBus.h"
#include "MQ/Frame.h"
#include "ManualClock.h"
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;

class EmbeddedBusSteps : public testing::Test {
protected:
    Bus::Endpoint noting(const std::string& name) {
        return {[this, name](const std::string& from, const std::string& frame) {
                    heard.push_back(from + ">" + name + ":" + frame);
                    threads.insert(std::this_thread::get_id());
                },
                {}};
    }
    void join(const std::string& name) { bus->join(name, noting(name)); }
    std::vector<std::string> settled() {
        bus->settle();
        return std::exchange(heard, {});
    }
    static std::string announcement() {
        Frame frame;
        frame.kind = FrameKind_Announce;
        frame.servers.emplace_back();
        frame.servers.front().serverId = "x";
        return encodeFrame(frame);
    }

    ManualClock clock;
    std::vector<std::string> heard;
    std::set<std::thread::id> threads;
    std::shared_ptr<EmbeddedBus> bus = std::make_shared<EmbeddedBus>(WorkPool::Threads::None);
};

TEST_F(EmbeddedBusSteps, NothingRunsUntilItIsTold) {
    join("a");
    join("b");
    bus->send("a", "b", "one");
    bus->send("b", "a", "two");
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(bus->step());
    EXPECT_EQ(heard, (std::vector<std::string>{"a>b:one"}));
    EXPECT_TRUE(bus->step());
    EXPECT_FALSE(bus->step());
    EXPECT_EQ(heard, (std::vector<std::string>{"a>b:one", "b>a:two"}));
    EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
    EXPECT_EQ(bus->threads(), 0u);
}

TEST_F(EmbeddedBusSteps, NodesLiveOnIt) {
    NodeOptions options;
    options.systemId = "system";
    options.id = "a";
    const auto a = TWMQSystemServer::create(bus, options);
    options.id = "b";
    auto b = TWMQSystemServer::create(bus, options);
    bus->settle();
    b->subscribe("topic", nullptr, answering("x"), {});
    Answers answers;
    a->connectionTo("b", "")->pushMessageRequest(
        "topic", nullptr, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal, answers.callback(), 1000);
    EXPECT_EQ(answers.count(), 0u);
    bus->settle();
    EXPECT_EQ(answers.text(), "x");
    b.reset();
    bus->settle();
    EXPECT_EQ(a->connectionTo("b", "")->connectionState(), ConnectionState_Dead);
}

TEST_F(EmbeddedBusSteps, WhatWaitsAtItsEndStillRuns) {
    bool ran = false;
    bus->post([&ran] { ran = true; });
    bus.reset();
    EXPECT_TRUE(ran);
}

TEST_F(EmbeddedBusSteps, FaultsOfALinkDoNotDependOnOtherLinks) {
    for (const char* name : {"a", "b", "c"}) join(name);
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    for (int i = 0; i < 50; ++i) bus->send("a", "b", std::to_string(i));
    const auto alone = settled();
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    for (int i = 0; i < 50; ++i) {
        bus->send("c", "b", "other");
        bus->send("a", "b", std::to_string(i));
        bus->send("b", "a", "other");
    }
    auto among = settled();
    std::erase_if(among, [](const std::string& text) { return text.ends_with("other"); });
    EXPECT_EQ(among, alone);
    EXPECT_GT(alone.size(), 10u);
    EXPECT_LT(alone.size(), 40u);
}

TEST_F(EmbeddedBusSteps, FaultsOfALinkGoOnWhereItHasBeenIdle) {
    join("a");
    join("b");
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    for (int i = 0; i < 50; ++i) bus->send("a", "b", std::to_string(i));
    const auto atOnce = settled();
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    std::vector<std::string> oneByOne;
    for (int i = 0; i < 50; ++i) {
        bus->send("a", "b", std::to_string(i));
        for (const auto& text : settled()) oneByOne.push_back(text);
    }
    EXPECT_EQ(oneByOne, atOnce);
}

TEST_F(EmbeddedBusSteps, FaultsOfMessagesDoNotDependOnPresence) {
    join("a");
    join("b");
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    for (int i = 0; i < 50; ++i) bus->send("a", "b", std::to_string(i));
    const auto alone = settled();
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    for (int i = 0; i < 50; ++i) {
        bus->send("a", "b", announcement());
        bus->send("a", "b", std::to_string(i));
    }
    auto among = settled();
    const auto all = among.size();
    std::erase_if(among, [](const std::string& text) { return text.ends_with(announcement()); });
    EXPECT_EQ(among, alone);
    EXPECT_LT(among.size(), all) << "presence comes through too";
    EXPECT_LT(all, alone.size() + 50) << "and is dropped too";
}

TEST_F(EmbeddedBusSteps, TheTwoDirectionsOfALinkHaveFaultsOfTheirOwn) {
    join("a");
    join("b");
    bus->setFaults({0.5, 0, 0, 0, 0}, 7);
    std::vector<std::string> there, back;
    for (int i = 0; i < 50; ++i) bus->send("a", "b", std::to_string(i));
    for (const auto& text : settled()) there.push_back(text.substr(4));
    for (int i = 0; i < 50; ++i) bus->send("b", "a", std::to_string(i));
    for (const auto& text : settled()) back.push_back(text.substr(4));
    EXPECT_NE(there, back);
}

}  // namespace
