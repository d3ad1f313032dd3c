// Requests to the nodes of a cluster, each a real node with its service, over the queue.
#include "ClusterFixture.h"
#include "MQ/EmbeddedBus.h"
#include "ManualClock.h"

using namespace Tarnwick::OrvUpdate;
using support::entry;
using support::Received;
using support::UpdateCloud;
using Tarnwick::MQ::EmbeddedBus;
using Tarnwick::MQ::ServerList;

namespace {

/// Three servers, of which each holds one version and one note, and a client of the first.
class ClusterNodes : public RequestFixture {
protected:
    using Texts = std::vector<std::string>;

    struct Server {
        std::shared_ptr<TWMQSystemServer> node;
        std::shared_ptr<VersionRequest> request;
    };

    ClusterNodes() {
        addServer("s1", "1.0");
        addServer("s2", "2.0");
        addServer("s3", "3.0");
        startAt(*mRequest);
    }
    ~ClusterNodes() override {
        mRequest.reset();
        mServers.clear();
        mClient.reset();
        bus().settle();
    }
    void addServer(const std::string& id, const char* version, bool ready = true) {
        auto node = options(id);
        node.ready = ready;
        Server server{TWMQSystemServer::create(mBus, node), nullptr};
        server.request = makeRequest(server.node);
        server.request->addVersion(entry(version, 1));
        server.request->addReleaseHistory(notesOf(support::noteRecord(version, "of " + id)));
        startAt(*server.request);
        mServers[id] = server;
    }
    /// Waits until the client, through its server, sees that many reachable servers.
    bool meets(size_t count) {
        return support::eventually([&] {
            mClock.advance(100);
            bus().settle();
            ServerList list;
            mClient->getServerList(list);
            return static_cast<size_t>(std::count_if(
                       list.begin(), list.end(), [](const auto& server) { return server.second.reachable; })) == count;
        });
    }
    EmbeddedBus& bus() { return static_cast<EmbeddedBus&>(*mBus); }
    void elapse(unsigned milliseconds) {
        for (unsigned passed = 0; passed < milliseconds; passed += 250) {
            mClock.advance(250);
            bus().settle();
        }
    }
    /// What was heard, in the order of the nodes; the order of arrival is the network's.
    static HeardList sorted(HeardList calls) {
        std::sort(calls.begin(), calls.end(), [](const Heard& left, const Heard& right) {
            return std::tie(left.last, left.node) < std::tie(right.last, right.node);
        });
        return calls;
    }
    Texts versions() const { return support::versionTexts(mRequest->getVersions()); }
    Texts notes() const { return noteTexts(mRequest->getReleaseHistory()); }

    support::ManualClock mClock;
    UpdateCloud mCloud;
    std::map<std::string, Server> mServers;
    std::shared_ptr<TWMQClient> mClient = makeClient("client", "s1");
    std::shared_ptr<VersionRequest> mRequest = makeRequest(mClient);
    Received<Heard> mHeard;
};

}  // namespace

TEST_F(ClusterNodes, QueryOfAClientGathersTheVersionsOfAllServers) {
    ASSERT_TRUE(meets(3));
    EXPECT_EQ(mRequest->querySystemVersion(into(mHeard)).errorCode(), 0);
    ASSERT_TRUE(mHeard.waitFor(3));
    const auto calls = mHeard.values();
    EXPECT_TRUE(calls.back().last);
    std::set<std::string> nodes;
    for (const auto& call : calls) nodes.insert(call.node);
    EXPECT_EQ(nodes, (std::set<std::string>{"s1", "s2", "s3"}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "3.0"}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterNodes, RequestOfAClientMakesEveryNodeAskTheCloud) {
    mCloud.versions("[" + support::cloudRecord("9.0", "http://a") + "]");
    const Received<std::string> listeners;
    for (auto& [id, server] : mServers) {
        server.request->registerVersionRequestNotify([listeners, name = id] { listeners.add(name); });
    }
    ASSERT_TRUE(meets(3));
    mRequest->requestVersion(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(4));
    EXPECT_EQ(sorted(mHeard.values()),
              (HeardList{{"s1", 0, false}, {"s2", 0, false}, {"s3", 0, false}, {"", 0, true}}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "3.0", "9.0"}));
    for (const auto& [id, server] : mServers) {
        EXPECT_EQ(server.request->getVersions().size(), 2U) << id;
    }
    EXPECT_EQ(mCloud.requests().size(), 4U);
    ASSERT_TRUE(listeners.waitFor());
    bus().settle();
    EXPECT_EQ(listeners.values(), Texts{"s1"});  // that of its own server alone
}

TEST_F(ClusterNodes, ServersReportTheClientsVersionToTheCloud) {
    ASSERT_TRUE(meets(3));
    mRequest->setRequestVersion(Version("4.4", 0));
    mRequest->requestVersion(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(4));
    for (const auto& request : mCloud.requests()) {
        EXPECT_NE(request.target.find("&softversion=4.4&"), std::string::npos) << request.target;
    }
}

TEST_F(ClusterNodes, CloudsFailureAtAServerComesWithThatServersVersions) {
    mCloud.versions("", 500);
    ASSERT_TRUE(meets(3));
    mRequest->requestVersion(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(4));
    EXPECT_EQ(sorted(mHeard.values()),
              (HeardList{{"s1", -304, false}, {"s2", -304, false}, {"s3", -304, false}, {"", -304, true}}));
    EXPECT_EQ(versions(), Texts());  // the body of a failure is not read
}

TEST_F(ClusterNodes, NotesOfAClientsQueryComeFromAllServers) {
    ASSERT_TRUE(meets(3));
    mRequest->queryReleaseHistory(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(3));
    EXPECT_TRUE(mHeard.values().back().last);
    EXPECT_EQ(notes(), (Texts{"1.0 of s1", "2.0 of s2", "3.0 of s3"}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterNodes, NotesOfAServersRequestComeFromAllServersItselfIncluded) {
    mCloud.notes(support::noteList(support::noteRecord("9.0", "of the cloud")));
    ASSERT_TRUE(meets(3));
    mServers["s2"].request->requestReleaseHistory(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(4));
    EXPECT_EQ(sorted(mHeard.values()),
              (HeardList{{"s1", 0, false}, {"s2", 0, false}, {"s3", 0, false}, {"", 0, true}}));
    for (const auto& [id, server] : mServers) {
        EXPECT_EQ(noteTexts(server.request->getReleaseHistory()), Texts{"9.0 of the cloud"}) << id;
    }
    EXPECT_EQ(mCloud.requests().size(), 4U);
}

TEST_F(ClusterNodes, QueryOfAServerReachesTheServersThatItNames) {
    ASSERT_TRUE(meets(3));
    ServerList named;
    mClient->getServerList(named);
    named["nobody"].serverId = "nobody";
    mServers["s1"].request->querySystemVersion(named, into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(4));
    auto calls = mHeard.values();
    for (auto& call : calls) call.last = false;
    EXPECT_EQ(sorted(calls), (HeardList{{"", 0, false}, {"s1", 0, false}, {"s2", 0, false}, {"s3", 0, false}}));
    EXPECT_EQ(support::versionTexts(mServers["s1"].request->getVersions()), (Texts{"1.0", "2.0", "3.0"}));
}

TEST_F(ClusterNodes, ServerBehindACutLinkIsReportedByTheServerInBetween) {
    ASSERT_TRUE(meets(3));
    bus().cutLink("s1", "s2");
    bus().settle();
    mRequest->querySystemVersion(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(3));
    auto calls = mHeard.values();
    for (auto& call : calls) call.last = false;
    EXPECT_EQ(sorted(calls), (HeardList{{"s1", 0, false}, {"s2", -425, false}, {"s3", 0, false}}));
    EXPECT_EQ(versions(), (Texts{"1.0", "3.0"}));
}

TEST_F(ClusterNodes, ServerThatIsNotReadyIsReportedByTheServerInBetween) {
    addServer("s4", "4.0", false);
    ASSERT_TRUE(meets(4));
    mRequest->querySystemVersion(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(4));
    auto calls = mHeard.values();
    for (auto& call : calls) call.last = false;
    EXPECT_EQ(sorted(calls).back(), (Heard{"s4", -426, false}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "3.0"}));
}

TEST_F(ClusterNodes, ServerThatHangsIsReportedAfterAMinute) {
    ASSERT_TRUE(meets(3));
    bus().stopNode("s3");
    mRequest->querySystemVersion(into(mHeard));
    bus().settle();
    ASSERT_TRUE(mHeard.waitFor(2));
    elapse(59000);
    EXPECT_EQ(mHeard.count(), 2U);
    elapse(1500);
    ASSERT_TRUE(mHeard.waitFor(3));
    EXPECT_EQ(mHeard.values().back(), (Heard{"s3", -202, true}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0"}));
}

TEST_F(ClusterNodes, ClientWhoseServerHasGoneKnowsNoNodes) {
    ASSERT_TRUE(meets(3));
    mRequest->addVersion(entry("8.0", 3));
    mServers.erase("s1");
    bus().settle();
    mRequest->querySystemVersion(into(mHeard));
    EXPECT_EQ(mHeard.values(), (HeardList{{"", 0, true}}));
    EXPECT_EQ(versions(), Texts());
    mRequest->queryReleaseHistory(into(mHeard));
    EXPECT_EQ(mHeard.values().back(), (Heard{"", -1, true}));
}

TEST_F(ClusterNodes, ClientWhoseServerHasGoneLeavesNamedNodesOpen) {
    ASSERT_TRUE(meets(3));
    mServers.erase("s1");
    bus().settle();
    mRequest->setOtherNodes({"s2"});
    mRequest->querySystemVersion(into(mHeard));  // the dead link refuses the request
    elapse(61000);
    EXPECT_EQ(mHeard.count(), 0U);
}

TEST_F(ClusterNodes, ServerWhoseLinkIsCutWhileItIsAskedIsReportedAtOnce) {
    ASSERT_TRUE(meets(3));
    mCloud.hold(UpdateCloud::kVersions);
    const Received<Heard> heard;
    VersionRequestAccess::askForVersions(*mServers["s1"].request, "topic_upgrade_requestversion", {"s2"}, into(heard));
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    bus().cutLink("s1", "s2");
    ASSERT_TRUE(heard.waitFor());
    EXPECT_EQ(heard.values().front(), (Heard{"s2", -203, false}));
    mCloud.release(UpdateCloud::kVersions);
    ASSERT_TRUE(heard.waitFor(2));
    EXPECT_EQ(heard.values().back(), (Heard{"", 0, true}));
}

TEST_F(ClusterNodes, ServerThatItsHostDropsWhileItIsAskedStillAnswersWhenTheCloudHas) {
    ASSERT_TRUE(meets(3));
    mCloud.hold(UpdateCloud::kVersions);
    const Received<Heard> heard;
    VersionRequestAccess::askForVersions(*mServers["s1"].request, "topic_upgrade_requestversion", {"s2"}, into(heard));
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    mServers.erase("s2");
    mCloud.release(UpdateCloud::kVersions);
    ASSERT_TRUE(heard.waitFor(2));
    EXPECT_EQ(heard.values(), (HeardList{{"s2", 0, false}, {"", 0, true}}));
}

TEST_F(ClusterNodes, TwoClientsAtOnceBothComeToTheirEnd) {
    const auto other = makeClient("other", "s2");
    const auto otherRequest = makeRequest(other);
    startAt(*otherRequest);
    mCloud.versions("[" + support::cloudRecord("9.0", "http://a") + "]");
    ASSERT_TRUE(meets(3));
    ASSERT_TRUE(support::eventually([&] {
        mClock.advance(100);
        bus().settle();
        ServerList list;
        other->getServerList(list);
        return list.size() == 3;
    }));
    const Received<Heard> heard;
    mRequest->requestVersion(into(mHeard));
    otherRequest->requestVersion(into(heard));
    ASSERT_TRUE(mHeard.waitFor(4));
    ASSERT_TRUE(heard.waitFor(4));
    EXPECT_EQ(mHeard.values().back(), (Heard{"", 0, true}));
    EXPECT_EQ(heard.values().back(), (Heard{"", 0, true}));
    for (const auto& [id, server] : mServers) EXPECT_EQ(server.request->getVersions().size(), 2U) << id;
}

TEST_F(ClusterNodes, DuplicatedAndReorderedFramesReportEachNodeOnce) {
    ASSERT_TRUE(meets(3));
    Tarnwick::MQ::LinkFaults faults;
    faults.duplicate = 0.5;
    faults.reorder = 0.5;
    bus().setFaults(faults, 7);
    for (int round = 0; round < 10; ++round) {
        const Received<Heard> heard;
        mRequest->querySystemVersion(into(heard));
        ASSERT_TRUE(support::eventually([&] {
            mClock.advance(50);
            bus().settle();
            return heard.count() >= 3;
        }));
        auto calls = heard.values();
        EXPECT_TRUE(calls.back().last);
        for (auto& call : calls) call.last = false;
        EXPECT_EQ(sorted(calls), (HeardList{{"s1", 0, false}, {"s2", 0, false}, {"s3", 0, false}}));
    }
}

TEST_F(ClusterNodes, RequestMayGoWhileItsAnswersCome) {
    ASSERT_TRUE(meets(3));
    for (int round = 0; round < 30; ++round) {
        const auto request = makeRequest(mClient);
        const Received<Heard> heard;
        request->querySystemVersion(into(heard));
        if (round % 2 == 0) heard.waitFor();
        EXPECT_LE(heard.count(), 3U);
    }
    bus().settle();
}

TEST_F(ClusterNodes, HandlerThatLiesDoesNotHarmTheOthersAnswers) {
    ASSERT_TRUE(meets(3));
    mServers["s2"].request->stop();
    int owner = 0;
    mServers["s2"].node->subscribe("topic_upgrade_queryversion", &owner,
                                   [](const std::shared_ptr<MQMessage>& message) {
                                       return message->buildResponse(ErrorInfo(), notifyBody("not a packet"));
                                   },
                                   {});
    mRequest->querySystemVersion(into(mHeard));
    ASSERT_TRUE(mHeard.waitFor(3));
    EXPECT_EQ(versions(), (Texts{"1.0", "3.0"}));
    mServers["s2"].node->unsubcribe(&owner);
}
