// What all requests to the nodes of a cluster have in common.
#include <latch>

#include "ClusterFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using support::ScriptedLink;

namespace {

struct Operation {
    const char* name;
    const char* topic;
    ErrorInfo (IVersionRequest::*call)(const RequestFinished&);
    bool asksCloud;

    friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
};

class ClusterOperation : public ClusterFixture, public testing::WithParamInterface<Operation> {
protected:
    ErrorInfo begin(const RequestFinished& callback) { return ((*mRequest).*(GetParam().call))(callback); }
    void begin() { EXPECT_EQ(begin(into(mHeard)).errorCode(), 0); }
    /// These calls, and where the cloud is asked too, that one instead of the end.
    HeardList withCloud(HeardList calls) const {
        if (!GetParam().asksCloud) return calls;
        calls.back().last = false;
        calls.push_back({"", 0, true});
        return calls;
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Cluster, ClusterOperation,
    testing::Values(
        Operation{"RequestVersion", "topic_upgrade_requestversion", &IVersionRequest::requestVersion, true},
        Operation{"QueryVersion", "topic_upgrade_queryversion", &IVersionRequest::querySystemVersion, false},
        Operation{"RequestNotes", "topic_upgrade_requestreleasehistory", &IVersionRequest::requestReleaseHistory, true},
        Operation{"QueryNotes", "topic_upgrade_queryreleasehistory", &IVersionRequest::queryReleaseHistory, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ClusterOperation, AsksTheNodesInAscendingOrderOfBytes) {
    know({"c", "a", "b", "Z", "\xC3\xA4"});
    begin();
    EXPECT_EQ(mLink->asked(), (Nodes{"Z", "a", "b", "c", "\xC3\xA4"}));
}

TEST_P(ClusterOperation, AsksTheNodesThatTheHostNamesToo) {
    know({"b"});
    mRequest->setOtherNodes({"c", "a"});
    begin();
    EXPECT_EQ(mLink->asked(), (Nodes{"a", "b", "c"}));
}

TEST_P(ClusterOperation, AsksANodeThatIsKnownAndNamedOnce) {
    know({"a", "b"});
    mRequest->setOtherNodes({"b"});
    begin();
    EXPECT_EQ(mLink->asked(), (Nodes{"a", "b"}));
}

TEST_P(ClusterOperation, AsksTheServersThatAreListedWhateverTheResult) {
    know({"a"});
    mClient->listed = ErrorInfo(-203, "");
    begin();
    EXPECT_EQ(mLink->asked(), Nodes{"a"});
}

TEST_P(ClusterOperation, AsksServersThatAreNotReachableThroughItsLink) {
    mClient->servers = support::serverList({"a"}, false);
    begin();
    EXPECT_EQ(mLink->asked(), Nodes{"a"});
}

TEST_P(ClusterOperation, SendsItsTopicWithAMinuteToAnswer) {
    know({"a"});
    begin();
    const auto push = mLink->to("a");
    EXPECT_EQ(push.topic, GetParam().topic);
    EXPECT_EQ(push.timeoutMs, 60000U);
    EXPECT_EQ(static_cast<int>(push.level), 0);
    EXPECT_FALSE(push.hasAuthen);
}

TEST_P(ClusterOperation, SendsTheVersionToRequestToEveryNode) {
    know({"a", "b"});
    mRequest->setRequestVersion(Version("4.4-oem2", 0));
    begin();
    for (const auto& push : mLink->pushes()) {
        Tarnwick::Protocol::TWProtoUpgradeNotify notify;
        ASSERT_TRUE(Tarnwick::Protocol::TWPacket::parseBytes({push.body.buf(), push.body.size()}, notify));
        EXPECT_EQ(notify.body, "4.4-oem2");
    }
}

TEST_P(ClusterOperation, SendsAnEmptyTextBeforeTheStart) {
    know({"a"});
    begin();
    const auto bytes = Tarnwick::Protocol::TWPacket::serializeAsBytes(notifyBody(""));
    EXPECT_EQ(mLink->to("a").body.toStdString(), bytes.toStdString());
}

TEST_P(ClusterOperation, ReportsEachNodeAsItAnswersAndTheLastAsTheLast) {
    know({"a", "b", "c"});
    begin();
    EXPECT_TRUE(heard().empty());
    answer("b");
    EXPECT_EQ(heard(), (HeardList{{"b", 0, false}}));
    answer("c");
    EXPECT_EQ(heard(), (HeardList{{"b", 0, false}, {"c", 0, false}}));
    answer("a");
    const auto whole = withCloud({{"b", 0, false}, {"c", 0, false}, {"a", 0, true}});
    EXPECT_EQ(heardOf(whole.size()), whole);
}

TEST_P(ClusterOperation, ReportsANodesErrorWithItsMessage) {
    know({"a", "b"});
    begin();
    fail("a", -105, "refused");
    ASSERT_EQ(heard(), (HeardList{{"a", -105, false}}));
    EXPECT_EQ(heard().front().message, "refused");
}

TEST_P(ClusterOperation, ReportsANodeThatDoesNotAnswerWithTheQueuesError) {
    know({"a"});
    begin();
    fail("a", -202);
    const auto whole = withCloud({{"a", -202, true}});
    EXPECT_EQ(heardOf(whole.size()), whole);
}

TEST_P(ClusterOperation, ReportsNodesWithoutAConnectionAtOnceAndWithoutTheirNames) {
    know({"a", "b", "c"});
    mClient->link = nullptr;
    begin();
    ASSERT_GE(heard().size(), 3U);
    for (size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(heard()[index].node, "");
        EXPECT_EQ(heard()[index].code, 0);
        EXPECT_EQ(heard()[index].thread, std::this_thread::get_id());
    }
    EXPECT_FALSE(heard()[0].last);
    EXPECT_FALSE(heard()[1].last);
}

TEST_P(ClusterOperation, StaysOpenWhenALinkRefusesTheRequest) {
    know({"a"});
    mLink->refused = {"a"};
    begin();
    EXPECT_TRUE(heard().empty());
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_P(ClusterOperation, StaysOpenWhenTheLinkRefusesOneOfManyNodes) {
    know({"a", "b", "c"});
    mLink->refused = {"b"};
    begin();
    answer("c");
    answer("a");
    EXPECT_EQ(heard(), (HeardList{{"c", 0, false}, {"a", 0, false}}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_P(ClusterOperation, SaysNothingMoreWhenTheRequestHasGone) {
    know({"a", "b"});
    begin();
    answer("a");
    const auto late = mLink->to("b");
    mRequest.reset();
    answer(late, "[]");
    EXPECT_EQ(heard(), (HeardList{{"a", 0, false}}));
}

TEST_P(ClusterOperation, HoldsNeitherTheRequestNorItself) {
    know({"a", "b"});
    const auto held = std::make_shared<int>(0);
    begin([held](const std::string&, const ErrorInfo&, bool) {});
    const std::weak_ptr<VersionRequest> weak = mRequest;
    mRequest.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_GT(held.use_count(), 1);
    mLink->forget();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_P(ClusterOperation, LetsGoOfItsCallbackAtItsEnd) {
    know({"a"});
    const auto held = std::make_shared<int>(0);
    const Received<int> ends;
    begin([held, ends](const std::string&, const ErrorInfo&, bool last) {
        if (last) ends.add(1);
    });
    answer("a");
    mLink->forget();
    ASSERT_TRUE(ends.waitFor());
    EXPECT_TRUE(support::eventually([&] { return held.use_count() == 1; }));
}

TEST_P(ClusterOperation, BearsAnEmptyCallback) {
    know({"a"});
    EXPECT_EQ(begin(RequestFinished()).errorCode(), 0);
    answer("a");
    EXPECT_EQ(mLink->asked().front(), "a");
}

TEST_P(ClusterOperation, LastCallBeginsWhenTheOthersHaveReturned) {
    know({"a", "b"});
    support::Gate gate;
    const Received<std::string> order;
    begin([&gate, order](const std::string& node, const ErrorInfo&, bool last) {
        if (node == "a") gate.pass();
        order.add(node + (last ? " last" : ""));
    });
    std::thread slow([this] { answer("a"); });
    EXPECT_TRUE(gate.waitForSomeone());
    answer("b");
    EXPECT_EQ(order.count(), 0U);
    gate.open();
    slow.join();
    const Texts whole = GetParam().asksCloud ? Texts{"a", "b", " last"} : Texts{"a", "b last"};
    ASSERT_TRUE(order.waitFor(whole.size()));
    EXPECT_EQ(order.values(), whole);
}

TEST_P(ClusterOperation, CallbackThatThrowsStillGetsTheLastCall) {
    know({"a", "b"});
    begin([this](const std::string& node, const ErrorInfo& result, bool last) {
        into(mHeard)(node, result, last);
        if (node == "a") throw std::runtime_error("host");
    });
    EXPECT_THROW(answer("a"), std::runtime_error);
    answer("b");
    const auto whole = withCloud({{"a", 0, false}, {"b", 0, true}});
    EXPECT_EQ(heardOf(whole.size()), whole);
}

TEST_P(ClusterOperation, AnswersAtTheSameTimeBringOneEnd) {
    constexpr int kNodes = 24;
    for (int node = 0; node < kNodes; ++node) mClient->servers["node" + std::to_string(node)];
    begin();
    const auto pushes = mLink->pushes();
    std::latch together(4);
    std::vector<std::thread> threads;
    for (size_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            together.arrive_and_wait();
            for (size_t index = thread; index < pushes.size(); index += 4) answer(pushes[index], "[]");
        });
    }
    for (auto& thread : threads) thread.join();
    const size_t whole = kNodes + (GetParam().asksCloud ? 1 : 0);
    const auto calls = heardOf(whole);
    ASSERT_EQ(calls.size(), whole);
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), [](const Heard& call) { return call.last; }), 1);
    EXPECT_TRUE(calls.back().last);
}

TEST_P(ClusterOperation, TwoAtOnceEndByThemselves) {
    know({"a"});
    const Received<Heard> second;
    begin();
    begin(into(second));
    const auto pushes = mLink->pushes();
    ASSERT_EQ(pushes.size(), 2U);
    answer(pushes[1], "[]");
    const auto whole = withCloud({{"a", 0, true}});
    ASSERT_TRUE(second.waitFor(whole.size()));
    EXPECT_EQ(second.values(), whole);
    EXPECT_TRUE(heard().empty());
    answer(pushes[0], "[]");
    EXPECT_EQ(heardOf(whole.size()), whole);
}

TEST_P(ClusterOperation, CallbackMayBeginAnother) {
    know({"a"});
    const Received<int> ends;
    begin([this, ends](const std::string&, const ErrorInfo&, bool last) {
        if (!last) return;
        ends.add(1);
        if (ends.count() == 1) begin(into(mHeard));
    });
    answer("a");
    ASSERT_TRUE(ends.waitFor());
    ASSERT_TRUE(support::eventually([&] { return mLink->pushesOf(GetParam().topic).size() == 2; }));
    answer(mLink->pushesOf(GetParam().topic).back(), "[]");
    const auto whole = withCloud({{"a", 0, true}});
    EXPECT_EQ(heardOf(whole.size()), whole);
}

// --- The nodes that the host names

TEST_F(ClusterFixture, OtherNodesAreThoseSetLast) {
    std::set<std::string> nodes{"left over"};
    EXPECT_EQ(mRequest->getOtherNodes(nodes).errorCode(), 0);
    EXPECT_TRUE(nodes.empty());
    EXPECT_EQ(mRequest->setOtherNodes({"a", "b"}).errorCode(), 0);
    EXPECT_EQ(mRequest->setOtherNodes({"c"}).errorMessage(), "");
    EXPECT_EQ(mRequest->getOtherNodes(nodes).errorMessage(), "");
    EXPECT_EQ(nodes, std::set<std::string>{"c"});
}

TEST_F(ClusterFixture, OtherNodesMayBeSetWhileRequestsBegin) {
    std::thread setting([this] {
        for (int round = 0; round < 200; ++round) mRequest->setOtherNodes({"a", "b" + std::to_string(round)});
    });
    for (int round = 0; round < 50; ++round) mRequest->querySystemVersion(into(mHeard));
    setting.join();
    mLink->forget();
    mRequest->querySystemVersion(into(mHeard));
    EXPECT_EQ(mLink->asked(), (Nodes{"a", "b199"}));
}
