// The frame of the message service: its life and its topics.
#include "VersionService.h"

#include "CatalogueEntries.h"
#include "OrvInstaller.h"
#include "ServiceFixture.h"

using namespace Tarnwick::OrvUpdate;
using Access = VersionServiceAccess;
using Texts = std::vector<std::string>;

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

TEST_F(ServiceFrame, StartSubscribesTheElevenTopicsInTheirOrder) {
    const auto node = std::make_shared<support::RecordingServer>();
    const auto service = makeService(node);
    const ErrorInfo result = service->start();
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(node->topicsOf(service.get()),
              (Texts{"topic_upgrade_requestversion", "topic_upgrade_requestreleasehistory",
                     "topic_upgrade_queryversion", "topic_upgrade_queryreleasehistory", "topic_upgrade_downloadversion",
                     "topic_upgrade_postversion", "topic_upgrade_startinstall", "topic_upgrade_getinstallpos",
                     "topic_upgrade_startdownload", "topic_upgrade_getdownloadpos", "topic_upgrade_notifyupdate"}));
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
    EXPECT_EQ(client->count(), 11U);
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
