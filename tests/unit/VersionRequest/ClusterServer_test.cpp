// Requests to the cluster of a program that is a server, or that has no queue object at all.
#include "ClusterFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

class ClusterServer : public ClusterFixture {
protected:
    ClusterServer() { mRequest = makeRequest(std::shared_ptr<TWMQSystemServer>(mServer)); }

    std::shared_ptr<support::ScriptedServer> mServer = std::make_shared<support::ScriptedServer>();
};

class ClusterWithoutQueue : public ClusterFixture {
protected:
    ClusterWithoutQueue() { mRequest = makeRequest(std::shared_ptr<TWMQClient>()); }
};

}  // namespace

// --- Versions

TEST_F(ClusterServer, RequestOfVersionsFailsByTheCallbackAlone) {
    mServer->servers = support::serverList({"a"});
    mServer->links["a"] = mLink;
    mRequest->setOtherNodes({"a"});
    mRequest->addVersion(support::entry("3.0", 3));
    const ErrorInfo result = mRequest->requestVersion(into(mHeard));
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}}));
    EXPECT_TRUE(mLink->pushes().empty());
    EXPECT_EQ(versions(), Texts{"3.0"});
}

TEST_F(ClusterServer, FailedRequestOfVersionsNotifiesNobody) {
    int notified = 0;
    mRequest->registerVersionRequestNotify([&] { ++notified; });
    mRequest->requestVersion(into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}}));
    EXPECT_EQ(notified, 0);
}

TEST_F(ClusterServer, QueryOfVersionsFailsByTheCallbackAlone) {
    EXPECT_EQ(mRequest->querySystemVersion(into(mHeard)).errorCode(), 0);
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}}));
    EXPECT_EQ(mRequest->querySystemVersion(RequestFinished()).errorCode(), 0);
}

TEST_F(ClusterServer, AsksNamedServersEachOnItsOwnLink) {
    const auto second = std::make_shared<support::ScriptedLink>();
    mServer->servers = support::serverList({"a", "b"});
    mServer->links = {{"a", mLink}, {"b", second}};
    mRequest->querySystemVersion(mServer->servers, into(mHeard));
    EXPECT_EQ(mLink->asked(), Nodes{"a"});
    EXPECT_EQ(second->asked(), Nodes{"b"});
    EXPECT_EQ(mServer->asked, (std::vector<std::pair<std::string, std::string>>{{"a", ""}, {"b", ""}}));
}

TEST_F(ClusterServer, NamedServerThatTheClusterDoesNotKnowHasNoConnection) {
    mServer->links["a"] = mLink;
    mRequest->querySystemVersion(support::serverList({"a"}), into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
    EXPECT_TRUE(mServer->asked.empty());
}

TEST_F(ClusterServer, NamedServerThatIsNotReachableHasNoConnection) {
    mServer->servers = support::serverList({"a"}, false);
    mServer->links["a"] = mLink;
    mRequest->querySystemVersion(support::serverList({"a"}), into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
    EXPECT_TRUE(mLink->pushes().empty());
}

TEST_F(ClusterServer, NamedServerWithoutALinkHasNoConnection) {
    mServer->servers = support::serverList({"a"});
    mRequest->querySystemVersion(mServer->servers, into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
}

TEST_F(ClusterServer, ServerWithoutAConnectionBetweenOthersIsReportedInItsTurn) {
    mServer->servers = support::serverList({"a", "b", "c"});
    mServer->links = {{"a", mLink}, {"c", mLink}};
    mLink->answersAtOnce = [](const support::ScriptedLink::Push& push) { answer(push, "[]"); };
    mRequest->querySystemVersion(mServer->servers, into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}, {"", 0, false}, {"c", 0, true}}));
}

TEST_F(ClusterServer, LastServerWithoutAConnectionEndsAQuery) {
    mServer->servers = support::serverList({"a", "b"});
    mServer->links = {{"a", mLink}};
    mLink->answersAtOnce = [](const support::ScriptedLink::Push& push) { answer(push, versionDocument({"5.0"})); };
    mRequest->querySystemVersion(mServer->servers, into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}, {"", 0, true}}));
    EXPECT_EQ(versions(), Texts{"5.0"});
}

// --- Release notes

TEST_F(ClusterServer, AsksEveryServerOfItsClusterForNotes) {
    mServer->servers = support::serverList({"b", "a", "own"});
    mServer->links = {{"a", mLink}, {"b", mLink}, {"own", mLink}};
    EXPECT_EQ(mRequest->requestReleaseHistory(into(mHeard)).errorCode(), 0);
    EXPECT_EQ(mServer->systemsAsked, Nodes{"site"});
    EXPECT_EQ(mLink->asked(), (Nodes{"a", "b", "own"}));
}

TEST_F(ClusterServer, AsksForNotesAlsoAServerThatIsNotReachable) {
    mServer->servers = support::serverList({"a"}, false);
    mServer->links["a"] = mLink;
    mRequest->queryReleaseHistory(into(mHeard));
    EXPECT_EQ(mLink->asked(), Nodes{"a"});
}

TEST_F(ClusterServer, AsksForNotesAlsoANamedNodeThatTheClusterDoesNotKnow) {
    mServer->servers = support::serverList({"a"});
    mServer->links = {{"a", mLink}, {"x", mLink}};
    mRequest->setOtherNodes({"x"});
    mRequest->queryReleaseHistory(into(mHeard));
    EXPECT_EQ(mLink->asked(), (Nodes{"a", "x"}));
}

TEST_F(ClusterServer, WithoutAViewOfTheClusterTheEndOfANotesRequestComesTwice) {
    mServer->discovers = false;
    mServer->servers = support::serverList({"a"});
    EXPECT_EQ(mRequest->requestReleaseHistory(into(mHeard)).errorCode(), 0);
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}, {"", -1, true}}));
}

TEST_F(ClusterServer, HistoryBroadcastWhoseLastNodeHasNoConnectionHasNoCloudStep) {
    mServer->servers = support::serverList({"a", "b"});
    mServer->links = {{"a", mLink}};
    mLink->answersAtOnce = [](const support::ScriptedLink::Push& push) { answer(push, noteDocument("1.0", "of a")); };
    mRequest->requestReleaseHistory(into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}, {"", 0, true}}));
    EXPECT_EQ(notes(), Texts{"1.0 of a"});
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterServer, HistoryBroadcastOfOneNodeWithoutAConnectionHasNoCloudStep) {
    mServer->servers = support::serverList({"a"});
    mRequest->requestReleaseHistory(into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterServer, HistoryBroadcastAsksTheCloudWhenTheNodeDoneLastHasAnswered) {
    mServer->servers = support::serverList({"a", "b"});
    mServer->links = {{"a", mLink}};
    mRequest->requestReleaseHistory(into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", 0, false}}));
    answer("a");
    EXPECT_EQ(heardOf(3), (HeardList{{"", 0, false}, {"a", 0, false}, {"", 0, true}}));
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

// --- No queue object

TEST_F(ClusterWithoutQueue, RequestAndQueryOfVersionsFailByTheCallbackAlone) {
    EXPECT_EQ(mRequest->requestVersion(into(mHeard)).errorCode(), 0);
    EXPECT_EQ(mRequest->querySystemVersion(into(mHeard)).errorCode(), 0);
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}, {"", -1, true}}));
}

TEST_F(ClusterWithoutQueue, NamedServersHaveNoConnection) {
    mRequest->querySystemVersion(support::serverList({"a", "b"}), into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", 0, false}, {"", 0, true}}));
}

TEST_F(ClusterWithoutQueue, EndOfARequestForNotesComesTwice) {
    mRequest->requestReleaseHistory(into(mHeard));
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}, {"", -1, true}}));
    mRequest->queryReleaseHistory(into(mHeard));
    EXPECT_EQ(heard().size(), 4U);
}
