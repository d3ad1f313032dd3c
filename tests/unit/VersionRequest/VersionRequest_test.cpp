// Making, starting and stopping a VersionRequest.
#include "VersionRequest.h"

#include "CatalogueEntries.h"
#include "FileText.h"
#include "RecordingNodes.h"
#include "RequestFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using support::versionTexts;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

constexpr int kError = 2;
constexpr char kNotifyUpdate[] = "topic_upgrade_notifyupdate";

class RequestFrame : public RequestFixture {
protected:
    bool packageIsThere(const std::string& version) { return std::filesystem::exists(mStore.path(packageOf(version))); }
    /// The catalogue after the first start of a process on a store with these packages.
    Texts startedOn(const Texts& stored, const std::string& running) {
        fillStore(stored);
        const auto request = makeRequest(makeServer());
        EXPECT_EQ(startAt(*request, running).errorCode(), 0);
        return versionTexts(request->getVersions());
    }
};

class RequestStore : public RequestFrame {};
class RequestNotify : public RequestFrame {};
class RequestServerId : public RequestFrame {};

}  // namespace

// --- Making

TEST_F(RequestFrame, ClientFactoryHoldsTheClientAlone) {
    const auto client = makeClient();
    const auto request = std::dynamic_pointer_cast<VersionRequest>(
        IVersionRequest::allocVersionRequest(mWorker, client, VersionType_Client));
    ASSERT_TRUE(request);
    EXPECT_EQ(request->getMQClient(), client);
    EXPECT_EQ(request->getMQServer(), nullptr);
}

TEST_F(RequestFrame, ServerFactoryHoldsTheServerAlone) {
    const auto server = makeServer();
    const auto request = std::dynamic_pointer_cast<VersionRequest>(
        IVersionRequest::allocVersionRequest(mWorker, server, VersionType_Server));
    ASSERT_TRUE(request);
    EXPECT_EQ(request->getMQServer(), server);
    EXPECT_EQ(request->getMQClient(), nullptr);
}

TEST_F(RequestFrame, FactoriesTakeNoQueueObject) {
    EXPECT_TRUE(IVersionRequest::allocVersionRequest(mWorker, std::shared_ptr<TWMQClient>(), VersionType_Client));
    EXPECT_TRUE(IVersionRequest::allocVersionRequest(mWorker, std::shared_ptr<TWMQSystemServer>(), VersionType_Server));
}

TEST_F(RequestFrame, FactoriesMakeAnObjectThatMayStart) {
    const auto request = IVersionRequest::allocVersionRequest(mWorker, makeServer(), VersionType_Server);
    EXPECT_NO_THROW(request->start(Version("1.0", 0), {}, {}, ""));
}

TEST_F(RequestFrame, KeepsItsRole) {
    for (const int role : {0, 1, 2, 3, 4, 5}) {
        EXPECT_EQ(makeRequest(makeServer("s" + std::to_string(role)), static_cast<VersionType>(role))->getVersionType(),
                  role);
    }
}

TEST_F(RequestFrame, KeepsTheIOWorker) { EXPECT_EQ(makeRequest(makeServer())->getIOWorker(), mWorker); }

TEST_F(RequestFrame, IsEmptyWhenMade) {
    const auto request = makeRequest(makeServer());
    EXPECT_TRUE(request->getVersions().empty());
    EXPECT_TRUE(request->getReleaseHistory().empty());
    EXPECT_EQ(request->getDownloadDir(), "");
    EXPECT_EQ(request->getCurVersion().toString(), "");
    EXPECT_EQ(Access::service(*request), nullptr);
    EXPECT_FALSE(request->getPackageCallback());
    EXPECT_FALSE(request->getCheckCallback());
}

TEST_F(RequestFrame, StartThrowsWhenNoSharedPointerOwnsIt) {
    VersionRequest request(mWorker, makeServer(), VersionType_Server);
    EXPECT_THROW(startAt(request), std::bad_weak_ptr);
}

TEST_F(RequestFrame, CloudRequestsThrowWhenNoSharedPointerOwnsIt) {
    VersionRequest request(mWorker, makeServer(), VersionType_Server);
    EXPECT_THROW(request.requestVersionFromHttp({}, true), std::bad_weak_ptr);
    EXPECT_THROW(request.requestReleaseHistoryFromHttp({}, true), std::bad_weak_ptr);
}

// --- Starting

TEST_F(RequestFrame, StartTakesTheRunningVersion) {
    const auto request = makeRequest(makeServer());
    const ErrorInfo result = startAt(*request, "2.3.4.5-oem7");
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(request->getCurVersion().toString(), "2.3.4.5-oem7");
}

TEST_F(RequestFrame, StartReportsTheRunningVersionToTheCloud) {
    const auto request = makeRequest(makeServer());
    request->setRequestVersion(Version("9.9", 0));
    startAt(*request, "2.3.4.5");
    EXPECT_NE(Access::versionUrls(*request).front()->url.find("&softversion=2.3.4.5&"), std::string::npos);
}

TEST_F(RequestFrame, StartGivesTheServiceVersionAndStore) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "2.3.4.5");
    const auto service = Access::service(*request);
    ASSERT_TRUE(service);
    Version version;
    EXPECT_EQ(service->getCurrentVersion(version).errorCode(), 0);
    EXPECT_EQ(version.toString(), "2.3.4.5");
    EXPECT_EQ(VersionServiceAccess::downloadCache(*service), mStore.path());
    EXPECT_EQ(VersionServiceAccess::request(*service), request);
}

TEST_F(RequestFrame, StartKeepsTheHostsCallbacksAndGivesThemToTheService) {
    const auto request = makeRequest(makeServer());
    int asked = 0;
    int ended = 0;
    const auto ask = [&](const std::string&, std::string&, std::string&) { return ++asked > 0; };
    request->start(
        Version("1.0", 0), ask, [&] { return ++ended > 0; }, "");
    const auto service = Access::service(*request);
    std::string first;
    std::string second;
    EXPECT_TRUE(request->getPackageCallback()("1.0", first, second));
    EXPECT_TRUE(VersionServiceAccess::packageCallback(*service)("1.0", first, second));
    EXPECT_TRUE(request->getCheckCallback()());
    EXPECT_TRUE(VersionServiceAccess::checkCallback(*service)());
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(ended, 2);
}

TEST_F(RequestFrame, StartCallsNeitherOfTheHostsCallbacks) {
    const auto request = makeRequest(makeServer());
    int calls = 0;
    request->start(
        Version("1.0", 0), [&](const std::string&, std::string&, std::string&) { return ++calls > 0; },
        [&] { return ++calls > 0; }, mStore.path());
    EXPECT_EQ(calls, 0);
}

TEST_F(RequestFrame, SecondStartLeavesTheServiceAlone) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0");
    const auto service = Access::service(*request);
    const ErrorInfo result = startAt(*request, "1.0", "/elsewhere");
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(Access::service(*request), service);
    EXPECT_EQ(request->getDownloadDir(), mStore.path());
}

TEST_F(RequestFrame, SecondStartChangesTheRunningVersion) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0");
    startAt(*request, "1.1");
    EXPECT_EQ(request->getCurVersion().toString(), "1.1");
}

TEST_F(RequestFrame, SecondStartTakesTheTextOfAnEqualVersion) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0");
    startAt(*request, "1.0.0.0");
    EXPECT_EQ(request->getCurVersion().toString(), "1.0.0.0");
}

TEST_F(RequestFrame, SecondStartResetsTheRequestVersion) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0");
    EXPECT_EQ(request->setRequestVersion(Version("7.7", 0)).errorCode(), 0);
    EXPECT_NE(Access::versionUrls(*request).front()->url.find("&softversion=7.7&"), std::string::npos);
    startAt(*request, "1.1");
    EXPECT_NE(Access::versionUrls(*request).front()->url.find("&softversion=1.1&"), std::string::npos);
}

TEST_F(RequestFrame, SecondStartSubscribesNothingMore) {
    const auto client = std::make_shared<support::RecordingClient>();
    const auto request = makeRequest(std::static_pointer_cast<TWMQClient>(client));
    startAt(*request);
    const size_t subscriptions = client->count();
    startAt(*request);
    EXPECT_EQ(client->count(), subscriptions);
}

TEST_F(RequestFrame, CurVersionStaysReadableWhileStartChangesIt) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0");
    const Version& first = request->getCurVersion();
    startAt(*request, "1.1");
    EXPECT_EQ(first.toString(), "1.0");
}

TEST_F(RequestFrame, EveryDoubledBackslashOfTheStoreBecomesOne) {
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0", "C:\\\\Orv\\\\Store\\Sub");
    EXPECT_EQ(request->getDownloadDir(), "C:\\Orv\\Store\\Sub");
    EXPECT_EQ(VersionServiceAccess::downloadCache(*Access::service(*request)), "C:\\Orv\\Store\\Sub");
}

TEST_F(RequestFrame, EmptyStoreDirectoryIsLoggedAndSucceeds) {
    const auto request = makeRequest(makeServer());
    support::LogRecorder log;
    EXPECT_EQ(startAt(*request, "1.0", "").errorCode(), 0);
    EXPECT_TRUE(log.has(kError, "fail!\r\n"));
    EXPECT_TRUE(request->getVersions().empty());
    EXPECT_TRUE(Access::service(*request));
}

TEST_F(RequestFrame, EmptyStoreDirectoryIsNotTheWorkingDirectory) {
    fillStore({"1.0.0.0"});
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(mStore.path());
    const auto request = makeRequest(makeServer());
    startAt(*request, "1.0", "");
    std::filesystem::current_path(before);
    EXPECT_TRUE(request->getVersions().empty());
}

TEST_F(RequestFrame, NamedStoreDirectoryIsNotLogged) {
    const auto request = makeRequest(makeServer());
    support::LogRecorder log;
    startAt(*request);
    EXPECT_FALSE(log.has(kError, "fail!\r\n"));
}

TEST_F(RequestFrame, MissingStoreGivesAnEmptyCatalogue) {
    const auto request = makeRequest(makeServer());
    EXPECT_EQ(startAt(*request, "1.0", mStore.path("nowhere")).errorCode(), 0);
    EXPECT_TRUE(request->getVersions().empty());
}

TEST_F(RequestFrame, FailingServiceIsReportedAndLeavesNothingBehindButTheCatalogue) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(std::shared_ptr<TWMQSystemServer>());
    const ErrorInfo result = request->start(
        Version("2.0", 0), [](const std::string&, std::string&, std::string&) { return true; }, [] { return true; },
        mStore.path());
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(Access::service(*request), nullptr);
    EXPECT_EQ(request->getDownloadDir(), "");
    EXPECT_FALSE(request->getPackageCallback());
    EXPECT_FALSE(request->getCheckCallback());
    EXPECT_EQ(versionTexts(request->getVersions()), Texts{"1.0.0.0"});
    EXPECT_EQ(request->getCurVersion().toString(), "2.0");
}

TEST_F(RequestFrame, FailingServiceOfAClientSideProgramIsReported) {
    const auto request = makeRequest(std::shared_ptr<TWMQClient>());
    EXPECT_EQ(startAt(*request).errorCode(), -1);
}

TEST_F(RequestFrame, FailedStartMayBeRepeatedAndFailsAgain) {
    const auto request = makeRequest(std::shared_ptr<TWMQClient>());
    startAt(*request);
    EXPECT_EQ(startAt(*request).errorCode(), -1);
}

// --- The store

TEST_F(RequestStore, FirstStartListsThePackagesOnDisk) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0"}, "5.0"), (Texts{"1.0.0.0", "2.0.0.0"}));
}

TEST_F(RequestStore, EntriesOfTheStoreAreLocal) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    ASSERT_EQ(request->getVersions().size(), 1U);
    EXPECT_EQ((*request->getVersions().begin())->getStoragePosition(), StoragePosition_Local);
}

TEST_F(RequestStore, LosesTheOldestOfThree) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_FALSE(packageIsThere("1.0.0.0"));
    EXPECT_TRUE(packageIsThere("2.0.0.0"));
    EXPECT_TRUE(packageIsThere("3.0.0.0"));
}

TEST_F(RequestStore, LosesTheNextOldestWhenTheOldestRuns) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "1.0.0.0"), (Texts{"1.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("1.0.0.0"));
    EXPECT_FALSE(packageIsThere("2.0.0.0"));
}

TEST_F(RequestStore, LosesTheOldestWhenTheNewestRuns) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "3.0.0.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
}

TEST_F(RequestStore, KeepsTwoWhateverTheirNumbers) {
    EXPECT_EQ(startedOn({"0.0.0.1", "0.0.0.2"}, "9.0"), (Texts{"0.0.0.1", "0.0.0.2"}));
    EXPECT_TRUE(packageIsThere("0.0.0.1"));
}

TEST_F(RequestStore, KeepsOne) { EXPECT_EQ(startedOn({"0.0.0.1"}, "9.0"), Texts{"0.0.0.1"}); }

TEST_F(RequestStore, KeepsTheNewestTwoOfFive) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0", "4.0.0.0", "5.0.0.0"}, "9.0"), (Texts{"4.0.0.0", "5.0.0.0"}));
    EXPECT_FALSE(packageIsThere("3.0.0.0"));
}

TEST_F(RequestStore, KeepsTheRunningOneAndTheNewestOfFive) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0", "4.0.0.0", "5.0.0.0"}, "2.0.0.0"),
              (Texts{"2.0.0.0", "5.0.0.0"}));
}

TEST_F(RequestStore, RunningVersionIsKnownByItsNumbersNotItsText) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "1.0"), (Texts{"1.0.0.0", "3.0.0.0"}));
}

TEST_F(RequestStore, RemovesTheDirectoryOfAVersionWithAllThatItHolds) {
    mStore.putText("Online/Windows x64 All/1.0.0.0/notes/readme.txt", "text");
    startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "9.0");
    EXPECT_FALSE(std::filesystem::exists(mStore.path("Online/Windows x64 All/1.0.0.0")));
    EXPECT_TRUE(std::filesystem::exists(mStore.path("Online/Windows x64 All")));
}

TEST_F(RequestStore, CountsPackagesOfAllSourcesTogether) {
    mStore.put(packageOf("1.0.0.0", "Manual"), "1.0.0.0");
    EXPECT_EQ(startedOn({"2.0.0.0", "3.0.0.0"}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_FALSE(std::filesystem::exists(mStore.path(packageOf("1.0.0.0", "Manual"))));
}

TEST_F(RequestStore, RunningPackageStaysWhenAnOlderOneLiesInItsDirectory) {
    const std::string older = mStore.put("Online/Windows x64 All/2.0.0.0/old.exe", "1.0.0.0");
    EXPECT_EQ(startedOn({"2.0.0.0", "3.0.0.0"}, "2.0.0.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("2.0.0.0"));
    EXPECT_FALSE(std::filesystem::exists(older));
}

TEST_F(RequestStore, FilesThatAreNoPackagesAreNeitherListedNorRemoved) {
    mStore.putText(packageOf("0.5.0.0"), "no package");
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("0.5.0.0"));
}

TEST_F(RequestStore, SecondRequestOfTheProcessGetsTheSameEntries) {
    fillStore({"1.0.0.0", "2.0.0.0"});
    const auto first = makeRequest(makeServer("a"));
    const auto second = makeRequest(makeServer("b"));
    startAt(*first);
    startAt(*second);
    EXPECT_EQ(first->getVersions().size(), 2U);
    EXPECT_EQ(first->getVersions(), second->getVersions());
}

TEST_F(RequestStore, SecondRequestOfTheProcessDoesNotScanAStoreOfItsOwn) {
    fillStore({"1.0.0.0"});
    support::PackageStore other;
    other.put(packageOf("8.0.0.0"), "8.0.0.0");
    const auto first = makeRequest(makeServer("a"));
    const auto second = makeRequest(makeServer("b"));
    startAt(*first);
    startAt(*second, "1.0", other.path());
    EXPECT_EQ(versionTexts(second->getVersions()), Texts{"1.0.0.0"});
    EXPECT_EQ(second->getDownloadDir(), other.path());
}

TEST_F(RequestStore, IsScannedOnceAlsoWhenTheFirstStartFails) {
    const auto failing = makeRequest(std::shared_ptr<TWMQClient>());
    startAt(*failing);
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    EXPECT_TRUE(request->getVersions().empty());
}

TEST_F(RequestStore, IsNotScannedAgainAfterAStop) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    request->stop();
    fillStore({"2.0.0.0"});
    startAt(*request);
    EXPECT_EQ(versionTexts(request->getVersions()), Texts{"1.0.0.0"});
}

TEST_F(RequestStore, EntriesComeBackWithTheNextStart) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    request->removeVersions(request->getVersions(), StoragePosition_Local);
    EXPECT_TRUE(request->getVersions().empty());
    request->stop();
    startAt(*request);
    EXPECT_EQ(versionTexts(request->getVersions()), Texts{"1.0.0.0"});
}

TEST_F(RequestStore, StartKeepsAnEquivalentEntryThatTheCatalogueHas) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    const auto known = support::entry("1.0.0.0");
    request->addVersion(known);
    startAt(*request);
    ASSERT_EQ(request->getVersions().size(), 1U);
    EXPECT_EQ(*request->getVersions().begin(), known);
}

TEST_F(RequestStore, EntriesTellTheIdOfTheServerThatScanned) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer("node-7"));
    startAt(*request);
    EXPECT_EQ((*request->getVersions().begin())->getServerid(), "node-7");
}

TEST_F(RequestStore, EntriesDoNotKeepTheRequestThatScanned) {
    fillStore({"1.0.0.0"});
    auto request = makeRequest(makeServer("node-7"));
    startAt(*request);
    const auto versions = request->getVersions();
    const std::weak_ptr<VersionRequest> watch = request;
    request.reset();
    EXPECT_TRUE(watch.expired());
    ASSERT_EQ(versions.size(), 1U);
    EXPECT_EQ((*versions.begin())->getServerid(), "");
}

TEST_F(RequestStore, RequestsThatStartAtOnceAllGetTheEntries) {
    fillStore({"1.0.0.0", "2.0.0.0"});
    std::vector<std::shared_ptr<VersionRequest>> requests;
    for (const char* id : {"a", "b", "c", "d"}) requests.push_back(makeRequest(makeServer(id)));
    std::vector<std::thread> threads;
    for (const auto& request : requests) threads.emplace_back([&, request] { startAt(*request); });
    for (auto& thread : threads) thread.join();
    for (const auto& request : requests) EXPECT_EQ(versionTexts(request->getVersions()), (Texts{"1.0.0.0", "2.0.0.0"}));
}

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

// --- The server id

TEST_F(RequestServerId, OfAServerIsItsOwn) { EXPECT_EQ(makeRequest(makeServer("node-1"))->getServerId(), "node-1"); }

TEST_F(RequestServerId, OfAServerIsTheServerIdNotTheNodeId) {
    const auto server = TWMQSystemServer::create(mBus, options("node-1", "server-1"));
    EXPECT_EQ(makeRequest(server)->getServerId(), "server-1");
}

TEST_F(RequestServerId, OfAClientIsItsIdOnTheLink) {
    const auto server = makeServer();
    EXPECT_EQ(makeRequest(makeClient("client-1"))->getServerId(), "client-1");
}

TEST_F(RequestServerId, OfAClientWithoutALinkIsEmpty) {
    EXPECT_EQ(makeRequest(makeClient("client-1", ""))->getServerId(), "");
}

TEST_F(RequestServerId, WithoutAQueueIsEmpty) {
    EXPECT_EQ(makeRequest(std::shared_ptr<TWMQClient>())->getServerId(), "");
    EXPECT_EQ(makeRequest(std::shared_ptr<TWMQSystemServer>())->getServerId(), "");
}
