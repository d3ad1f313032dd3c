// Subscriptions, and the threads that handlers and callbacks run on.
#include "LogRecorder.h"
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;
using Public::Base::ErrorInfo;

class QueueHandlers : public QueueContract {
protected:
    void askB(const std::string& topic, Answers& into) { ask(a->connectionTo("b", ""), "b", topic, "", into); }
    /// A handler that notes its name and answers with it, or with nothing.
    RequestHandler noting(const std::string& name, bool speaks = true) {
        return [this, name, speaks](const std::shared_ptr<MQMessage>& message) {
            std::lock_guard lock(mutex);
            calls += name;
            return speaks ? message->buildResponse(ErrorInfo(0, ""), packet(name)) : nullptr;
        };
    }

    /// While so many wait at the gate; then lets them through.
    void expectQuickAnswerBeside(size_t blocked) {
        gate.waitForVisitors(blocked);
        askB("quick", answers);
        answers.waitFor(1);
        EXPECT_EQ(answers.text(), "quick");
        gate.open();
        bed().settle();
    }

    std::mutex mutex;
    std::string calls;
    int ownerOne = 0;
    int ownerTwo = 0;
    Gate gate;
    std::shared_ptr<TWMQSystemServer> a = server("a");
    std::shared_ptr<TWMQSystemServer> b = server("b");
    Answers answers;
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, QueueHandlers, makeEmbeddedBed);

TEST_P(QueueHandlers, OfOneOwnerGoAllAtOnce) {
    for (int i = 0; i < 11; ++i) serve(*b, "topic" + std::to_string(i), answering("x"), &ownerOne);
    askB("topic10", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), 0);
    b->unsubcribe(&ownerOne);
    for (int i = 0; i < 11; ++i) {
        Answers gone;
        askB("topic" + std::to_string(i), gone);
        bed().settle();
        EXPECT_EQ(gone.code(), -2) << i;
    }
}

TEST_P(QueueHandlers, OfAnotherOwnerStay) {
    serve(*b, "topic", noting("1"), &ownerOne);
    serve(*b, "topic", noting("2"), &ownerTwo);
    b->unsubcribe(&ownerOne);
    askB("topic", answers);
    bed().settle();
    EXPECT_EQ(calls, "2");
    EXPECT_EQ(answers.text(), "2");
}

TEST_P(QueueHandlers, AreCalledInTheOrderOfSubscriptionAndTheFirstAnswerIsSent) {
    serve(*b, "topic", noting("1", false), &ownerTwo);
    serve(*b, "topic", noting("2"), &ownerOne);
    serve(*b, "topic", noting("3"), &ownerTwo);
    askB("topic", answers);
    bed().settle();
    EXPECT_EQ(calls, "123");
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.text(), "2");
}

TEST_P(QueueHandlers, ThatFollowDoNotHoldUpTheAnswer) {
    serve(*b, "topic", noting("1"), &ownerOne);
    serve(*b, "topic", [this](const auto&) {
        gate.pass();
        return std::shared_ptr<MQMessage>();
    });
    askB("topic", answers);
    gate.waitForVisitors(1);
    answers.waitFor(1);
    EXPECT_EQ(answers.text(), "1");
    gate.open();
    bed().settle();
}

TEST_P(QueueHandlers, SubscribedTwiceAreCalledTwice) {
    serve(*b, "topic", noting("1"), &ownerOne);
    serve(*b, "topic", noting("2"), &ownerOne);
    askB("topic", answers);
    bed().settle();
    EXPECT_EQ(calls, "12");
}

TEST_P(QueueHandlers, MayUnsubscribeThemselves) {
    serve(
        *b, "topic",
        [this](const std::shared_ptr<MQMessage>& message) {
            b->unsubcribe(&ownerOne);
            return message->buildResponse(ErrorInfo(0, ""), packet("last words"));
        },
        &ownerOne);
    askB("topic", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "last words");
    Answers after;
    askB("topic", after);
    bed().settle();
    EXPECT_EQ(after.code(), -2);
}

TEST_P(QueueHandlers, RemovedByAnEarlierOneDoNotBegin) {
    serve(
        *b, "topic",
        [this](const auto&) {
            b->unsubcribe(&ownerTwo);
            return std::shared_ptr<MQMessage>();
        },
        &ownerOne);
    serve(*b, "topic", noting("2"), &ownerTwo);
    askB("topic", answers);
    bed().settle();
    EXPECT_EQ(calls, "");
    EXPECT_EQ(answers.count(), 0u) << "the topic is served, so nothing is sent";
}

TEST_P(QueueHandlers, ThatRunWhileTheyAreRemovedGoOn) {
    serve(
        *b, "topic",
        [this](const std::shared_ptr<MQMessage>& message) {
            gate.pass();
            return message->buildResponse(ErrorInfo(0, ""), packet("done"));
        },
        &ownerOne);
    askB("topic", answers);
    gate.waitForVisitors(1);
    b->unsubcribe(&ownerOne);
    gate.open();
    bed().settle();
    EXPECT_EQ(answers.text(), "done");
}

TEST_P(QueueHandlers, OfANodeDoNotServeAnother) {
    serve(*b, "topic", noting("b"));
    ask(b->connectionTo("a", ""), "a", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), -2);
    EXPECT_EQ(calls, "");
}

TEST_P(QueueHandlers, MayAskOtherNodesAndWaitForTheAnswer) {
    serve(*a, "inner", answering("inner answer"));
    serve(*b, "outer", [this](const std::shared_ptr<MQMessage>& message) {
        Answers inner;
        ask(b->connectionTo("a", ""), "a", "inner", "", inner);
        inner.waitFor(1);
        return message->buildResponse(ErrorInfo(0, ""), packet("outer and " + inner.text()));
    });
    askB("outer", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "outer and inner answer");
}

TEST_P(QueueHandlers, ThatBlockHoldUpNoOther) {
    serve(*b, "blocking", [this](const auto&) {
        gate.pass();
        return std::shared_ptr<MQMessage>();
    });
    serve(*b, "quick", answering("quick"));
    constexpr size_t kBlocked = 12;
    Answers blocked;
    for (size_t i = 0; i < kBlocked; ++i) askB("blocking", blocked);
    expectQuickAnswerBeside(kBlocked);
}

TEST_P(QueueHandlers, AreNotHeldUpByACallbackThatBlocks) {
    serve(*b, "quick", answering("quick"));
    constexpr size_t kBlocked = 8;
    for (size_t i = 0; i < kBlocked; ++i) {
        const auto body = packet("");
        a->connectionTo("b", "")->pushMessageRequest(
            "quick", &body, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal,
            [this](const auto&) { gate.pass(); }, 60000);
    }
    expectQuickAnswerBeside(kBlocked);
}

TEST_P(QueueHandlers, ThatThrowAnswerWithAnError) {
    const LogRecorder log;
    serve(*b, "topic", [](const auto&) -> std::shared_ptr<MQMessage> { throw std::runtime_error("of no use"); });
    askB("topic", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), -1);
    EXPECT_TRUE(log.has(2, "a handler of topic threw: of no use"));
}

TEST_P(QueueHandlers, MaySubscribeAndAskUnderALockOfTheirOwn) {
    std::mutex own;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        std::lock_guard lock(own);
        serve(*b, "further", answering("further"));
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    {
        std::lock_guard lock(own);
        askB("topic", answers);  // never runs a handler on this thread
    }
    bed().settle();
    Answers further;
    askB("further", further);
    bed().settle();
    EXPECT_EQ(further.text(), "further");
}

TEST_P(QueueHandlers, LetGoOfWhatTheyHoldWhenTheyAreRemoved) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    serve(
        *b, "topic",
        [held](const std::shared_ptr<MQMessage>& message) { return message->buildResponse(ErrorInfo(0, ""), nullptr); },
        &ownerOne);
    held.reset();
    askB("topic", answers);
    bed().settle();
    EXPECT_FALSE(weak.expired());
    b->unsubcribe(&ownerOne);
    EXPECT_TRUE(weak.expired());
}

TEST_P(QueueHandlers, AndCallbacksLetGoOfWhatTheyHoldWhenTheyHaveRun) {
    serve(*b, "topic", answering(""));
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    const auto body = packet("");
    a->connectionTo("b", "")->pushMessageRequest(
        "topic", &body, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal, [held](const auto&) {}, 60000);
    held.reset();
    bed().settle();
    EXPECT_TRUE(weak.expired());
}

}  // namespace
