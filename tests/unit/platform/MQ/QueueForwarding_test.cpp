// Requests that nodes pass on.
#include "QueueBed.h"
#include "TWProtocol/TWProtoUser.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;
using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWProtoAuthUserInfo;
using Tarnwick::Protocol::TWProtoMessageLevel_Normal;

class QueueForwarding : public QueueContract {
protected:
    /// Makes the server pass requests on the topic on to their target when that is not the server itself.
    void route(const std::shared_ptr<TWMQSystemServer>& node, const std::string& topic, const std::string& answer) {
        const std::weak_ptr<TWMQSystemServer> weak = node;
        serve(*node, topic, [weak, answer](const std::shared_ptr<MQMessage>& message) -> std::shared_ptr<MQMessage> {
            const auto self = weak.lock();
            if (!self) return nullptr;
            const auto own = self->mySystemNotify().serverId;
            const auto target = message->forwardTo().empty() ? message->to() : message->forwardTo();
            if (target == own) return message->buildResponse(ErrorInfo(0, ""), packet(answer + message->from()));
            const auto connection = self->connectionTo(target, "");
            if (!connection) return message->buildResponse(ErrorInfo(-203, ""), nullptr);
            TWProtoAuthUserInfo authen;
            const bool known = message->parseUserAuthen(&authen, false);
            connection->forwardMessageTo(own, target, message, known ? &authen : nullptr);
            return nullptr;
        });
    }

    std::shared_ptr<TWMQSystemServer> a = server("a");
    std::shared_ptr<TWMQSystemServer> b = server("b");
    std::shared_ptr<TWMQSystemServer> c = server("c");
    std::shared_ptr<TWMQClient> user = client("user", "a");
    Answers answers;
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, QueueForwarding, makeEmbeddedBed);

TEST_P(QueueForwarding, TakesAClientsRequestToTheServerThatItNames) {
    route(a, "topic", "a for ");
    route(b, "topic", "b for ");
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.text(), "b for a") << "in the name of the server that passed it on";
    EXPECT_EQ(answers.last()->from(), "b");
}

TEST_P(QueueForwarding, ShowsTheFinalTarget) {
    route(a, "topic", "");
    std::string seen;
    serve(*b, "topic", [&seen](const std::shared_ptr<MQMessage>& message) {
        seen = message->from() + ">" + message->to() + ">" + message->forwardTo() + ":" + bodyText(message);
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    ask(user->connection(), "b", "topic", "body", answers);
    bed().settle();
    EXPECT_EQ(seen, "a>b>b:body");
}

TEST_P(QueueForwarding, LetsTheAnswerGoStraightToTheOneThatWaits) {
    std::shared_ptr<MQMessage> kept;
    route(a, "topic", "");
    serve(*b, "topic", [&kept](const std::shared_ptr<MQMessage>& message) {
        kept = message;
        return std::shared_ptr<MQMessage>();
    });
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    bed().hang("a");  // the server in between is not needed any more
    ASSERT_TRUE(kept && kept->connection());
    kept->connection()->pushResponse(kept->buildResponse(ErrorInfo(0, ""), packet("straight")), false);
    bed().settle();
    EXPECT_EQ(answers.text(), "straight");
}

TEST_P(QueueForwarding, CarriesTheUserWhenOneIsGiven) {
    route(a, "topic", "");
    std::string name;
    serve(*b, "topic", [&name](const std::shared_ptr<MQMessage>& message) {
        TWProtoAuthUserInfo record;
        name = message->parseUserAuthen(&record, false) ? record.login.user.userName : "none";
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    TWProtoAuthUserInfo who;
    who.login.user.userName = "operator";
    user->connection()->pushMessageRequestTo("b", "topic", nullptr, &who, TWProtoMessageLevel_Normal,
                                             answers.callback(), 60000);
    bed().settle();
    EXPECT_EQ(name, "operator");
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(name, "none");
}

TEST_P(QueueForwarding, ByWayOfTheMasterReachesTheTarget) {
    route(a, "topic", "a for ");
    route(b, "topic", "b for ");
    route(c, "topic", "c for ");
    const auto id = c->connectionToMaster("a")->pushSessionMessageRequestForwardTo(
        "a", "b", "topic", nullptr, "", TWProtoMessageLevel_Normal, answers.callback(), 60000);
    EXPECT_NE(id, 0u);
    bed().settle();
    EXPECT_EQ(answers.text(), "b for a");
}

TEST_P(QueueForwarding, ByWayOfTheMasterShowsItBothNames) {
    std::string seen;
    serve(*a, "topic", [&seen](const std::shared_ptr<MQMessage>& message) {
        seen = message->from() + ">" + message->to() + ">" + message->forwardTo();
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    c->connectionToMaster("a")->pushSessionMessageRequestForwardTo(
        "a", "b", "topic", nullptr, "", TWProtoMessageLevel_Normal, answers.callback(), 60000);
    bed().settle();
    EXPECT_EQ(seen, "c>a>b");
}

TEST_P(QueueForwarding, ByWayOfTheNodeItselfWorksForTheMasterToo) {
    route(a, "topic", "a for ");
    route(b, "topic", "b for ");
    a->connectionToMaster("a")->pushSessionMessageRequestForwardTo(
        "a", "b", "topic", nullptr, "", TWProtoMessageLevel_Normal, answers.callback(), 60000);
    bed().settle();
    EXPECT_EQ(answers.text(), "b for a");
}

TEST_P(QueueForwarding, OfAClientByWayOfTheMasterPassesItsServer) {
    route(b, "topic", "b for ");
    route(c, "topic", "c for ");
    const auto other = client("other", "b");
    other->connection()->pushSessionMessageRequestForwardTo("a", "c", "topic", nullptr, "", TWProtoMessageLevel_Normal,
                                                            answers.callback(), 60000);
    bed().settle();
    EXPECT_EQ(answers.text(), "c for b");
}

TEST_P(QueueForwarding, ToADeadLinkFailsForTheCallerAndForTheOneThatWaits) {
    int code = 1;
    const auto link = a->connectionTo("b", "");
    serve(*a, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        code = link->forwardMessageTo("a", "b", message, nullptr).errorCode();
        return std::shared_ptr<MQMessage>();
    });
    bed().cut("a", "b");
    bed().settle();
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(code, -203);
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -203);
}

TEST_P(QueueForwarding, ToAHungPeerTimesOutForTheOneThatWaits) {
    route(a, "topic", "");
    route(b, "topic", "b for ");
    bed().hang("b");
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    bed().hang("a");  // nor is the server in between needed for that
    bed().elapse(59999);
    EXPECT_EQ(answers.count(), 0u);
    bed().elapse(1);
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -202);
}

TEST_P(QueueForwarding, ToAPeerThatEndsTimesOutForTheOneThatWaits) {
    route(a, "topic", "");
    serve(*b, "topic", [](const auto&) { return std::shared_ptr<MQMessage>(); });
    ask(user->connection(), "b", "topic", "", answers);
    bed().settle();
    b.reset();
    bed().elapse(59999);
    EXPECT_EQ(answers.count(), 0u) << "the request was put to the user's own server, and that one lives";
    bed().elapse(1);
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -202);
}

TEST_P(QueueForwarding, InACircleEndsWithAnError) {
    for (const auto& node : {a, b}) {
        const std::weak_ptr<TWMQSystemServer> weak = node;
        serve(*node, "topic", [weak](const std::shared_ptr<MQMessage>& message) {
            const auto self = weak.lock();
            const std::string other = self && self->myMqId() == "a" ? "b" : "a";
            if (self) self->connectionTo(other, "")->forwardMessageTo(self->myMqId(), other, message, nullptr);
            return std::shared_ptr<MQMessage>();
        });
    }
    ask(user->connection(), "c", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -204);
}

TEST_P(QueueForwarding, RefusesWhatIsNoRequest) {
    serve(*b, "topic", answering("x"));
    ask(a->connectionTo("b", ""), "b", "topic", "", answers);
    bed().settle();
    ASSERT_TRUE(answers.last());
    const auto link = a->connectionTo("c", "");
    EXPECT_EQ(link->forwardMessageTo("a", "c", answers.last(), nullptr).errorCode(), -203);
    EXPECT_EQ(link->forwardMessageTo("a", "c", nullptr, nullptr).errorCode(), -203);
}

TEST_P(QueueForwarding, IsNotWhatPushResponseDoes) {
    std::vector<int> codes;
    serve(*b, "topic", [&codes](const std::shared_ptr<MQMessage>& message) {
        codes.push_back(message->connection()->pushResponse(message, false).errorCode());
        codes.push_back(message->connection()->pushResponse(nullptr, false).errorCode());
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    ask(a->connectionTo("b", ""), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(codes, (std::vector<int>{-203, -203}));
    EXPECT_EQ(answers.code(), 0);
}

}  // namespace
