// Asking the nodes of a cluster for their release notes.
#include "ClusterFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::noteList;
using support::noteRecord;
using support::UpdateCloud;
using Access = VersionRequestAccess;

namespace {

constexpr char kRequest[] = "topic_upgrade_requestreleasehistory";
constexpr char kQuery[] = "topic_upgrade_queryreleasehistory";

class ClusterNotes : public ClusterFixture {
protected:
    void query(const Nodes& nodes) {
        know(nodes);
        mRequest->queryReleaseHistory(into(mHeard));
    }
    void request(const Nodes& nodes) {
        know(nodes);
        mRequest->requestReleaseHistory(into(mHeard));
    }
};

}  // namespace

// --- What the nodes tell

TEST_F(ClusterNotes, NotesEnterAsTheyCome) {
    query({"a", "b"});
    answer("a", noteDocument("1.0", "of a"));
    EXPECT_EQ(notes(), Texts{"1.0 of a"});
    answer("b", noteDocument("2.0", "of b"));
    EXPECT_EQ(notes(), (Texts{"1.0 of a", "2.0 of b"}));
}

TEST_F(ClusterNotes, OfTwoNotesOfOneVersionTheFirstStays) {
    query({"a", "b"});
    answer("b", noteDocument("1.0", "of b"));
    answer("a", noteDocument("1.0", "of a"));
    EXPECT_EQ(notes(), Texts{"1.0 of b"});
}

TEST_F(ClusterNotes, NotesAreThereWhenTheNodeIsReported) {
    know({"a"});
    Texts seen;
    mRequest->queryReleaseHistory([&](const std::string&, const ErrorInfo&, bool) { seen = notes(); });
    answer("a", noteDocument("1.0", "of a"));
    EXPECT_EQ(seen, Texts{"1.0 of a"});
}

TEST_F(ClusterNotes, KnownNotesAreForgottenWhenAQueryBegins) {
    mRequest->addReleaseHistory(notesOf(noteRecord("9.0")));
    query({"a"});
    EXPECT_EQ(notes(), Texts());
}

TEST_F(ClusterNotes, KnownNotesAreForgottenWhenARequestBegins) {
    mRequest->addReleaseHistory(notesOf(noteRecord("9.0")));
    mLink->refused = {"a"};
    request({"a"});
    EXPECT_EQ(notes(), Texts());
}

TEST_F(ClusterNotes, WhenEveryNodeFailedNoNotesAreLeft) {
    mRequest->addReleaseHistory(notesOf(noteRecord("9.0")));
    query({"a", "b"});
    fail("a", -202);
    fail("b", -1);
    EXPECT_EQ(notes(), Texts());
    EXPECT_EQ(heard(), (HeardList{{"a", -202, false}, {"b", -1, true}}));
}

TEST_F(ClusterNotes, VersionsAreLeftAlone) {
    mRequest->addVersion(support::entry("3.0", 3));
    query({"a"});
    answer("a", noteDocument("1.0", "of a"));
    EXPECT_EQ(versions(), Texts{"3.0"});
}

TEST_F(ClusterNotes, BodyOfAnAnswerWithAnErrorIsNotRead) {
    query({"a"});
    Tarnwick::Protocol::TWProtoUpgradePkt packet;
    packet.body = noteDocument("1.0", "of a");
    mLink->to("a").answer(ErrorInfo(-105, ""), &packet);
    EXPECT_EQ(notes(), Texts());
    EXPECT_EQ(heard(), (HeardList{{"a", -105, true}}));
}

// --- No servers

TEST_F(ClusterNotes, WithoutServersTheEndOfARequestComesTwice) {
    const ErrorInfo result = mRequest->requestReleaseHistory(into(mHeard));
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}, {"", -1, true}}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterNotes, WithoutServersTheEndOfAQueryComesTwiceToo) {
    EXPECT_EQ(mRequest->queryReleaseHistory(into(mHeard)).errorCode(), 0);
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}, {"", -1, true}}));
}

TEST_F(ClusterNotes, WithoutServersKnownNotesStay) {
    mRequest->addReleaseHistory(notesOf(noteRecord("9.0")));
    request({});
    EXPECT_EQ(notes(), Texts{"9.0 note"});
}

TEST_F(ClusterNotes, WithoutServersTheHostsNodesAreNotAsked) {
    mRequest->setOtherNodes({"x"});
    request({});
    EXPECT_TRUE(mLink->pushes().empty());
    EXPECT_EQ(heard(), (HeardList{{"", -1, true}, {"", -1, true}}));
}

TEST_F(ClusterNotes, BroadcastToNoNodesRemovesNothingAndAsksNoCloud) {
    mRequest->addReleaseHistory(notesOf(noteRecord("9.0")));
    EXPECT_EQ(Access::askForHistories(*mRequest, kRequest, {}, into(mHeard)).errorCode(), 0);
    EXPECT_EQ(heard(), (HeardList{{"", 0, true}}));
    EXPECT_EQ(notes(), Texts{"9.0 note"});
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterNotes, BroadcastToNoNodesAsksTheHostsNodes) {
    mRequest->setOtherNodes({"x"});
    Access::askForHistories(*mRequest, kQuery, {}, into(mHeard));
    EXPECT_EQ(mLink->asked(), Nodes{"x"});
}

// --- The cloud behind the nodes

TEST_F(ClusterNotes, CloudsNotesJoinThoseOfTheNodes) {
    mCloud.notes(noteList(noteRecord("2.0", "of the cloud")));
    request({"a"});
    answer("a", noteDocument("1.0", "of a"));
    EXPECT_EQ(heardOf(2), (HeardList{{"a", 0, false}, {"", 0, true}}));
    EXPECT_EQ(notes(), (Texts{"1.0 of a", "2.0 of the cloud"}));
}

TEST_F(ClusterNotes, NoteOfANodeStaysBeforeTheCloudsOfTheSameVersion) {
    mCloud.notes(noteList(noteRecord("1.0", "of the cloud")));
    request({"a"});
    answer("a", noteDocument("1.0", "of a"));
    heardOf(2);
    EXPECT_EQ(notes(), Texts{"1.0 of a"});
}

TEST_F(ClusterNotes, CloudIsAskedAfterTheLastNodeAlone) {
    mCloud.hold(UpdateCloud::kNotes);
    request({"a", "b"});
    answer("a");
    EXPECT_TRUE(mCloud.requests().empty());
    answer("b");
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kNotes));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}, {"b", 0, false}}));
    mCloud.release(UpdateCloud::kNotes);
    EXPECT_EQ(heardOf(3).back(), (Heard{"", 0, true}));
}

TEST_F(ClusterNotes, CloudIsAskedAlsoWhenTheNodeDoneLastFailed) {
    request({"a"});
    fail("a", -202);
    EXPECT_EQ(heardOf(2), (HeardList{{"a", -202, false}, {"", 0, true}}));
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

TEST_F(ClusterNotes, CloudsFailureIsInTheLastCallAlone) {
    mCloud.notes("", 500);
    request({"a"});
    answer("a", noteDocument("1.0", "of a"));
    EXPECT_EQ(heardOf(2), (HeardList{{"a", 0, false}, {"", -304, true}}));
    EXPECT_EQ(notes(), Texts{"1.0 of a"});
}

TEST_F(ClusterNotes, QueryAsksNoCloud) {
    query({"a"});
    answer("a");
    EXPECT_EQ(heard(), (HeardList{{"a", 0, true}}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(ClusterNotes, CloudsAnswerToARequestThatHasGoneIsNotHeard) {
    mCloud.hold(UpdateCloud::kNotes);
    request({"a"});
    answer("a");
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kNotes));
    mLink->forget();
    const std::weak_ptr<VersionRequest> weak = mRequest;
    mRequest.reset();
    mCloud.release(UpdateCloud::kNotes);
    ASSERT_TRUE(support::eventually([&] { return weak.expired(); }));
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}}));
}

TEST_F(ClusterNotes, RequestNotifiesNobody) {
    int notified = 0;
    mRequest->registerVersionRequestNotify([&] { ++notified; });
    request({"a"});
    answer("a");
    EXPECT_EQ(heardOf(2).size(), 2U);
    EXPECT_EQ(notified, 0);
    EXPECT_TRUE(mLink->pushesOf("topic_upgrade_notifyupdate").empty());
}

TEST_F(ClusterNotes, SecondRequestForgetsWhatTheFirstHasGathered) {
    query({"a", "b"});
    answer("a", noteDocument("1.0", "of a"));
    const auto late = mLink->to("b");
    query({"a"});
    EXPECT_EQ(notes(), Texts());
    answer(late, noteDocument("2.0", "of b"));
    EXPECT_EQ(notes(), Texts{"2.0 of b"});
}
