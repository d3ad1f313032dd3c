// Who knows whom, who is reachable, and who is master.
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;

class QueuePresence : public QueueContract {
protected:
    static std::string keys(const ServerList& list) {
        std::string text;
        for (const auto& server : list) text += server.first + (server.second.reachable ? "+" : "-");
        return text;
    }
    /// The servers that it knows, each with + when reachable.
    static std::string listOf(const std::shared_ptr<TWMQSystemServer>& node, const std::string& systemId = "system") {
        return keys(node->discover()->getSystemServerList(systemId));
    }
    static std::string listOf(const std::shared_ptr<TWMQClient>& node) {
        ServerList list;
        node->getServerList(list);
        return keys(list);
    }
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, QueuePresence, makeEmbeddedBed);

TEST_P(QueuePresence, OneServerKnowsItself) {
    const auto a = server("a");
    EXPECT_EQ(listOf(a), "a+");
    EXPECT_EQ(a->masterServerId(), "a");
    TWServerInfo info;
    EXPECT_EQ(a->getServerInfo("a", info).errorCode(), 0);
    EXPECT_TRUE(info.reachable);
    EXPECT_TRUE(info.ready);
    EXPECT_EQ(a->myMqId(), "a");
    EXPECT_EQ(a->mySystemNotify().serverId, "a");
    EXPECT_EQ(a->mySystemNotify().systemId, "system");
}

TEST_P(QueuePresence, ServersKnowEachOtherWithoutTheClocksHelp) {
    const auto c = server("c");
    const auto a = server("a");
    const auto b = server("b");
    EXPECT_EQ(listOf(a), "a+b+c+");
    EXPECT_EQ(listOf(b), "a+b+c+");
    EXPECT_EQ(listOf(c), "a+b+c+");
}

TEST_P(QueuePresence, ARecordHoldsWhatTheServerTellsOfItself) {
    const auto a = server("a");
    NodeOptions options;
    options.id = "b";
    options.systemId = "system";
    options.version = "1.2.3-b7";
    options.addresses = {{"10.0.0.1", 8080}, {"10.0.0.2", 8081}};
    options.ready = false;
    const auto b = server(options);
    TWServerInfo info;
    ASSERT_EQ(a->getServerInfo("b", info).errorCode(), 0);
    EXPECT_EQ(info.serverId, "b");
    EXPECT_EQ(info.systemId, "system");
    EXPECT_EQ(info.version, "1.2.3-b7");
    EXPECT_EQ(info.addresses, "10.0.0.1 8080\n10.0.0.2 8081");
    EXPECT_EQ(info.getServerAddr().getIP(), "10.0.0.1");
    EXPECT_EQ(info.getServerAddr().getPort(), 8080);
    EXPECT_TRUE(info.reachable);
    EXPECT_FALSE(info.ready);
}

TEST_P(QueuePresence, AnUnknownIdIsAnErrorAndLeavesTheRecordAlone) {
    const auto a = server("a");
    TWServerInfo info;
    info.serverId = "before";
    EXPECT_EQ(a->getServerInfo("nobody", info).errorCode(), -204);
    EXPECT_EQ(info.serverId, "before");
    EXPECT_FALSE(a->connectionTo("nobody", ""));
    EXPECT_FALSE(a->connectionTo("", ""));
    EXPECT_FALSE(a->connectionToMaster(""));
}

TEST_P(QueuePresence, AServerSilentFor1750MillisecondsIsNotReachable) {
    const auto a = server("a");
    const auto b = server("b");
    bed().hang("b");
    bed().elapse(1749);
    EXPECT_EQ(listOf(a), "a+b+");
    bed().elapse(1);
    EXPECT_EQ(listOf(a), "a+b-") << "it stays in the list";
    TWServerInfo info;
    EXPECT_EQ(a->getServerInfo("b", info).errorCode(), 0);
    EXPECT_FALSE(info.reachable);
}

TEST_P(QueuePresence, AServerThatSpeaksStaysReachable) {
    const auto a = server("a");
    const auto b = server("b");
    bed().elapse(10000);
    EXPECT_EQ(listOf(a), "a+b+");
    EXPECT_EQ(listOf(b), "a+b+");
}

TEST_P(QueuePresence, AServerThatSpeaksAgainIsReachableAgain) {
    const auto a = server("a");
    const auto b = server("b");
    bed().hang("b");
    bed().elapse(3000);
    EXPECT_EQ(listOf(a), "a+b-");
    bed().wake("b");
    bed().elapse(500);
    EXPECT_EQ(listOf(a), "a+b+");
    EXPECT_EQ(listOf(b), "a+b+");
}

TEST_P(QueuePresence, AJumpOfTheClockMakesNobodySilent) {
    const auto a = server("a");
    const auto b = server("b");
    const auto user = client("user", "a");
    bed().jump(3600 * 1000);
    EXPECT_EQ(listOf(a), "a+b+");
    EXPECT_EQ(a->connectionTo("b", "")->connectionState(), ConnectionState_Connected);
    EXPECT_EQ(user->connection()->connectionState(), ConnectionState_Connected);
}

TEST_P(QueuePresence, AServerThatEndsIsNotReachableAtOnce) {
    const auto a = server("a");
    auto b = server("b");
    b.reset();
    EXPECT_EQ(listOf(a), "a+b-");
}

TEST_P(QueuePresence, ACutLinkIsSeenAtOnceByBothEndsAndByNobodyElse) {
    const auto a = server("a");
    const auto b = server("b");
    const auto c = server("c");
    bed().cut("a", "b");
    EXPECT_EQ(listOf(a), "a+b-c+");
    EXPECT_EQ(listOf(b), "a-b+c+");
    EXPECT_EQ(listOf(c), "a+b+c+");
    bed().mend("a", "b");
    bed().elapse(500);
    EXPECT_EQ(listOf(a), "a+b+c+");
}

TEST_P(QueuePresence, TheMasterIsTheSmallestReachableReadyServer) {
    const auto b = server("b");
    EXPECT_EQ(b->masterServerId(), "b");
    const auto a0 = server("a0", false);
    EXPECT_EQ(b->masterServerId(), "b") << "a0 is not ready";
    auto a = server("a");
    EXPECT_EQ(b->masterServerId(), "a");
    EXPECT_EQ(a0->masterServerId(), "a");
    bed().hang("a");
    bed().elapse(2000);
    EXPECT_EQ(b->masterServerId(), "b");
    bed().wake("a");
    bed().elapse(500);
    EXPECT_EQ(b->masterServerId(), "a");
    a.reset();
    EXPECT_EQ(b->masterServerId(), "b");
}

TEST_P(QueuePresence, WithoutAReadyServerThereIsNoMaster) {
    const auto a = server("a", false);
    const auto b = server("b", false);
    const auto user = client("user", "a");
    EXPECT_EQ(a->masterServerId(), "");
    EXPECT_EQ(user->masterId(), "");
    EXPECT_FALSE(a->connectionToMaster(a->masterServerId()));
}

TEST_P(QueuePresence, IdsAreComparedByteForByte) {
    const auto upper = server("B");
    const auto lower = server("a");
    EXPECT_EQ(lower->masterServerId(), "B");
    TWServerInfo info;
    EXPECT_EQ(lower->getServerInfo("b", info).errorCode(), -204);
}

TEST_P(QueuePresence, AnotherSystemsServersAreNoMembers) {
    const auto a = server("a", true, "other");
    const auto b = server("b");
    EXPECT_EQ(b->masterServerId(), "b");
    EXPECT_EQ(listOf(b), "b+");
    EXPECT_EQ(listOf(b, "other"), "a+");
    TWServerInfo info;
    EXPECT_EQ(b->getServerInfo("a", info).errorCode(), -204);
    EXPECT_TRUE(b->connectionTo("a", "")) << "but it can be reached";
}

TEST_P(QueuePresence, APlainServerIsNoMemberButCanBeReached) {
    const auto a = server("a");
    const auto plain = plainServer("plain");
    EXPECT_EQ(listOf(a), "a+");
    TWServerInfo info;
    EXPECT_EQ(a->getServerInfo("plain", info).errorCode(), -204);
    ASSERT_TRUE(a->connectionTo("plain", ""));
    ASSERT_TRUE(plain->connectionTo("a", ""));
    EXPECT_FALSE(plain->connectionTo("nobody", ""));
    EXPECT_EQ(plain->myMqId(), "plain");
    serve(*plain, "topic", answering("plain here"));
    Answers answers;
    ask(a->connectionTo("plain", ""), "plain", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "plain here");
}

TEST_P(QueuePresence, AClientLearnsServersAndMasterFromItsServer) {
    const auto b = server("b");
    const auto user = client("user", "b");
    EXPECT_EQ(listOf(user), "b+");
    EXPECT_EQ(user->masterId(), "b");
    auto a = server("a");
    EXPECT_EQ(listOf(user), "a+b+");
    EXPECT_EQ(user->masterId(), "a");
    a.reset();
    bed().settle();
    EXPECT_EQ(listOf(user), "a-b+");
    EXPECT_EQ(user->masterId(), "b");
    ServerList list;
    EXPECT_EQ(user->getServerList(list).errorCode(), 0);
}

TEST_P(QueuePresence, AClientSeesAPeersSilenceAsItsServerDoes) {
    const auto a = server("a");
    const auto b = server("b");
    const auto user = client("user", "b");
    bed().hang("a");
    bed().elapse(1750);
    EXPECT_EQ(listOf(user), "a-b+");
    EXPECT_EQ(user->masterId(), "b");
}

TEST_P(QueuePresence, AClientOfAPlainServerFindsItInItsList) {
    const auto a = server("a");
    const auto plain = plainServer("plain");
    const auto user = client("user", "plain");
    EXPECT_EQ(listOf(user), "a+plain+");
    EXPECT_EQ(user->masterId(), "a");
}

TEST_P(QueuePresence, AClientWithoutAServerKnowsNothing) {
    const auto a = server("a");
    const auto user = client("user", "");
    ServerList list;
    list["before"];
    EXPECT_EQ(user->getServerList(list).errorCode(), -203);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(user->masterId(), "");
    EXPECT_FALSE(user->connection());
}

TEST_P(QueuePresence, AClientWhoseServerIsSilentKnowsNothing) {
    const auto a = server("a");
    const auto user = client("user", "a");
    bed().hang("a");
    bed().elapse(1749);
    EXPECT_EQ(listOf(user), "a+");
    bed().elapse(1);
    ServerList list;
    EXPECT_EQ(user->getServerList(list).errorCode(), -203);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(user->masterId(), "");
    EXPECT_EQ(user->connection()->connectionState(), ConnectionState_Dead);
    bed().wake("a");
    bed().elapse(500);
    EXPECT_EQ(listOf(user), "a+");
    EXPECT_EQ(user->masterId(), "a");
}

TEST_P(QueuePresence, ASilentClientsLinkIsDead) {
    const auto a = server("a");
    const auto user = client("user", "a");
    const auto link = a->connectionTo("user", "");
    ASSERT_TRUE(link);
    bed().elapse(5000);
    EXPECT_EQ(link->connectionState(), ConnectionState_Connected);
    bed().hang("user");
    bed().elapse(2000);
    EXPECT_EQ(link->connectionState(), ConnectionState_Dead);
    bed().wake("user");
    bed().elapse(500);
    EXPECT_EQ(link->connectionState(), ConnectionState_Connected);
}

TEST_P(QueuePresence, ClientsAreInNobodysList) {
    const auto a = server("a");
    const auto b = server("b");
    const auto user = client("user", "a");
    bed().elapse(1000);
    EXPECT_EQ(listOf(a), "a+b+");
    EXPECT_EQ(listOf(b), "a+b+");
}

TEST_P(QueuePresence, AServerIdMayDifferFromTheIdOnTheQueue) {
    const auto a = server("a");
    NodeOptions options;
    options.id = "queue-b";
    options.serverId = "server-b";
    options.systemId = "system";
    const auto b = server(options);
    EXPECT_EQ(b->myMqId(), "queue-b");
    EXPECT_EQ(b->mySystemNotify().serverId, "server-b");
    EXPECT_EQ(listOf(a), "a+server-b+");
    serve(*b, "topic", answering("b"));
    Answers answers;
    ASSERT_TRUE(a->connectionTo("server-b", ""));
    ask(a->connectionTo("server-b", ""), "server-b", "topic", "", answers);
    bed().settle();
    EXPECT_EQ(answers.text(), "b");
    bed().hang("queue-b");
    bed().elapse(2000);
    EXPECT_EQ(listOf(a), "a+server-b-");
}

TEST_P(QueuePresence, AReplacedServerTellsItsNewVersion) {
    const auto a = server("a");
    const auto user = client("user", "a");
    NodeOptions options;
    options.id = "b";
    options.systemId = "system";
    options.version = "1.0";
    auto b = server(options);
    b.reset();
    options.version = "2.0";
    b = server(options);
    TWServerInfo info;
    ASSERT_EQ(a->getServerInfo("b", info).errorCode(), 0);
    EXPECT_EQ(info.version, "2.0");
    EXPECT_TRUE(info.reachable);
    ServerList list;
    user->getServerList(list);
    EXPECT_EQ(list["b"].version, "2.0");
}

TEST_P(QueuePresence, TheViewOfTheClusterOutlivesItsNode) {
    auto a = server("a");
    const auto view = a->discover();
    a.reset();
    EXPECT_EQ(keys(view->getSystemServerList("system")), "a+");
}

}  // namespace
