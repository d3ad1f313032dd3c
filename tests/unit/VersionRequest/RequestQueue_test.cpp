// A VersionRequest on the queue, and its end.
#include "RecordingNodes.h"
#include "RequestFrameFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::versionTexts;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

constexpr char kNotifyUpdate[] = "topic_upgrade_notifyupdate";

}  // namespace

// --- The queue

TEST_F(RequestFrame, ServerServesThePeers) {
    const auto server = makeServer();
    const auto peer = makeServer("peer");
    const auto request = makeRequest(server);
    startAt(*request);
    Asker asker(peer->connectionTo("server", ""));
    const auto answer = asker.ask("server", "topic_upgrade_queryversion");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0);
}

TEST_F(RequestFrame, ClientServesItsServer) {
    const auto server = makeServer();
    const auto request = makeRequest(makeClient());
    startAt(*request);
    Asker asker(server->connectionTo("client", ""));
    const auto answer = asker.ask("client", "topic_upgrade_queryversion");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0);
}

TEST_F(RequestFrame, ClientItselfListensForNotificationsBesideItsService) {
    const auto client = std::make_shared<support::RecordingClient>();
    const auto request = makeRequest(std::static_pointer_cast<TWMQClient>(client));
    startAt(*request);
    EXPECT_EQ(client->topicsOf(request.get()), Texts{kNotifyUpdate});
    EXPECT_EQ(client->subscriptions.back().owner, request.get());
    EXPECT_FALSE(client->subscriptions.back().hasSecond);
}

TEST_F(RequestFrame, ServerItselfListensToNothing) {
    const auto server = std::make_shared<support::RecordingSystemServer>();
    const auto request = makeRequest(std::static_pointer_cast<TWMQSystemServer>(server));
    startAt(*request);
    EXPECT_TRUE(server->topicsOf(request.get()).empty());
    EXPECT_GT(server->count(), 0U);
}

TEST_F(RequestFrame, QueueDoesNotKeepTheRequest) {
    const auto client = std::make_shared<support::RecordingClient>();
    auto request = makeRequest(std::static_pointer_cast<TWMQClient>(client));
    startAt(*request);
    const auto subscriptions = client->subscriptions;
    const std::weak_ptr<VersionRequest> watch = request;
    request.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(subscriptions.back().handler(nullptr), nullptr);
}

// --- Stopping

TEST_F(RequestFrame, StopEndsTheService) {
    const auto request = makeRequest(makeServer());
    startAt(*request);
    const std::weak_ptr<VersionService> service = Access::service(*request);
    const ErrorInfo result = request->stop();
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_TRUE(service.expired());
    EXPECT_EQ(Access::service(*request), nullptr);
}

TEST_F(RequestFrame, StopLeavesNoSubscriptionOfAClient) {
    const auto client = std::make_shared<support::RecordingClient>();
    const auto request = makeRequest(std::static_pointer_cast<TWMQClient>(client));
    startAt(*request);
    request->stop();
    EXPECT_EQ(client->count(), 0U);
}

TEST_F(RequestFrame, StopLeavesNoSubscriptionOfAServer) {
    const auto server = std::make_shared<support::RecordingSystemServer>();
    const auto request = makeRequest(std::static_pointer_cast<TWMQSystemServer>(server));
    startAt(*request);
    request->stop();
    EXPECT_EQ(server->count(), 0U);
}

TEST_F(RequestFrame, StopKeepsCatalogueAndStore) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    request->addVersion(support::entry("2.0", 2));
    request->stop();
    EXPECT_EQ(versionTexts(request->getVersions()), (Texts{"1.0.0.0", "2.0"}));
    EXPECT_EQ(request->getDownloadDir(), mStore.path());
}

TEST_F(RequestFrame, StopBeforeAnyStartAndASecondStopSucceed) {
    const auto request = makeRequest(makeServer());
    EXPECT_EQ(request->stop().errorCode(), 0);
    startAt(*request);
    EXPECT_EQ(request->stop().errorCode(), 0);
    EXPECT_EQ(request->stop().errorCode(), 0);
}

TEST_F(RequestFrame, StopWithoutAQueueSucceeds) {
    EXPECT_EQ(makeRequest(std::shared_ptr<TWMQClient>())->stop().errorCode(), 0);
}

TEST_F(RequestFrame, StopLetsAServiceLiveThatAHandlerStillHolds) {
    const auto request = makeRequest(makeServer());
    startAt(*request);
    const auto held = Access::service(*request);
    request->stop();
    EXPECT_EQ(Access::service(*request), nullptr);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(RequestFrame, StartsAgainAfterAStop) {
    const auto server = makeServer();
    const auto peer = makeServer("peer");
    const auto request = makeRequest(server);
    startAt(*request);
    request->stop();
    EXPECT_EQ(startAt(*request, "3.0", "/other").errorCode(), 0);
    EXPECT_EQ(request->getDownloadDir(), "/other");
    EXPECT_EQ(request->getCurVersion().toString(), "3.0");
    Asker asker(peer->connectionTo("server", ""));
    ASSERT_TRUE(asker.ask("server", "topic_upgrade_queryversion"));
    EXPECT_EQ(asker.answers().values()[0].code, 0);
}

TEST_F(RequestFrame, DestructorStops) {
    const auto client = std::make_shared<support::RecordingClient>();
    auto request = makeRequest(std::static_pointer_cast<TWMQClient>(client));
    startAt(*request);
    const std::weak_ptr<VersionService> service = Access::service(*request);
    request.reset();
    EXPECT_TRUE(service.expired());
    EXPECT_EQ(client->count(), 0U);
}

TEST_F(RequestFrame, DestructorLetsGoOfTheQueueAndTheWorker) {
    auto server = makeServer();
    const std::weak_ptr<TWMQSystemServer> watchedServer = server;
    const std::weak_ptr<IOWorker> watchedWorker = mWorker;
    auto request = makeRequest(server);
    startAt(*request);
    server.reset();
    mWorker.reset();
    EXPECT_FALSE(watchedServer.expired());
    EXPECT_FALSE(watchedWorker.expired());
    request.reset();
    EXPECT_TRUE(watchedServer.expired());
    EXPECT_TRUE(watchedWorker.expired());
}

TEST_F(RequestFrame, MayBeReadWhileItStartsAndStops) {
    const auto request = makeRequest(makeServer());
    std::atomic<bool> done{false};
    std::thread reader([&] {
        while (!done) {
            EXPECT_LE(request->getCurVersion().toString().size(), 7U);
            EXPECT_LE(request->getDownloadDir().size(), mStore.path().size());
            request->getVersions();
            request->getServerId();
        }
    });
    for (int round = 0; round < 50; ++round) {
        startAt(*request, round % 2 == 0 ? "1.0" : "2.0.0.0");
        request->setRequestVersion(Version("3.0", 0));
        request->stop();
    }
    done = true;
    reader.join();
    EXPECT_EQ(request->getCurVersion().toString(), "2.0.0.0");
}
