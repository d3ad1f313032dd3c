// Requests and answers between two nodes.
#include "QueueBed.h"
#include "TWProtocol/TWProtoDeviceCmd.h"
#include "TWProtocol/TWProtoUser.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;
using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWPacket;
using Tarnwick::Protocol::TWProtoAuthUserInfo;
using Tarnwick::Protocol::TWProtoMessageLevel_Normal;
using Tarnwick::Protocol::TWProtoUpgradeInfo;
using Tarnwick::Protocol::TWProtoUpgradeNotify;

class QueueRequests : public QueueContract {
protected:
    std::shared_ptr<MQConnection> link() { return a->connectionTo("b", ""); }

    std::shared_ptr<TWMQSystemServer> a = server("a");
    std::shared_ptr<TWMQSystemServer> b = server("b");
    Answers answers;
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, QueueRequests, makeEmbeddedBed);

TEST_P(QueueRequests, ReachTheHandlerAndComeBackWithItsAnswer) {
    serve(*b, "topic", [](const std::shared_ptr<MQMessage>& message) {
        return message->buildResponse(ErrorInfo(0, ""), packet("got " + bodyText(message)));
    });
    EXPECT_NE(ask(link(), "b", "topic", "this", answers), 0u);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), 0);
    EXPECT_EQ(answers.text(), "got this");
}

TEST_P(QueueRequests, CarryTheHandlersErrorBack) {
    serve(*b, "topic", [](const std::shared_ptr<MQMessage>& message) {
        return message->buildResponse(ErrorInfo(-415, "enough"), nullptr);
    });
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), -415);
    EXPECT_EQ(answers.last()->errorInfo().errorMessage(), "enough");
    EXPECT_EQ(answers.text(), "-") << "no body was sent";
}

TEST_P(QueueRequests, ShowTheHandlerWhoAskedWhomAboutWhat) {
    std::shared_ptr<MQMessage> seen;
    serve(*b, "topic", [&seen](const std::shared_ptr<MQMessage>& message) {
        seen = message;
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->from(), "a");
    EXPECT_EQ(seen->to(), "b");
    EXPECT_EQ(seen->forwardTo(), "") << "it was not forwarded";
    EXPECT_EQ(seen->topic(), "topic");
    EXPECT_FALSE(seen->errorInfo());
    ASSERT_TRUE(seen->connection());
    EXPECT_EQ(seen->connection()->myMqId(), "b");
}

TEST_P(QueueRequests, ShowTheCallbackWhoAnswered) {
    serve(*b, "topic", answering("x"));
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    ASSERT_TRUE(answers.last());
    EXPECT_EQ(answers.last()->from(), "b");
    EXPECT_EQ(answers.last()->to(), "a");
}

TEST_P(QueueRequests, WithoutABodyHaveNone) {
    std::string seen;
    serve(*b, "topic", [&seen](const std::shared_ptr<MQMessage>& message) {
        seen = bodyText(message);
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    EXPECT_NE(
        link()->pushMessageRequest("topic", nullptr, nullptr, TWProtoMessageLevel_Normal, answers.callback(), 60000),
        0u);
    bed().settle();
    EXPECT_EQ(seen, "-");
    EXPECT_EQ(answers.count(), 1u);
}

TEST_P(QueueRequests, OfAnotherTypeDoNotParseAndLeaveTheRecordAlone) {
    TWProtoUpgradeNotify record;
    record.body = "before";
    bool parsed = true;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        parsed = message->parseBody(&record, false);
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    ask(link(), "b", "topic", "a packet", answers);
    bed().settle();
    EXPECT_FALSE(parsed);
    EXPECT_EQ(record.body, "before");
}

TEST_P(QueueRequests, WithAMalformedBodyLeaveTheRecordAlone) {
    auto record = packet("before");
    bool parsed = true;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        parsed = message->parseBody(&record, false);
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    const auto good = TWPacket::serializeAsBytes(packet("text")).toStdString();
    const Public::Base::SharedBuffer bad(good + "\x0b");
    link()->pushStringRequestTo("b", "topic", bad, nullptr, TWProtoMessageLevel_Normal, answers.callback(), 60000);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_FALSE(parsed);
    EXPECT_EQ(record.body, "before");
}

TEST_P(QueueRequests, SerialisedOnceGoToManyNodes) {
    const auto c = server("c");
    serve(*b, "topic", [](const auto& message) {
        return message->buildResponse(ErrorInfo(0, ""), packet("b:" + bodyText(message)));
    });
    serve(*c, "topic", [](const auto& message) {
        return message->buildResponse(ErrorInfo(0, ""), packet("c:" + bodyText(message)));
    });
    const auto bytes = TWPacket::serializeAsBytes(packet("same"));
    Answers second;
    const auto first = link()->pushStringRequestTo("b", "topic", bytes, nullptr, TWProtoMessageLevel_Normal,
                                                   answers.callback(), 60000);
    const auto other = a->connectionTo("c", "")->pushStringRequestTo(
        "c", "topic", bytes, nullptr, TWProtoMessageLevel_Normal, second.callback(), 60000);
    bed().settle();
    EXPECT_NE(first, other);
    EXPECT_EQ(answers.text(), "b:same");
    EXPECT_EQ(second.text(), "c:same");
}

TEST_P(QueueRequests, HaveIdsThatAreNeverZeroAndAllDifferent) {
    serve(*b, "topic", answering(""));
    std::set<unsigned> ids;
    for (int i = 0; i < 500; ++i) ids.insert(ask(link(), "b", "topic", "", answers));
    bed().settle();
    EXPECT_EQ(ids.size(), 500u);
    EXPECT_EQ(ids.count(0), 0u);
    EXPECT_EQ(answers.count(), 500u);
}

TEST_P(QueueRequests, CarryTheUserBesideTheBody) {
    TWProtoAuthUserInfo user;
    user.login.user.userName = "operator";
    std::string name;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        TWProtoAuthUserInfo record;
        if (message->parseUserAuthen(&record, false)) name = record.login.user.userName + "+" + bodyText(message);
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    const auto body = packet("body");
    link()->pushMessageRequest("topic", &body, &user, TWProtoMessageLevel_Normal, answers.callback(), 60000);
    bed().settle();
    EXPECT_EQ(name, "operator+body");
}

TEST_P(QueueRequests, WithoutAUserGiveNone) {
    bool parsed = true;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        TWProtoAuthUserInfo record;
        parsed = message->parseUserAuthen(&record, false);
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_FALSE(parsed);
}

TEST_P(QueueRequests, CarryAChunkOfAMebibyteBothWays) {
    TWProtoUpgradeInfo chunk;
    chunk.data.assign(0x100000, 'c');
    chunk.position = 0x100000;
    serve(*b, "topic", [](const std::shared_ptr<MQMessage>& message) {
        TWProtoUpgradeInfo record;
        const bool read = message->parseBody(&record, false);
        return message->buildResponse(ErrorInfo(read ? 0 : -1, ""), record);
    });
    link()->pushMessageRequest("topic", &chunk, nullptr, TWProtoMessageLevel_Normal, answers.callback(), 60000);
    bed().settle();
    ASSERT_EQ(answers.code(), 0);
    TWProtoUpgradeInfo back;
    ASSERT_TRUE(answers.last()->parseBody(&back, false));
    EXPECT_TRUE(back.data == chunk.data);
    EXPECT_EQ(back.position, chunk.position);
}

TEST_P(QueueRequests, TooLargeForTheBusGiveZeroAndNoCallback) {
    const std::string huge(bed().busOf("a")->maxFrame(), 'x');
    EXPECT_EQ(ask(link(), "b", "topic", huge, answers), 0u);
    bed().elapse(60000);
    EXPECT_EQ(answers.count(), 0u);
    serve(*b, "topic", answering("still fine"));
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "still fine");
}

TEST_P(QueueRequests, WhoseAnswerIsTooLargeFailAtOnce) {
    const std::string huge(bed().busOf("b")->maxFrame(), 'x');
    serve(*b, "topic", answering(huge));
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), -1);
}

TEST_P(QueueRequests, OnATopicThatNobodyServesAreAnsweredAtOnce) {
    ask(link(), "b", "nobody's", "", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), -2);
}

TEST_P(QueueRequests, ForANodeThatNobodyPassesThemOnToAreAnsweredAtOnce) {
    ask(link(), "elsewhere", "nobody's", "", answers);
    bed().settle();
    EXPECT_EQ(answers.code(), -204);
}

TEST_P(QueueRequests, WithoutATopicAreNotSent) { EXPECT_EQ(ask(link(), "b", "", "", answers), 0u); }

TEST_P(QueueRequests, ToTheNodeItselfAreServedThere) {
    serve(*a, "topic", answering("myself"));
    ask(a->connectionTo("a", ""), "a", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "myself");
}

TEST_P(QueueRequests, MayHaveAnEmptyCallback) {
    std::atomic<int> served{0};
    serve(*b, "topic", [&served](const auto& message) {
        ++served;
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    EXPECT_NE(link()->pushMessageRequest("topic", nullptr, nullptr, TWProtoMessageLevel_Normal, {}, 60000), 0u);
    bed().settle();
    EXPECT_EQ(served, 1);
}

TEST_P(QueueRequests, WhoseHandlerReturnsNullWaitForPushResponse) {
    std::shared_ptr<MQMessage> kept;
    serve(*b, "topic", [&kept](const std::shared_ptr<MQMessage>& message) {
        kept = message;
        return std::shared_ptr<MQMessage>();
    });
    ask(link(), "b", "topic", "", answers);
    bed().elapse(5000);
    EXPECT_EQ(answers.count(), 0u);
    ASSERT_TRUE(kept && kept->connection());
    EXPECT_EQ(
        kept->connection()->pushResponse(kept->buildResponse(ErrorInfo(0, ""), packet("late")), false).errorCode(), 0);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.text(), "late");
}

TEST_P(QueueRequests, TakeTheFirstOfTwoAnswersOnly) {
    serve(*b, "topic", [](const std::shared_ptr<MQMessage>& message) {
        message->connection()->pushResponse(message->buildResponse(ErrorInfo(0, ""), packet("pushed")), false);
        return message->buildResponse(ErrorInfo(0, ""), packet("returned"));
    });
    ask(link(), "b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.text(), "pushed");
}

TEST_P(QueueRequests, TimeOutExactlyWhenTheirTimeHasPassed) {
    serve(*b, "topic", [](const auto&) { return std::shared_ptr<MQMessage>(); });
    ask(link(), "b", "topic", "", answers, 60000);
    bed().elapse(59999);
    EXPECT_EQ(answers.count(), 0u);
    bed().elapse(1);
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -202);
    bed().elapse(60000);
    EXPECT_EQ(answers.count(), 1u);
}

TEST_P(QueueRequests, EachHaveATimeOutOfTheirOwn) {
    serve(*b, "topic", [](const auto&) { return std::shared_ptr<MQMessage>(); });
    Answers slow;
    ask(link(), "b", "topic", "", slow, 2000);
    ask(link(), "b", "topic", "", answers, 1000);
    bed().elapse(1000);
    EXPECT_EQ(answers.code(), -202);
    EXPECT_EQ(slow.count(), 0u);
    bed().elapse(1000);
    EXPECT_EQ(slow.code(), -202);
}

TEST_P(QueueRequests, DropAnAnswerThatComesAfterTheTimeOut) {
    std::shared_ptr<MQMessage> kept;
    serve(*b, "topic", [&kept](const std::shared_ptr<MQMessage>& message) {
        kept = message;
        return std::shared_ptr<MQMessage>();
    });
    ask(link(), "b", "topic", "", answers, 1000);
    bed().elapse(1000);
    kept->connection()->pushResponse(kept->buildResponse(ErrorInfo(0, ""), packet("too late")), false);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.code(), -202);
}

TEST_P(QueueRequests, OfAClientGoToItsServer) {
    const auto client = this->client("client", "b");
    ASSERT_TRUE(client->connection());
    EXPECT_EQ(client->connection()->myMqId(), "client");
    EXPECT_EQ(client->connection()->connectionState(), ConnectionState_Connected);
    std::string to;
    serve(*b, "topic", [&to](const std::shared_ptr<MQMessage>& message) {
        to = message->to();
        return message->buildResponse(ErrorInfo(0, ""), packet("from the server"));
    });
    client->connection()->pushMessageRequest("topic", nullptr, nullptr, TWProtoMessageLevel_Normal, answers.callback(),
                                             60000);
    bed().settle();
    EXPECT_EQ(to, "b");
    EXPECT_EQ(answers.text(), "from the server");
}

TEST_P(QueueRequests, OfAClientToAnotherNodeReachItsServerWithTheAddressee) {
    const auto client = this->client("client", "b");
    std::string to;
    serve(*b, "topic", [&to](const std::shared_ptr<MQMessage>& message) {
        to = message->to();
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    bool reachedA = false;
    serve(*a, "topic", [&reachedA](const std::shared_ptr<MQMessage>& message) {
        reachedA = true;
        return message->buildResponse(ErrorInfo(0, ""), nullptr);
    });
    ask(client->connection(), "a", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(to, "a");
    EXPECT_FALSE(reachedA) << "passing on is the work of the server's handlers";
}

TEST_P(QueueRequests, GoToAClientToo) {
    const auto client = this->client("client", "a");
    serve(*client, "topic", answering("client here"));
    ASSERT_TRUE(a->connectionTo("client", ""));
    ask(a->connectionTo("client", ""), "client", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "client here");
}

TEST_P(QueueRequests, FromManyThreadsAreAllAnsweredOnce) {
    serve(*b, "topic", [](const std::shared_ptr<MQMessage>& message) {
        return message->buildResponse(ErrorInfo(0, ""), packet(bodyText(message)));
    });
    constexpr int kThreads = 4;
    constexpr int kEach = 100;
    std::vector<Answers> each(kThreads * kEach);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t, &each, connection = link()] {
            for (int i = 0; i < kEach; ++i) {
                const auto index = static_cast<size_t>(t * kEach + i);
                ask(connection, "b", "topic", std::to_string(index), each[index]);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    bed().settle();
    for (size_t i = 0; i < each.size(); ++i) {
        ASSERT_EQ(each[i].count(), 1u);
        ASSERT_EQ(each[i].text(), std::to_string(i));
    }
}

}  // namespace
