// Notifications of the newest version.
#include "RecordingNodes.h"
#include "RequestFrameFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Access = VersionRequestAccess;

namespace {

constexpr char kNotifyUpdate[] = "topic_upgrade_notifyupdate";

class RequestNotify : public RequestFrame {};

}  // namespace

// --- Notifications of the newest version

TEST_F(RequestNotify, CallsTheHostWhenAServerNotifiesItsClient) {
    const auto server = makeServer();
    const auto request = makeRequest(makeClient());
    Received<int> calls;
    request->registerNewestVersionNotify([=] { calls.add(1); });
    startAt(*request);
    Asker asker(server->connectionTo("client", ""));
    const auto body = notifyBody("any text");
    ASSERT_TRUE(asker.ask("client", kNotifyUpdate, &body));
    EXPECT_TRUE(calls.waitFor());
}

TEST_F(RequestNotify, IsNotTakenByAServer) {
    const auto server = makeServer();
    const auto peer = makeServer("peer");
    const auto request = makeRequest(server);
    Received<int> calls;
    request->registerNewestVersionNotify([=] { calls.add(1); });
    startAt(*request);
    Asker asker(peer->connectionTo("server", ""));
    const auto body = notifyBody("any text");
    ASSERT_TRUE(asker.ask("server", kNotifyUpdate, &body));
    EXPECT_EQ(calls.count(), 0U);
}

namespace {

/// A request as a handler of the node "client" gets it.
std::shared_ptr<MQMessage> received(const std::shared_ptr<TWMQClient>& client,
                                    const std::shared_ptr<TWMQSystemServer>& server,
                                    const Tarnwick::Protocol::TWPacket* body) {
    const Received<std::shared_ptr<MQMessage>> messages;
    int owner = 0;
    client->subscribe("topic_test", &owner,
                      [messages](const std::shared_ptr<MQMessage>& message) {
                          messages.add(message);
                          return message->buildResponse(ErrorInfo(), nullptr);
                      },
                      {});
    Asker(server->connectionTo("client", "")).ask("client", "topic_test", body);
    client->unsubcribe(&owner);
    return messages.first().value_or(nullptr);
}

class NewestVersionNotify : public RequestFrame {
protected:
    NewestVersionNotify() {
        const auto calls = mCalls;
        mRequest->registerNewestVersionNotify([calls] { calls.add(1); });
    }
    const std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    const std::shared_ptr<TWMQClient> mClient = makeClient();
    const std::shared_ptr<VersionRequest> mRequest = makeRequest(mClient);
    const Received<int> mCalls;
};

}  // namespace

TEST_F(NewestVersionNotify, CallsTheHostAndAnswersNothing) {
    const auto body = notifyBody("2.0");
    const auto message = received(mClient, mServer, &body);
    ASSERT_TRUE(message);
    EXPECT_EQ(Access::newestVersionNotify(*mRequest, message), nullptr);
    EXPECT_EQ(mCalls.count(), 1U);
}

TEST_F(NewestVersionNotify, IgnoresAMessageWithoutABody) {
    const auto message = received(mClient, mServer, nullptr);
    ASSERT_TRUE(message);
    EXPECT_EQ(Access::newestVersionNotify(*mRequest, message), nullptr);
    EXPECT_EQ(mCalls.count(), 0U);
}

TEST_F(NewestVersionNotify, IgnoresABodyOfAnotherRecord) {
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    other.body = "2.0";
    const auto message = received(mClient, mServer, &other);
    ASSERT_TRUE(message);
    EXPECT_EQ(Access::newestVersionNotify(*mRequest, message), nullptr);
    EXPECT_EQ(mCalls.count(), 0U);
}

TEST_F(NewestVersionNotify, IgnoresAMessageWithAnError) {
    const auto body = notifyBody("2.0");
    const auto message = received(mClient, mServer, &body);
    ASSERT_TRUE(message);
    const auto failed = message->buildResponse(ErrorInfo(-5, ""), body);
    EXPECT_EQ(Access::newestVersionNotify(*mRequest, failed), nullptr);
    EXPECT_EQ(mCalls.count(), 0U);
}

TEST_F(NewestVersionNotify, DoesNothingWithoutACallback) {
    mRequest->registerNewestVersionNotify({});
    const auto body = notifyBody("2.0");
    const auto message = received(mClient, mServer, &body);
    ASSERT_TRUE(message);
    EXPECT_EQ(Access::newestVersionNotify(*mRequest, message), nullptr);
    EXPECT_EQ(mCalls.count(), 0U);
}

TEST_F(NewestVersionNotify, CallsTheCallbackRegisteredLast) {
    const Received<int> later;
    mRequest->registerNewestVersionNotify([later] { later.add(1); });
    const auto body = notifyBody("2.0");
    Access::newestVersionNotify(*mRequest, received(mClient, mServer, &body));
    EXPECT_EQ(mCalls.count(), 0U);
    EXPECT_EQ(later.count(), 1U);
}

TEST_F(RequestFrame, VersionRequestNotifyIsTheOneRegisteredLast) {
    const auto request = makeRequest(makeServer());
    EXPECT_FALSE(request->getVersionRequestNotify());
    int first = 0;
    int second = 0;
    request->registerVersionRequestNotify([&] { ++first; });
    request->registerVersionRequestNotify([&] { ++second; });
    request->getVersionRequestNotify()();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}
