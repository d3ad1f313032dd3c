// Telling the other nodes that there may be something new.
#include "ClusterFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Access = VersionRequestAccess;

namespace {

constexpr char kNotify[] = "topic_upgrade_notifyupdate";

class ClusterNotify : public ClusterFixture {
protected:
    size_t notifications() const { return mLink->pushesOf(kNotify).size(); }
    bool notified(size_t count) const {
        return support::eventually([&] { return notifications() == count; });
    }
};

}  // namespace

TEST_F(ClusterNotify, IsAPushToTheServerWithoutABody) {
    EXPECT_EQ(Access::notifyAllNodes(*mRequest).errorCode(), 0);
    const auto pushes = mLink->pushes();
    ASSERT_EQ(pushes.size(), 1U);
    EXPECT_EQ(pushes[0].to, "");
    EXPECT_EQ(pushes[0].topic, kNotify);
    EXPECT_TRUE(pushes[0].body.empty());
    EXPECT_FALSE(pushes[0].hasAuthen);
    EXPECT_EQ(static_cast<int>(pushes[0].level), 0);
    EXPECT_EQ(pushes[0].timeoutMs, 60000U);
}

TEST_F(ClusterNotify, AnswerToItIsNotLookedAt) {
    Access::notifyAllNodes(*mRequest);
    fail("", -202);
    EXPECT_EQ(mRequest->getVersions().size(), 0U);
    EXPECT_TRUE(heard().empty());
}

TEST_F(ClusterNotify, PushThatIsRefusedCountsAsMade) {
    mLink->refused = {""};
    EXPECT_EQ(Access::notifyAllNodes(*mRequest).errorCode(), 0);
}

TEST_F(ClusterNotify, NodeWithAListenerOfItsOwnGoesNoFurther) {
    int calls = 0;
    mRequest->registerVersionRequestNotify([&] { ++calls; });
    EXPECT_EQ(Access::notifyAllNodes(*mRequest).errorCode(), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(notifications(), 0U);
}

TEST_F(ClusterNotify, FailsWithoutALink) {
    mClient->link = nullptr;
    const ErrorInfo result = Access::notifyAllNodes(*mRequest);
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
}

TEST_F(ClusterNotify, FailsOnAServer) {
    const auto server = std::make_shared<support::ScriptedServer>();
    mRequest = makeRequest(std::shared_ptr<TWMQSystemServer>(server));
    EXPECT_EQ(Access::notifyAllNodes(*mRequest).errorCode(), -1);
    EXPECT_TRUE(server->asked.empty());
}

TEST_F(ClusterNotify, OfAServerReachesItsOwnListener) {
    mRequest = makeRequest(std::make_shared<support::ScriptedServer>());
    int calls = 0;
    mRequest->registerVersionRequestNotify([&] { ++calls; });
    EXPECT_EQ(Access::notifyAllNodes(*mRequest).errorCode(), 0);
    EXPECT_EQ(calls, 1);
}

// --- At the end of a request for versions

TEST_F(ClusterNotify, FollowsTheLastCallOfARequestForVersions) {
    know({"a"});
    const Received<size_t> before;
    mRequest->requestVersion(
        [this, before](const std::string&, const ErrorInfo&, bool) { before.add(notifications()); });
    answer("a");
    ASSERT_TRUE(before.waitFor(2));
    EXPECT_TRUE(notified(1));
    EXPECT_EQ(before.values(), (std::vector<size_t>{0, 0}));
}

TEST_F(ClusterNotify, FollowsARequestForVersionsWithoutNodes) {
    mRequest->requestVersion(into(mHeard));
    EXPECT_EQ(heard().size(), 1U);
    EXPECT_EQ(notifications(), 1U);
}

TEST_F(ClusterNotify, FollowsARequestThatTheCloudFailed) {
    mCloud.versions("", 500);
    know({"a"});
    mRequest->requestVersion(into(mHeard));
    answer("a");
    EXPECT_EQ(heardOf(2).back().code, -304);
    EXPECT_TRUE(notified(1));
}

TEST_F(ClusterNotify, OfARequestForVersionsCallsTheListenerInstead) {
    know({"a"});
    const Received<int> calls;
    mRequest->registerVersionRequestNotify([calls] { calls.add(1); });
    mRequest->requestVersion(into(mHeard));
    EXPECT_EQ(calls.count(), 0U);
    answer("a");
    ASSERT_TRUE(calls.waitFor());
    EXPECT_EQ(heard().size(), 2U);
    EXPECT_EQ(notifications(), 0U);
}

TEST_F(ClusterNotify, FollowsAlsoWithAnEmptyCallback) {
    know({"a"});
    mRequest->requestVersion(RequestFinished());
    answer("a");
    EXPECT_TRUE(notified(1));
}

TEST_F(ClusterNotify, DoesNotFollowAQuery) {
    know({"a"});
    mRequest->querySystemVersion(into(mHeard));
    answer("a");
    mRequest->querySystemVersion(support::serverList({}), into(mHeard));
    EXPECT_EQ(heard().size(), 2U);
    EXPECT_EQ(notifications(), 0U);
}

TEST_F(ClusterNotify, DoesNotFollowARequestThatStaysOpen) {
    know({"a", "b"});
    mLink->refused = {"b"};
    mRequest->requestVersion(into(mHeard));
    answer("a");
    EXPECT_EQ(heard().size(), 1U);
    EXPECT_EQ(notifications(), 0U);
}
