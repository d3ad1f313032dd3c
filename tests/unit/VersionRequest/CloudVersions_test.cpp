// Asking the update cloud for versions.
#include "BadHttpServer.h"
#include "CloudRequestFixture.h"
#include "GbkTexts.h"
#include "Public/Base/Host.h"

using namespace Tarnwick::OrvUpdate;
using support::cloudRecord;
using support::entry;
using support::Received;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

class CloudVersions : public CloudRequest {};

}  // namespace

TEST_F(CloudVersions, AreAskedForOnceAtThatAddress) {
    startAt(*mRequest, "1.0");
    EXPECT_EQ(askVersions().code, 0);
    ASSERT_EQ(mCloud.requests().size(), 1U);
    EXPECT_EQ(mCloud.requests()[0].method, "GET");
    EXPECT_EQ("http://" + mCloud.host() + mCloud.requests()[0].target, versionUrl());
}

TEST_F(CloudVersions, EnterTheCatalogue) {
    mCloud.versions("[" + cloudRecord("2.0", "http://host/2.exe") + "," + cloudRecord("3.0", "http://host/3.exe") +
                    "]");
    const auto outcome = askVersions();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, "");
    EXPECT_EQ(texts(), (Texts{"2.0", "3.0"}));
    EXPECT_EQ((*mRequest->getVersions().begin())->getUrl(), "http://host/2.exe");
}

TEST_F(CloudVersions, EnterTheCatalogueBeforeTheCallback) {
    mCloud.versions("[" + cloudRecord("2.0", "http://host/2.exe") + "]");
    const Received<Texts> seen;
    mRequest->requestVersionFromHttp([&, seen](const ErrorInfo&) { seen.add(texts()); }, true);
    EXPECT_EQ(seen.first(), Texts{"2.0"});
}

TEST_F(CloudVersions, AreStampedWithThePlatformOfTheAddress) {
    mCloud.versions("[" + cloudRecord("2.0", "http://host/2.exe") + "]");
    const auto url = std::make_shared<HttpUrl>(
        HttpUrl{Public::Base::SystemType_Linux, Public::Base::SystemBits_32, mCloud.url("/version?x=1")});
    const Received<VersionSet> sets;
    Access::askVersions(*mRequest, url, [sets](const ErrorInfo&, const VersionSet& versions) { sets.add(versions); });
    const auto versions = sets.first().value_or(VersionSet());
    ASSERT_EQ(versions.size(), 1U);
    EXPECT_EQ((*versions.begin())->getSystemType(), Public::Base::SystemType_Linux);
    EXPECT_EQ((*versions.begin())->getSystemBits(), Public::Base::SystemBits_32);
}

TEST_F(CloudVersions, AreCloudEntriesOfThisPlatform) {
    mCloud.versions("[" + cloudRecord("2.0", "http://host/2.exe") + "]");
    askVersions();
    ASSERT_EQ(texts().size(), 1U);
    const auto version = *mRequest->getVersions().begin();
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_Cloud);
    EXPECT_EQ(version->getVersionSource(), VersionSource_Online);
    EXPECT_EQ(version->getVersionType(), VersionType_All);
    EXPECT_EQ(version->getSystemType(), Public::Base::SystemType_Windows);
    EXPECT_EQ(version->getSystemBits(), Public::Base::Host::getSoftwareSystemBits());
    EXPECT_EQ(version->getDescribe(), "about 2.0");
}

TEST_F(CloudVersions, LieInTheStoreOfTheRequest) {
    mRequest = makeRequest(makeServer("node-5"));
    startAt(*mRequest, "1.0");
    mCloud.versions("[" + cloudRecord("2.0", "http://host/2.exe") + "]");
    askVersions();
    ASSERT_EQ(texts().size(), 1U);
    const auto version = *mRequest->getVersions().begin();
    EXPECT_EQ(version->getPackageFile(), mStore.path() + "/Online/Windows x64 All/2.0/2.0.exe");
    EXPECT_EQ(version->getServerid(), "node-5");
}

TEST_F(CloudVersions, OfAnotherEditionAreLeftOut) {
    startAt(*mRequest, "1.0-oem7");
    mCloud.versions("[" + cloudRecord("2.0", "http://a") + "," + cloudRecord("2.0-oem7", "http://b") + "]");
    askVersions();
    EXPECT_EQ(texts(), Texts{"2.0-oem7"});
}

TEST_F(CloudVersions, ReplaceTheCloudsEarlierAnswer) {
    fillCatalogue();
    mCloud.versions("[" + cloudRecord("5.0", "http://a") + "]");
    askVersions();
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0", "5.0"}));
}

TEST_F(CloudVersions, EmptyListSucceedsAndRemovesTheCloudsEntries) {
    fillCatalogue();
    mCloud.versions("[]");
    EXPECT_EQ(askVersions().code, 0);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_F(CloudVersions, ReplaceAnEquivalentLocalEntry) {
    mRequest->addVersion(entry("2.0", 1));
    mCloud.versions("[" + cloudRecord("2.0", "http://a") + "]");
    askVersions();
    ASSERT_EQ(texts().size(), 1U);
    EXPECT_EQ((*mRequest->getVersions().begin())->getStoragePosition(), StoragePosition_Cloud);
}

TEST_F(CloudVersions, ComeAlsoAsOneRecord) {
    mCloud.versions(cloudRecord("2.0", "http://a"));
    EXPECT_EQ(askVersions().code, 0);
    EXPECT_EQ(texts(), Texts{"2.0"});
}

TEST_F(CloudVersions, OfTwoRequestsAreThoseOfTheLater) {
    mCloud.versions("[" + cloudRecord("2.0", "http://a") + "]");
    askVersions();
    mCloud.versions("[" + cloudRecord("3.0", "http://a") + "]");
    askVersions();
    EXPECT_EQ(texts(), Texts{"3.0"});
}

TEST_F(CloudVersions, OverlappingRequestsEachEndAndTheLastToFinishDecides) {
    mCloud.versions("[" + cloudRecord("2.0", "http://a") + "]");
    mCloud.hold(support::UpdateCloud::kVersions);
    const Received<Outcome> slow;
    mRequest->requestVersionFromHttp(into(slow), true);
    ASSERT_TRUE(mCloud.waitForHeld(support::UpdateCloud::kVersions));
    mRequest->updateVersions({entry("9.0")}, StoragePosition_Cloud);  // what a faster request has brought
    EXPECT_EQ(slow.count(), 0U);
    mCloud.release(support::UpdateCloud::kVersions);
    ASSERT_TRUE(slow.waitFor());
    EXPECT_EQ(texts(), Texts{"2.0"});
}

TEST_F(CloudVersions, ManyRequestsAtOnceEachCallBackOnce) {
    mCloud.versions("[" + cloudRecord("2.0", "http://a") + "]");
    const Received<Outcome> outcomes;
    for (int count = 0; count < 20; ++count) mRequest->requestVersionFromHttp(into(outcomes), count % 2 == 0);
    ASSERT_TRUE(outcomes.waitFor(20));
    for (const auto& outcome : outcomes.values()) EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(texts(), Texts{"2.0"});
}

TEST_F(CloudVersions, RequestReturnsBeforeTheAnswer) {
    mCloud.hold(support::UpdateCloud::kVersions);
    const Received<Outcome> outcomes;
    mRequest->requestVersionFromHttp(into(outcomes), true);
    ASSERT_TRUE(mCloud.waitForHeld(support::UpdateCloud::kVersions));
    EXPECT_EQ(outcomes.count(), 0U);
    mCloud.release(support::UpdateCloud::kVersions);
    ASSERT_TRUE(outcomes.waitFor());
    EXPECT_NE(outcomes.values()[0].thread, std::this_thread::get_id());
}

TEST_F(CloudVersions, CallbackMayAskAgain) {
    const Received<Outcome> outcomes;
    mRequest->requestVersionFromHttp(
        [&, outcomes](const ErrorInfo&) { mRequest->requestVersionFromHttp(into(outcomes), true); }, true);
    EXPECT_TRUE(outcomes.waitFor());
    EXPECT_EQ(mCloud.requests().size(), 2U);
}

TEST_F(CloudVersions, CallbackMayBeEmpty) {
    mCloud.versions("[" + cloudRecord("2.0", "http://a") + "]");
    mRequest->requestVersionFromHttp({}, true);
    EXPECT_TRUE(support::eventually([&] { return texts() == Texts{"2.0"}; }));
}

TEST_F(CloudVersions, CallbackOfARequestThatIsGoneIsNotCalled) {
    mCloud.hold(support::UpdateCloud::kVersions);
    const Received<Outcome> outcomes;
    mRequest->requestVersionFromHttp(into(outcomes), true);
    ASSERT_TRUE(mCloud.waitForHeld(support::UpdateCloud::kVersions));
    const std::weak_ptr<VersionRequest> watch = mRequest;
    mRequest.reset();
    EXPECT_TRUE(watch.expired());
    mCloud.release(support::UpdateCloud::kVersions);
    const Received<Outcome> later;  // an exchange that ends after the first one
    mRequest = makeRequest(std::shared_ptr<TWMQClient>());
    mRequest->requestVersionFromHttp(into(later), true);
    ASSERT_TRUE(later.waitFor());
    EXPECT_TRUE(mCloud.waitForRequests(2));
    EXPECT_EQ(outcomes.count(), 0U);
}

TEST_F(CloudVersions, CallbackMayLetGoOfTheRequest) {
    const std::weak_ptr<VersionRequest> watch = mRequest;
    const Received<Outcome> outcomes;
    const auto last = std::make_shared<std::shared_ptr<VersionRequest>>(mRequest);
    mRequest->requestVersionFromHttp(
        [=](const ErrorInfo& error) {
            last->reset();
            outcomes.add({error.errorCode(), error.errorMessage(), {}});
        },
        true);
    mRequest.reset();
    EXPECT_TRUE(outcomes.waitFor());
    EXPECT_TRUE(support::eventually([&] { return watch.expired(); }));
}

TEST_F(CloudVersions, ClosuresGoWithTheAnswer) {
    const auto held = std::make_shared<int>(0);
    const Received<Outcome> outcomes;
    mRequest->requestVersionFromHttp(
        [outcomes, held](const ErrorInfo& error) {
            outcomes.add({error.errorCode(), "", {}});
        },
        true);
    ASSERT_TRUE(outcomes.waitFor());
    EXPECT_TRUE(support::eventually([&] { return held.use_count() == 1; }));
}

TEST_F(CloudVersions, WithoutAWorkerAreRefusedOnTheCallersThread) {
    mWorker.reset();
    mRequest = makeRequest(std::shared_ptr<TWMQClient>());
    fillCatalogue();
    const auto outcome = askVersions();
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.message, "");
    EXPECT_EQ(outcome.thread, std::this_thread::get_id());
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(CloudVersions, FromAnAddressThatIsNoneAreRefused) {
    mCloud.domainFile(R"({"domain":"no host"})");
    fillCatalogue();
    EXPECT_EQ(askVersions().code, -1);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_F(CloudVersions, FromACloudThatDoesNotListenTimeOut) {
    uint16_t port = 0;
    {
        const support::HttpFileServer gone;
        port = gone.port();
    }
    mCloud.domainFile(R"({"domain":"127.0.0.1:)" + std::to_string(port) + "\"}");
    fillCatalogue();
    const auto outcome = askVersions();
    EXPECT_EQ(outcome.code, -201);
    EXPECT_EQ(outcome.message, kTextNetworkTimeout);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_F(CloudVersions, CutShortAreATimeOut) {
    support::BadHttpServer cutting;
    cutting.script("/version", support::BadScript::wrongLength("[]", 500));
    mCloud.domainFile(R"({"domain":")" + cutting.host() + "\"}");
    fillCatalogue();
    EXPECT_EQ(askVersions().code, -201);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_F(CloudVersions, BadRecordsOfAListAreLeftOutOfIt) {
    mCloud.versions("[{},5,null," + cloudRecord("2.0", "http://a") + "]");
    EXPECT_EQ(askVersions().code, 0);
    EXPECT_EQ(texts(), Texts{"2.0"});
}

TEST_F(CloudVersions, FailureGivesTheInnerRequestAnEmptySet) {
    mCloud.versions("", 404);
    const auto url = Access::versionUrls(*mRequest).front();
    const Received<size_t> sizes;
    Access::askVersions(*mRequest, url, [sizes](const ErrorInfo& error, const VersionSet& versions) {
        sizes.add(error ? versions.size() : 99);
    });
    EXPECT_EQ(sizes.first(), 0U);
}
