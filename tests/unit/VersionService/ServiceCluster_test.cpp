// The routing step in a cluster.
#include "CatalogueEntries.h"
#include "ServiceFixture.h"
#include "TWProtocol/TWProtoUser.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Tarnwick::MQ::MQDispatcher;
using Tarnwick::MQ::TWServerInfo;
using Tarnwick::Protocol::TWProtoAuthUserInfo;
using Texts = std::vector<std::string>;

namespace {

/// A client of "server", and a second server "far", each with a service on a catalogue that lists the node's number.
class ServiceCluster : public ServiceFrame {
protected:
    static constexpr char kServer[] = "1.0";
    static constexpr char kFar[] = "2.0";
    static constexpr char kOther[] = "3.0";

    ServiceCluster() {
        mService->start();
        mFarService->start();
    }
    std::shared_ptr<VersionService> makeServiceOf(const std::shared_ptr<MQDispatcher>& node, const char* number) {
        mRequests.push_back(makeRequest(std::shared_ptr<TWMQSystemServer>()));
        mRequests.back()->addVersion(support::entry(number));
        return std::make_shared<VersionService>(mWorker, node, mRequests.back(), PackageCallback(), CheckCallback());
    }
    /// The number of the node whose catalogue this is.
    static std::string servedBy(const std::string& body) {
        VersionSet listed;
        OrvVersion::parseVersion(nullptr, body, "", listed, "", Version());
        return listed.size() == 1 ? (*listed.begin())->getVersion().toString() : "nobody";
    }
    static std::string servedBy(const std::optional<QueueAnswer>& answer) {
        return answer && answer->code == 0 ? servedBy(answer->body) : "nobody";
    }
    std::string servedForwarded(const std::string& via, const std::string& to) {
        const Received<std::string> nodes;
        mClient->connection()->pushSessionMessageRequestForwardTo(
            via, to, kQuery, nullptr, "", {},
            [nodes](const std::shared_ptr<MQMessage>& message) {
                Tarnwick::Protocol::TWProtoUpgradePkt packet;
                message->parseBody(&packet, false);
                nodes.add(servedBy(packet.body));
            },
            60000);
        return nodes.first().value_or("no answer");
    }
    /// Waits until "server" knows "far" like this.
    bool knows(bool reachable, bool ready) {
        return support::eventually([&] {
            TWServerInfo info;
            return !mServer->getServerInfo("far", info) && info.reachable == reachable && info.ready == ready;
        });
    }

    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQSystemServer> mFar = makeServer("far");
    std::shared_ptr<TWMQClient> mClient = makeClient();
    std::vector<std::shared_ptr<VersionRequest>> mRequests;
    std::shared_ptr<VersionService> mService = makeServiceOf(mServer, kServer);
    std::shared_ptr<VersionService> mFarService = makeServiceOf(mFar, kFar);
    Asker mAsker{mClient->connection()};
};

}  // namespace

TEST_F(ServiceCluster, AnswersARequestToItsOwnId) { EXPECT_EQ(servedBy(mAsker.ask("server", kQuery)), kServer); }

TEST_F(ServiceCluster, FarNodeAnswersTheFirstSenderOnce) {
    ASSERT_TRUE(knows(true, true));
    EXPECT_EQ(servedBy(mAsker.ask("far", kQuery)), kFar);
    EXPECT_EQ(servedBy(mAsker.ask("server", kQuery)), kServer);
    EXPECT_EQ(mAsker.answers().count(), 2U);
}

TEST_F(ServiceCluster, TargetOfAForwardedRequestComesBeforeItsAddressee) {
    ASSERT_TRUE(knows(true, true));
    EXPECT_EQ(servedForwarded("server", "far"), kFar);
}

TEST_F(ServiceCluster, RequestForwardedToItselfIsServedHere) {
    EXPECT_EQ(servedForwarded("server", "server"), kServer);
}

TEST_F(ServiceCluster, RequestToAServerThatHasLeftIsRefused) {
    ASSERT_TRUE(knows(true, true));
    mFarService.reset();
    mFar.reset();
    ASSERT_TRUE(knows(false, true));
    const auto answer = mAsker.ask("far", kQuery);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, -425);
}

TEST_F(ServiceCluster, RequestToAServerThatIsNotReadyIsRefused) {
    mFarService.reset();
    mFar.reset();
    auto busy = options("far");
    busy.ready = false;
    mFar = TWMQSystemServer::create(mBus, busy);
    ASSERT_TRUE(knows(true, false));
    const auto answer = mAsker.ask("far", kQuery);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, -426);
}

TEST_F(ServiceCluster, RequestToANodeThatNobodyKnowsIsRefused) {
    const auto answer = mAsker.ask("nobody", kQuery);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, -203);
}

TEST_F(ServiceCluster, RequestToANodeOutsideTheClusterIsPassedOn) {
    const auto outside = TWMQServer::create(mBus, options("outside"));
    const auto service = makeServiceOf(outside, kOther);
    service->start();
    TWServerInfo info;
    ASSERT_EQ(mServer->getServerInfo("outside", info).errorCode(), -204);
    EXPECT_EQ(servedBy(mAsker.ask("outside", kQuery)), kOther);
}

TEST_F(ServiceCluster, PlainServerServesWhateverTheAddressee) {
    const auto plain = TWMQServer::create(mBus, options("plain"));
    const auto service = makeServiceOf(plain, kOther);
    service->start();
    Asker asker(mServer->connectionTo("plain", ""));
    EXPECT_EQ(servedBy(asker.ask("far", kQuery)), kOther);
}

TEST_F(ServiceCluster, ClientServesWhateverTheAddressee) {
    const auto service = makeServiceOf(mClient, kOther);
    service->start();
    Asker asker(mServer->connectionTo("client", ""));
    EXPECT_EQ(servedBy(asker.ask("far", kQuery)), kOther);
}

TEST_F(ServiceCluster, PassesTheUserOnToTheFarNode) {
    ASSERT_TRUE(knows(true, true));
    mFarService->stop();
    const Received<std::string> users;
    int owner = 0;
    mFar->subscribe(kQuery, &owner,
                    [users](const std::shared_ptr<MQMessage>& message) {
                        TWProtoAuthUserInfo record;
                        users.add(message->parseUserAuthen(&record, false) ? record.login.user.userName : "none");
                        return message->buildResponse(ErrorInfo(), nullptr);
                    },
                    {});
    TWProtoAuthUserInfo record;
    record.login.user.userName = "operator";
    mAsker.send("far", kQuery, nullptr, &record);
    ASSERT_TRUE(users.waitFor(1));
    mAsker.send("far", kQuery);
    ASSERT_TRUE(users.waitFor(2));
    EXPECT_EQ(users.values(), (Texts{"operator", "none"}));
    mFar->unsubcribe(&owner);
}

TEST_F(ServiceCluster, ManyRequestsAtOnceAreAllAnswered) {
    ASSERT_TRUE(knows(true, true));
    for (int count = 0; count < 40; ++count) EXPECT_NE(mAsker.send(count % 2 == 0 ? "far" : "server", kQuery), 0U);
    ASSERT_TRUE(mAsker.answers().waitFor(40));
    for (const auto& answer : mAsker.answers().values()) EXPECT_EQ(answer.code, 0);
}

TEST_F(ServiceCluster, StartedTwiceAnswersOnce) {
    mService->start();
    ASSERT_TRUE(mAsker.ask("server", kQuery));
    ASSERT_TRUE(mAsker.ask("server", kQuery));
    EXPECT_EQ(mAsker.answers().count(), 2U);
}

TEST_F(ServiceCluster, MayStopAndStartWhileRequestsCome) {
    std::atomic<bool> done{false};
    std::thread asking([&] {
        // As many as are under way at once anywhere; more would only wait behind each other.
        constexpr size_t kUnderWay = 50;
        for (size_t sent = 0; !done;) {
            if (sent < mAsker.answers().count() + kUnderWay) {
                sent += mAsker.send("server", kQuery) != 0 ? 1 : 0;
            } else {
                std::this_thread::yield();
            }
        }
    });
    for (int round = 0; round < 50; ++round) {
        mService->stop();
        mService->start();
    }
    done = true;
    asking.join();
    EXPECT_EQ(servedBy(Asker(mClient->connection()).ask("server", kQuery)), kServer);
}
