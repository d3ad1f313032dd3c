// What becomes of requests when links and nodes go.
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;
using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWProtoMessageLevel_Normal;

class QueueEnds : public QueueContract {
protected:
    void neverAnswer(MQDispatcher& node) {
        serve(node, "topic", [](const auto&) { return std::shared_ptr<MQMessage>(); });
    }
    unsigned askB() { return ask(a->connectionTo("b", ""), "b", "topic", "", answers); }

    Gate gate;
    std::shared_ptr<TWMQSystemServer> a = server("a");
    std::shared_ptr<TWMQSystemServer> b = server("b");
    Answers answers;
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, QueueEnds, makeEmbeddedBed);

TEST_P(QueueEnds, ACutLinkIsDeadAtOnce) {
    const auto link = a->connectionTo("b", "");
    EXPECT_EQ(link->connectionState(), ConnectionState_Connected);
    bed().cut("a", "b");
    EXPECT_EQ(link->connectionState(), ConnectionState_Dead);
    EXPECT_EQ(ask(link, "b", "topic", "", answers), 0u);
    bed().elapse(60000);
    EXPECT_EQ(answers.count(), 0u);
}

TEST_P(QueueEnds, ACutLinkFailsWhatWaitsAtOnce) {
    neverAnswer(*b);
    EXPECT_NE(askB(), 0u);
    bed().settle();
    EXPECT_EQ(answers.count(), 0u);
    bed().cut("a", "b");
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -203);
}

TEST_P(QueueEnds, ACutLinkFailsNothingThatWentElsewhere) {
    const auto c = server("c");
    neverAnswer(*c);
    ask(a->connectionTo("c", ""), "c", "topic", "", answers);
    bed().cut("a", "b");
    bed().settle();
    EXPECT_EQ(answers.count(), 0u);
}

TEST_P(QueueEnds, AMendedLinkCarriesAgainOnceThePeerIsHeard) {
    serve(*b, "topic", answering("back"));
    bed().cut("a", "b");
    bed().elapse(3000);
    bed().mend("a", "b");
    bed().elapse(500);
    EXPECT_EQ(a->connectionTo("b", "")->connectionState(), ConnectionState_Connected);
    EXPECT_NE(askB(), 0u);
    bed().settle();
    EXPECT_EQ(answers.text(), "back");
}

TEST_P(QueueEnds, APeerThatEndsFailsWhatWaitsForIt) {
    neverAnswer(*b);
    askB();
    bed().settle();
    b.reset();
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -203);
    EXPECT_EQ(a->connectionTo("b", "")->connectionState(), ConnectionState_Dead);
}

TEST_P(QueueEnds, AnAnswerSentBeforeTheEndArrives) {
    serve(*b, "topic", answering("last words"));
    askB();
    answers.waitFor(1);
    b.reset();
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.text(), "last words");
}

TEST_P(QueueEnds, APeerThatHangsLeadsToTheTimeOut) {
    neverAnswer(*b);
    bed().hang("b");
    EXPECT_NE(askB(), 0u);
    bed().elapse(59999);
    EXPECT_EQ(answers.count(), 0u);
    bed().elapse(1);
    EXPECT_EQ(answers.code(), -202);
}

TEST_P(QueueEnds, ASilentPeersLinkIsDead) {
    bed().hang("b");
    bed().elapse(2000);
    EXPECT_EQ(a->connectionTo("b", "")->connectionState(), ConnectionState_Dead);
    EXPECT_EQ(askB(), 0u);
}

TEST_P(QueueEnds, TheNodesOwnEndFailsWhatWaits) {
    neverAnswer(*b);
    for (int i = 0; i < 20; ++i) askB();
    bed().settle();
    a.reset();
    bed().settle();
    EXPECT_EQ(answers.count(), 20u);
    EXPECT_EQ(answers.code(), -203);
    bed().elapse(60000);
    EXPECT_EQ(answers.count(), 20u) << "no time-out comes on top";
}

TEST_P(QueueEnds, TheBussEndStillRunsTheCallbacks) {
    neverAnswer(*b);
    askB();
    bed().settle();
    bed().drop();
    b.reset();
    a.reset();
    answers.waitFor(1);  // another thread may be the last to hold the bus
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -203);
}

TEST_P(QueueEnds, WhatIsUnderWayAtAPeersEndIsAnsweredOrFails) {
    std::atomic<int> calls{0};
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        ++calls;
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    for (int i = 0; i < 200; ++i) askB();
    answers.waitFor(1);
    b.reset();
    bed().settle();
    EXPECT_EQ(answers.count(), 200u);
    EXPECT_LE(calls, 200);
}

TEST_P(QueueEnds, ANodeMayEndInItsOwnHandler) {
    serve(*b, "topic", [this](const std::shared_ptr<MQMessage>& message) {
        b.reset();
        return message->buildResponse(ErrorInfo(0, ""), packet("too late"));
    });
    askB();
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -203);
    EXPECT_FALSE(b);
}

TEST_P(QueueEnds, ANodeMayEndInItsOwnCallback) {
    serve(*b, "topic", answering("x"));
    const auto body = packet("");
    auto ended = std::make_shared<Answers>();
    a->connectionTo("b", "")->pushMessageRequest(
        "topic", &body, nullptr, TWProtoMessageLevel_Normal,
        [this, record = ended->callback()](const auto& message) {
            a.reset();
            record(message);
        },
        60000);
    bed().settle();
    EXPECT_FALSE(a);
    EXPECT_EQ(ended->count(), 1u);
}

TEST_P(QueueEnds, EverythingMayEndInACallback) {
    serve(*b, "topic", answering("x"));
    const auto body = packet("");
    auto end = std::make_shared<Gate>();
    Answers last;
    a->connectionTo("b", "")->pushMessageRequest(
        "topic", &body, nullptr, TWProtoMessageLevel_Normal,
        [this, end, record = last.callback()](const auto& message) {
            end->pass();
            b.reset();
            a.reset();
            record(message);
        },
        60000);
    end->waitForVisitors(1);
    bed().drop();
    end->open();
    last.waitFor(1);
    EXPECT_EQ(last.count(), 1u);
}

TEST_P(QueueEnds, ALinkThatOutlivesItsNodeIsDead) {
    auto link = a->connectionTo("b", "");
    std::shared_ptr<MQMessage> kept;
    serve(*a, "topic", [&kept](const std::shared_ptr<MQMessage>& message) {
        kept = message;
        return std::shared_ptr<MQMessage>();
    });
    Answers waiting;
    ask(b->connectionTo("a", ""), "a", "topic", "", waiting);
    bed().settle();
    ASSERT_TRUE(kept && kept->connection());
    a.reset();
    EXPECT_EQ(link->connectionState(), ConnectionState_Dead);
    EXPECT_EQ(link->myMqId(), "a");
    EXPECT_EQ(ask(link, "b", "topic", "", answers), 0u);
    EXPECT_EQ(link->pushResponse(kept->buildResponse(ErrorInfo(0, ""), nullptr), false).errorCode(), -203);
    EXPECT_EQ(link->forwardMessageTo("a", "b", kept, nullptr).errorCode(), -203);
    link.reset();
    EXPECT_FALSE(kept->connection()) << "the message's link has gone";
    bed().settle();
    EXPECT_EQ(waiting.code(), -203);
}

TEST_P(QueueEnds, AnIdIsGivenOnce) {
    EXPECT_FALSE(server("a"));
    EXPECT_FALSE(client("a", "b"));
    EXPECT_FALSE(plainServer("a"));
    EXPECT_FALSE(server(""));
    EXPECT_FALSE(client("", "b"));
    EXPECT_FALSE(TWMQSystemServer::create(nullptr, NodeOptions{}));
    EXPECT_FALSE(TWMQServer::create(nullptr, NodeOptions{}));
    EXPECT_FALSE(TWMQClient::create(nullptr, NodeOptions{}));
    serve(*a, "topic", answering("the first"));
    ask(b->connectionTo("a", ""), "a", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "the first") << "a refused namesake does no harm";
}

TEST_P(QueueEnds, AnIdIsFreeAgainAfterItsNodesEnd) {
    a.reset();
    a = server("a");
    ASSERT_TRUE(a);
    serve(*b, "topic", answering("x"));
    askB();
    bed().settle();
    EXPECT_EQ(answers.text(), "x");
}

TEST_P(QueueEnds, AnAnswerToAnEarlierLifeOfANodeIsNotTaken) {
    std::vector<std::shared_ptr<MQMessage>> kept;
    std::mutex mutex;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        std::lock_guard lock(mutex);
        kept.push_back(message);
        return std::shared_ptr<MQMessage>();
    });
    Answers first;
    for (int i = 0; i < 50; ++i) ask(a->connectionTo("b", ""), "b", "topic", "", first);
    bed().settle();
    a.reset();
    a = server("a");
    for (int i = 0; i < 50; ++i) askB();
    bed().settle();
    for (size_t i = 0; i < 50; ++i) {
        kept[i]->connection()->pushResponse(kept[i]->buildResponse(ErrorInfo(0, ""), packet("stale")), false);
    }
    bed().settle();
    EXPECT_EQ(first.count(), 50u);
    EXPECT_EQ(first.code(), -203);
    EXPECT_EQ(answers.count(), 0u);
}

TEST_P(QueueEnds, AClientWhoseServerEndsHasADeadLink) {
    const auto user = client("user", "b");
    neverAnswer(*b);
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    b.reset();
    bed().settle();
    ASSERT_TRUE(user->connection());
    EXPECT_EQ(user->connection()->connectionState(), ConnectionState_Dead);
    EXPECT_EQ(answers.code(), -203);
    EXPECT_EQ(ask(user->connection(), "b", "topic", "", answers), 0u);
}

TEST_P(QueueEnds, AClientFindsItsServerAgain) {
    const auto user = client("user", "b");
    b.reset();
    bed().elapse(5000);
    b = server("b");
    bed().elapse(500);
    EXPECT_EQ(user->connection()->connectionState(), ConnectionState_Connected);
    serve(*b, "topic", answering("again"));
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "again");
}

TEST_P(QueueEnds, AClientMayComeBeforeItsServer) {
    const auto user = client("user", "late");
    EXPECT_EQ(user->connection()->connectionState(), ConnectionState_Dead);
    EXPECT_EQ(ask(user->connection(), "late", "topic", "", answers), 0u);
    const auto late = server("late");
    bed().elapse(500);
    EXPECT_EQ(user->connection()->connectionState(), ConnectionState_Connected);
}

}  // namespace
