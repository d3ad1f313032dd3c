// The frame of the message service: its life, its topics, and the routing step.
#include "VersionService.h"

#include "CatalogueEntries.h"
#include "OrvInstaller.h"
#include "RecordingNodes.h"
#include "RequestFixture.h"
#include "TWProtocol/TWProtoUser.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Access = VersionServiceAccess;
using Tarnwick::MQ::MQDispatcher;
using Tarnwick::MQ::TWServerInfo;
using Tarnwick::Protocol::TWProtoAuthUserInfo;
using Texts = std::vector<std::string>;

namespace {

constexpr int kError = 2;
constexpr char kQuery[] = "topic_upgrade_queryversion";

class ServiceFrame : public RequestFixture {
protected:
    std::shared_ptr<VersionService> makeService(const std::shared_ptr<MQDispatcher>& node) {
        return std::make_shared<VersionService>(mWorker, node, mRequest, PackageCallback(), CheckCallback());
    }
    /// A service of a process that has no catalogue.
    std::shared_ptr<VersionService> makeBareService(const std::shared_ptr<MQDispatcher>& node) {
        return std::make_shared<VersionService>(mWorker, node, std::shared_ptr<IInstaller>());
    }

    std::shared_ptr<VersionRequest> mRequest = makeRequest(std::shared_ptr<TWMQSystemServer>());
};

}  // namespace

// --- Its life

TEST_F(ServiceFrame, IsEmptyWhenMade) {
    const auto service = makeBareService(nullptr);
    Version version("1.0", 0);
    EXPECT_EQ(service->getCurrentVersion(version).errorCode(), 0);
    EXPECT_EQ(version.toString(), "");
    EXPECT_EQ(Access::downloadCache(*service), "");
    EXPECT_EQ(Access::request(*service), nullptr);
    EXPECT_EQ(Access::installerGiven(*service), nullptr);
}

TEST_F(ServiceFrame, HoldsTheRequestWeakly) {
    const auto service = makeService(nullptr);
    EXPECT_EQ(Access::request(*service), mRequest);
    mRequest.reset();
    EXPECT_EQ(Access::request(*service), nullptr);
}

TEST_F(ServiceFrame, KeepsAnInstallerThatWasGiven) {
    const auto installer = std::make_shared<OrvInstaller>(nullptr, "", VersionType_Client);
    const VersionService service(mWorker, nullptr, installer);
    EXPECT_EQ(Access::installerGiven(service), installer);
    EXPECT_EQ(Access::request(service), nullptr);
}

TEST_F(ServiceFrame, CopiesTheVersion) {
    const auto service = makeService(nullptr);
    const ErrorInfo result = service->setCurrentVersion(Version("1.2-oem3", 0));
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    Version version;
    EXPECT_EQ(service->getCurrentVersion(version).errorCode(), 0);
    EXPECT_EQ(version.toString(), "1.2-oem3");
}

TEST_F(ServiceFrame, CopiesTheCache) {
    const auto service = makeService(nullptr);
    const ErrorInfo result = service->setDownloadCache("C:\\store");
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(Access::downloadCache(*service), "C:\\store");
}

TEST_F(ServiceFrame, StartWithoutADispatcherFails) {
    const auto service = makeService(nullptr);
    const ErrorInfo result = service->start();
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
}

TEST_F(ServiceFrame, StopWithoutADispatcherSucceeds) { EXPECT_EQ(makeService(nullptr)->stop().errorCode(), 0); }

TEST_F(ServiceFrame, StartThrowsWhenNoSharedPointerOwnsIt) {
    const auto node = std::make_shared<support::RecordingServer>();
    VersionService service(mWorker, node, mRequest, {}, {});
    EXPECT_THROW(service.start(), std::bad_weak_ptr);
    EXPECT_EQ(node->count(), 0U);
}

TEST_F(ServiceFrame, StartSubscribesTheTopicsInTheirOrder) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto service = makeService(node);
    const ErrorInfo result = service->start();
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    Texts catalogue;
    for (const auto& topic : node->topicsOf(service.get())) {
        if (topic.find("query") != std::string::npos || topic.find("request") != std::string::npos ||
            topic.find("notify") != std::string::npos) {
            catalogue.push_back(topic);
        }
    }
    EXPECT_EQ(catalogue,
              (Texts{"topic_upgrade_requestversion", "topic_upgrade_requestreleasehistory",
                     "topic_upgrade_queryversion", "topic_upgrade_queryreleasehistory", "topic_upgrade_notifyupdate"}));
    for (const auto& one : node->subscriptions) {
        EXPECT_EQ(one.owner, service.get());
        EXPECT_TRUE(one.handler);
        EXPECT_FALSE(one.hasSecond);
    }
}

TEST_F(ServiceFrame, SubscribesTheSameOnEveryKindOfNode) {
    const auto client = std::make_shared<support::RecordingClient>();
    const auto server = std::make_shared<support::RecordingServer>();
    const auto system = std::make_shared<support::RecordingSystemServer>();
    const auto onClient = makeService(client);
    const auto onServer = makeService(server);
    const auto onSystem = makeService(system);
    onClient->start();
    onServer->start();
    onSystem->start();
    EXPECT_GE(client->count(), 5U);
    EXPECT_EQ(client->topicsOf(onClient.get()), server->topicsOf(onServer.get()));
    EXPECT_EQ(client->topicsOf(onClient.get()), system->topicsOf(onSystem.get()));
}

TEST_F(ServiceFrame, SecondStartSubscribesOnceMore) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto service = makeService(node);
    service->start();
    const size_t once = node->count();
    EXPECT_EQ(service->start().errorCode(), 0);
    EXPECT_EQ(node->count(), 2 * once);
}

TEST_F(ServiceFrame, StopUnsubscribesEverything) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto service = makeService(node);
    service->start();
    service->start();
    const ErrorInfo result = service->stop();
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(node->count(), 0U);
}

TEST_F(ServiceFrame, StopMayRunTwice) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto service = makeService(node);
    service->start();
    service->stop();
    EXPECT_EQ(service->stop().errorCode(), 0);
    EXPECT_EQ(node->unsubscribed, (std::vector<void*>{service.get(), service.get()}));
}

TEST_F(ServiceFrame, StartsAgainAfterAStop) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto service = makeService(node);
    service->start();
    const size_t once = node->count();
    service->stop();
    service->start();
    EXPECT_EQ(node->count(), once);
}

TEST_F(ServiceFrame, DestructorStops) {
    const auto node = std::make_shared<support::RecordingServer>();
    auto service = makeService(node);
    service->start();
    service.reset();
    EXPECT_EQ(node->count(), 0U);
}

TEST_F(ServiceFrame, SubscriptionsDoNotKeepIt) {
    const auto node = std::make_shared<support::RecordingServer>();
    auto service = makeService(node);
    service->start();
    const auto handlers = node->subscriptions;
    const std::weak_ptr<VersionService> watch = service;
    service.reset();
    EXPECT_TRUE(watch.expired());
    for (const auto& one : handlers) EXPECT_EQ(one.handler(nullptr), nullptr);
}

TEST_F(ServiceFrame, VersionAndCacheMayBeSetFromManyThreads) {
    const auto service = makeService(nullptr);
    std::vector<std::thread> threads;
    for (const char* text : {"1.0", "2.0", "3.0"}) {
        threads.emplace_back([&, text] {
            for (int round = 0; round < 100; ++round) {
                service->setCurrentVersion(Version(text, 0));
                service->setDownloadCache(text);
                Version version;
                service->getCurrentVersion(version);
                EXPECT_EQ(version.toString().size(), 3U);
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

// --- A service without a catalogue

namespace {

class ServiceWithoutRequest : public ServiceFrame, public testing::WithParamInterface<std::string> {};

}  // namespace

TEST_P(ServiceWithoutRequest, AnswersMinusOne) {
    const auto server = makeServer();
    const auto peer = makeServer("peer");
    const auto service = makeBareService(server);
    service->start();
    support::LogRecorder log;
    Asker asker(peer->connectionTo("server", ""));
    const auto body = notifyBody("1.0");
    const auto answer = asker.ask("server", GetParam(), &body);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, -1);
    EXPECT_EQ(answer->message, "");
    EXPECT_FALSE(answer->hasBody);
    EXPECT_TRUE(log.has(kError, "versionRequest empty"));
}

TEST_P(ServiceWithoutRequest, AnswersMinusOneWhenTheRequestHasGone) {
    const auto server = makeServer();
    const auto peer = makeServer("peer");
    const auto service = makeService(server);
    service->start();
    mRequest.reset();
    support::LogRecorder log;
    Asker asker(peer->connectionTo("server", ""));
    const auto answer = asker.ask("server", GetParam());
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, -1);
    EXPECT_FALSE(answer->hasBody);
    for (const auto& line : log.entries()) {
        if (line.text != "versionRequest empty") continue;
        EXPECT_EQ(line.file, "OrvUpdate/Src/VersionService");
    }
    EXPECT_TRUE(log.has(kError, "versionRequest empty"));
}

INSTANTIATE_TEST_SUITE_P(Table, ServiceWithoutRequest,
                         testing::Values("topic_upgrade_requestversion", "topic_upgrade_requestreleasehistory",
                                         "topic_upgrade_queryversion", "topic_upgrade_queryreleasehistory",
                                         "topic_upgrade_notifyupdate"),
                         [](const auto& one) { return one.param.substr(sizeof "topic_upgrade_" - 1); });

// --- The routing step, on a server of which a test says what it knows

namespace {

/// A link that notes what is passed on.
struct NotingConnection : support::FakeConnection {
    struct Forwarded {
        std::string from;
        std::string to;
        std::shared_ptr<MQMessage> message;
        bool hasUser = false;
        std::string user;
    };
    ErrorInfo forwardMessageTo(const std::string& from, const std::string& to,
                               const std::shared_ptr<MQMessage>& message,
                               const Tarnwick::Protocol::TWPacket* authen) override {
        const auto* user = dynamic_cast<const TWProtoAuthUserInfo*>(authen);
        forwarded.push_back({from, to, message, authen != nullptr, user ? user->login.user.userName : ""});
        return result;
    }
    int connectionState() override { return state; }

    int state = 4;
    ErrorInfo result;
    std::vector<Forwarded> forwarded;
};

struct KnowingServer : support::FakeSystemServer {
    ErrorInfo getServerInfo(const std::string& serverId, TWServerInfo& info) override {
        const auto found = known.find(serverId);
        if (found == known.end()) return {-204, ""};
        info = found->second;
        return {};
    }
    Tarnwick::MQ::TWProtoOrvSystemNotify_v2 mySystemNotify() override {
        Tarnwick::MQ::TWProtoOrvSystemNotify_v2 notify;
        notify.serverId = "own";
        return notify;
    }
    std::map<std::string, TWServerInfo> known;
};

class Routing : public ServiceFrame {
protected:
    Routing() { mNode->links["far"] = mLink; }

    void know(bool reachable, bool ready) {
        TWServerInfo info;
        info.reachable = reachable;
        info.ready = ready;
        mNode->known["far"] = info;
    }
    /// A request as a node receives it. @param user empty for none
    std::shared_ptr<MQMessage> received(const std::string& user = {}) {
        const auto server = makeServer();
        const auto peer = makeServer("peer");
        const Received<std::shared_ptr<MQMessage>> messages;
        server->subscribe("topic_test", this,
                          [messages](const std::shared_ptr<MQMessage>& message) {
                              messages.add(message);
                              return message->buildResponse(ErrorInfo(), nullptr);
                          },
                          {});
        TWProtoAuthUserInfo record;
        record.login.user.userName = user;
        Asker asker(peer->connectionTo("server", ""));
        asker.send("server", "topic_test", nullptr, user.empty() ? nullptr : &record);
        return messages.first().value_or(nullptr);
    }
    std::shared_ptr<MQMessage> route(const std::string& target, const std::shared_ptr<MQMessage>& message) {
        return Access::routeToTarget(*mService, target, message);
    }
    int codeTo(const std::string& target) {
        const auto outcome = route(target, received());
        return outcome ? static_cast<int>(outcome->errorInfo().errorCode()) : 99;
    }

    const std::shared_ptr<KnowingServer> mNode = std::make_shared<KnowingServer>();
    const std::shared_ptr<NotingConnection> mLink = std::make_shared<NotingConnection>();
    const std::shared_ptr<VersionService> mService = makeService(mNode);
};

}  // namespace

TEST_F(Routing, ServesAnEmptyTargetHere) { EXPECT_EQ(route("", received()), nullptr); }

TEST_F(Routing, ServesTheOwnServerIdHere) { EXPECT_EQ(route("own", received()), nullptr); }

TEST_F(Routing, ServesAnyTargetHereOnAClient) {
    const auto service = makeService(std::make_shared<support::FakeClient>());
    EXPECT_EQ(Access::routeToTarget(*service, "far", received()), nullptr);
}

TEST_F(Routing, ServesAnyTargetHereOnAPlainServer) {
    const auto service = makeService(std::make_shared<support::FakeServer>());
    EXPECT_EQ(Access::routeToTarget(*service, "far", received()), nullptr);
}

TEST_F(Routing, RefusesAServerThatIsNotReachable) {
    know(false, true);
    EXPECT_EQ(codeTo("far"), -425);
    EXPECT_TRUE(mLink->forwarded.empty());
}

TEST_F(Routing, RefusesAServerThatIsNotReady) {
    know(true, false);
    EXPECT_EQ(codeTo("far"), -426);
    EXPECT_TRUE(mLink->forwarded.empty());
}

TEST_F(Routing, TellsNotReachableBeforeNotReady) {
    know(false, false);
    EXPECT_EQ(codeTo("far"), -425);
}

TEST_F(Routing, TellsNotReachableBeforeALostLink) {
    know(false, true);
    mNode->links.clear();
    EXPECT_EQ(codeTo("far"), -425);
}

TEST_F(Routing, RefusesAServerWithoutALink) {
    know(true, true);
    mNode->links.clear();
    EXPECT_EQ(codeTo("far"), -203);
}

TEST_F(Routing, RefusesAServerWithADeadLink) {
    know(true, true);
    mLink->state = 6;
    EXPECT_EQ(codeTo("far"), -203);
    EXPECT_TRUE(mLink->forwarded.empty());
}

TEST_F(Routing, RefusesAnUnknownServerWithoutALink) { EXPECT_EQ(codeTo("nowhere"), -203); }

TEST_F(Routing, RefusesAnUnknownServerWithADeadLink) {
    mLink->state = 6;
    EXPECT_EQ(codeTo("far"), -203);
}

TEST_F(Routing, RefusalsHaveNoMessageAndNoBody) {
    know(false, true);
    const auto outcome = route("far", received());
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->errorInfo().errorMessage(), "");
    Tarnwick::Protocol::TWProtoUpgradePkt packet;
    EXPECT_FALSE(outcome->parseBody(&packet, false));
}

TEST_F(Routing, PassesOnToAServerThatIsReady) {
    know(true, true);
    const auto message = received();
    const auto outcome = route("far", message);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->errorInfo().errorCode(), 0);
    ASSERT_EQ(mLink->forwarded.size(), 1U);
    EXPECT_EQ(mLink->forwarded[0].from, "own");
    EXPECT_EQ(mLink->forwarded[0].to, "far");
    EXPECT_EQ(mLink->forwarded[0].message, message);
}

TEST_F(Routing, PassesOnToAnUnknownServerWithAUsableLink) {
    EXPECT_EQ(codeTo("far"), 0);
    EXPECT_EQ(mLink->forwarded.size(), 1U);
}

TEST_F(Routing, LinkInAnyStateButDeadIsUsable) {
    mLink->state = 0;
    EXPECT_EQ(codeTo("far"), 0);
    mLink->state = 5;
    EXPECT_EQ(codeTo("far"), 0);
    EXPECT_EQ(mLink->forwarded.size(), 2U);
}

TEST_F(Routing, AsksForTheLinkWithAnEmptyRoute) {
    codeTo("far");
    EXPECT_EQ(mNode->asked, (std::vector<std::pair<std::string, std::string>>{{"far", ""}}));
}

TEST_F(Routing, IgnoresWhatThePassingOnGives) {
    mLink->result = ErrorInfo(-203, "");
    EXPECT_EQ(codeTo("far"), 0);
}

TEST_F(Routing, PassesTheUserOn) {
    route("far", received("operator"));
    ASSERT_EQ(mLink->forwarded.size(), 1U);
    EXPECT_TRUE(mLink->forwarded[0].hasUser);
    EXPECT_EQ(mLink->forwarded[0].user, "operator");
}

TEST_F(Routing, PassesNoUserOnWhereThereIsNone) {
    route("far", received());
    ASSERT_EQ(mLink->forwarded.size(), 1U);
    EXPECT_FALSE(mLink->forwarded[0].hasUser);
}

// --- The routing step in a cluster

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
        while (!done) mAsker.send("server", kQuery);
    });
    for (int round = 0; round < 50; ++round) {
        mService->stop();
        mService->start();
    }
    done = true;
    asking.join();
    EXPECT_EQ(servedBy(Asker(mClient->connection()).ask("server", kQuery)), kServer);
}
