// Making and starting a VersionRequest, and whose id it tells.
#include "VersionRequest.h"

#include "RecordingNodes.h"
#include "RequestFrameFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::versionTexts;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

constexpr int kError = 2;

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
