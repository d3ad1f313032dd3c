// Asking the nodes of a cluster for their versions.
#include "ClusterFixture.h"
#include "GbkTexts.h"

using namespace Tarnwick::OrvUpdate;
using support::cloudRecord;
using support::entry;
using support::UpdateCloud;
using Access = VersionRequestAccess;

namespace {

constexpr char kRequest[] = "topic_upgrade_requestversion";
constexpr char kQuery[] = "topic_upgrade_queryversion";

class ClusterVersions : public ClusterFixture {
protected:
    /// One entry from this disk, one from the cloud and one from a node.
    void fillCatalogue() {
        mRequest->addVersion(entry("1.0", 1));
        mRequest->addVersion(entry("2.0", 2));
        mRequest->addVersion(entry("3.0", 3));
    }
    void query(const Nodes& nodes) {
        know(nodes);
        mRequest->querySystemVersion(into(mHeard));
    }
    void request(const Nodes& nodes) {
        know(nodes);
        mRequest->requestVersion(into(mHeard));
    }
    std::shared_ptr<IVersion> theOnly() const {
        const auto set = mRequest->getVersions();
        EXPECT_EQ(set.size(), 1U);
        return set.empty() ? nullptr : *set.begin();
    }
};

}  // namespace

// --- What the nodes tell

TEST_F(ClusterVersions, AnswersBecomeEntriesLearntFromNodes) {
    query({"a"});
    answer("a", versionDocument({"5.0"}));
    ASSERT_EQ(versions(), Texts{"5.0"});
    EXPECT_EQ(theOnly()->getStoragePosition(), StoragePosition_Node);
}

TEST_F(ClusterVersions, AnswersOfAllNodesAreMerged) {
    query({"a", "b"});
    answer("a", versionDocument({"5.0", "6.0"}));
    answer("b", versionDocument({"6.0", "7.0"}));
    EXPECT_EQ(versions(), (Texts{"5.0", "6.0", "7.0"}));
}

TEST_F(ClusterVersions, FirstNodeToTellAVersionHoldsIt) {
    const auto held = [](const char* server) {
        JsonValue document;
        document.append(entry("5.0", 1)->buildVersionInfo());
        document[size_t{0}]["serverid"] = server;
        return document.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
    };
    query({"a", "b"});
    answer("b", held("b"));
    answer("a", held("a"));
    EXPECT_EQ(theOnly()->getServerid(), "b");
}

TEST_F(ClusterVersions, ServerIdIsTheOneOfTheDocumentNotOfTheNodeThatAnswered) {
    JsonValue document = entry("5.0", 1)->buildVersionInfo();
    document["serverid"] = "elsewhere";
    query({"a"});
    answer("a", document.toStyledString(Public::Base::WriteStyle_Indented).toStdString());
    EXPECT_EQ(theOnly()->getServerid(), "elsewhere");
}

TEST_F(ClusterVersions, EntriesLearntFromNodesAreReplacedAndNoOthers) {
    fillCatalogue();
    query({"a"});
    answer("a", versionDocument({"5.0"}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "5.0"}));
}

TEST_F(ClusterVersions, NothingChangesBeforeTheLastAnswer) {
    fillCatalogue();
    query({"a", "b"});
    answer("a", versionDocument({"5.0"}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "3.0"}));
    answer("b", versionDocument({"6.0"}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "5.0", "6.0"}));
}

TEST_F(ClusterVersions, CatalogueIsUpToDateInTheLastCall) {
    know({"a"});
    Texts seen;
    mRequest->querySystemVersion([&](const std::string&, const ErrorInfo&, bool) { seen = versions(); });
    answer("a", versionDocument({"5.0"}));
    EXPECT_EQ(seen, Texts{"5.0"});
}

TEST_F(ClusterVersions, WhenEveryNodeFailedTheEntriesLearntFromNodesGo) {
    fillCatalogue();
    query({"a", "b"});
    fail("a", -202);
    fail("b", -203);
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0"}));
    EXPECT_EQ(heard(), (HeardList{{"a", -202, false}, {"b", -203, true}}));
}

TEST_F(ClusterVersions, WhenNoNodeHasAConnectionTheEntriesLearntFromNodesGo) {
    fillCatalogue();
    mClient->link = nullptr;
    query({"a"});
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0"}));
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
}

TEST_F(ClusterVersions, BodyOfAnAnswerWithAnErrorIsNotRead) {
    query({"a"});
    Tarnwick::Protocol::TWProtoUpgradePkt packet;
    packet.body = versionDocument({"5.0"});
    mLink->to("a").answer(ErrorInfo(-105, ""), &packet);
    EXPECT_EQ(versions(), Texts());
}

TEST_F(ClusterVersions, OpenBroadcastChangesNothing) {
    fillCatalogue();
    mLink->refused = {"b"};
    query({"a", "b"});
    answer("a", versionDocument({"5.0"}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "3.0"}));
}

// --- No nodes

TEST_F(ClusterVersions, QueryWithoutNodesForgetsWhatIsNotOnThisDisk) {
    fillCatalogue();
    query({});
    EXPECT_EQ(versions(), Texts{"1.0"});
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
}

TEST_F(ClusterVersions, RequestWithoutNodesForgetsWhatIsNotOnThisDiskAndAsksNoCloud) {
    fillCatalogue();
    request({});
    EXPECT_EQ(versions(), Texts{"1.0"});
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterVersions, RequestWithoutNodesIsHeardOnTheCallersThread) {
    request({});
    ASSERT_EQ(heard().size(), 1U);
    EXPECT_EQ(heard().front().thread, std::this_thread::get_id());
}

// --- The cloud behind the nodes

TEST_F(ClusterVersions, RequestToTwoNodesIsHeardThreeTimes) {
    request({"a", "b"});
    answer("a");
    answer("b");
    EXPECT_EQ(heardOf(3), (HeardList{{"a", 0, false}, {"b", 0, false}, {"", 0, true}}));
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

TEST_F(ClusterVersions, RequestAsksTheCloudAfterTheLastNodeAlone) {
    request({"a", "b"});
    answer("a");
    EXPECT_TRUE(mCloud.requests().empty());
    mCloud.hold(UpdateCloud::kVersions);
    answer("b");
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}, {"b", 0, false}}));
    mCloud.release(UpdateCloud::kVersions);
    EXPECT_EQ(heardOf(3).back(), (Heard{"", 0, true}));
}

TEST_F(ClusterVersions, RequestAsksTheCloudAlsoWhenNoNodeHasAConnection) {
    mClient->link = nullptr;
    mCloud.versions("[" + cloudRecord("5.0", "http://a") + "]");
    request({"a", "b"});
    EXPECT_EQ(heardOf(3), (HeardList{{"", 0, false}, {"", 0, false}, {"", 0, true}}));
    EXPECT_EQ(versions(), Texts{"5.0"});
}

TEST_F(ClusterVersions, RequestKeepsWhatNodesAndCloudTell) {
    mCloud.versions("[" + cloudRecord("6.0", "http://a") + "]");
    request({"a"});
    answer("a", versionDocument({"5.0"}));
    heardOf(2);
    EXPECT_EQ(versions(), (Texts{"5.0", "6.0"}));
}

TEST_F(ClusterVersions, CloudsEntryTakesThePlaceOfTheSameVersionOfANode) {
    mCloud.versions("[" + cloudRecord("5.0", "http://a") + "]");
    request({"a"});
    answer("a", versionDocument({"5.0"}));
    heardOf(2);
    EXPECT_EQ(theOnly()->getStoragePosition(), StoragePosition_Cloud);
}

TEST_F(ClusterVersions, CloudsFailureIsInTheLastCallAlone) {
    mCloud.versions("", 401);
    request({"a"});
    answer("a", versionDocument({"5.0"}));
    const auto calls = heardOf(2);
    EXPECT_EQ(calls, (HeardList{{"a", 0, false}, {"", -105, true}}));
    EXPECT_EQ(calls.back().message, kTextAuthFailed);
    EXPECT_EQ(versions(), Texts{"5.0"});
}

TEST_F(ClusterVersions, CloudsAnswerToARequestThatHasGoneIsNotHeard) {
    mCloud.hold(UpdateCloud::kVersions);
    request({"a"});
    answer("a");
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    mLink->forget();
    std::weak_ptr<VersionRequest> weak = mRequest;
    mRequest.reset();
    mCloud.release(UpdateCloud::kVersions);
    ASSERT_TRUE(support::eventually([&] { return weak.expired(); }));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}}));
}

TEST_F(ClusterVersions, QueryAsksNoCloud) {
    query({"a"});
    answer("a");
    EXPECT_EQ(heard(), (HeardList{{"a", 0, true}}));
    EXPECT_TRUE(mCloud.requests().empty());
}

// --- Named servers

TEST_F(ClusterVersions, QueryOfNamedServersAsksThoseAlone) {
    know({"a", "b", "c"});
    EXPECT_EQ(mRequest->querySystemVersion(support::serverList({"c", "b"}), into(mHeard)).errorCode(), 0);
    EXPECT_EQ(mLink->asked(), (Nodes{"b", "c"}));
    EXPECT_EQ(mLink->to("b").topic, kQuery);
}

TEST_F(ClusterVersions, QueryOfNamedServersAsksTheHostsNodesToo) {
    mRequest->setOtherNodes({"x"});
    mRequest->querySystemVersion(support::serverList({"a"}), into(mHeard));
    EXPECT_EQ(mLink->asked(), (Nodes{"a", "x"}));
}

TEST_F(ClusterVersions, QueryOfNoServersForgetsWhatIsNotOnThisDisk) {
    fillCatalogue();
    know({"a"});
    EXPECT_EQ(mRequest->querySystemVersion(Tarnwick::MQ::ServerList(), into(mHeard)).errorCode(), 0);
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
    EXPECT_EQ(versions(), Texts{"1.0"});
}

TEST_F(ClusterVersions, RequestOfNamedNodesAsksTheCloudWhateverTheQueueObject) {
    const auto server = std::make_shared<support::ScriptedServer>();
    server->servers = support::serverList({"a"});
    server->links["a"] = mLink;
    mRequest = makeRequest(std::shared_ptr<TWMQSystemServer>(server));
    EXPECT_EQ(Access::askForVersions(*mRequest, kRequest, {"a"}, into(mHeard)).errorCode(), 0);
    answer("a");
    EXPECT_EQ(heardOf(2), (HeardList{{"a", 0, false}, {"", 0, true}}));
}

TEST_F(ClusterVersions, TwoRequestsAtOnceLeaveTheAnswersOfTheOneThatEndsLast) {
    request({"a"});
    request({"a"});
    const auto pushes = mLink->pushes();
    answer(pushes[1], versionDocument({"6.0"}));
    EXPECT_TRUE(mHeard.waitFor(2));
    EXPECT_EQ(versions(), Texts{"6.0"});
    answer(pushes[0], versionDocument({"5.0"}));
    EXPECT_TRUE(mHeard.waitFor(4));
    EXPECT_EQ(versions(), Texts{"5.0"});
}
