// Asking the update cloud for versions and release notes.
#include "BadHttpServer.h"
#include "CatalogueEntries.h"
#include "GbkTexts.h"
#include "OrvVersion/ReleaseHistory.h"
#include "Public/Base/Host.h"
#include "RequestFixture.h"
#include "UpdateCloud.h"

using namespace Tarnwick::OrvUpdate;
using support::cloudRecord;
using support::entry;
using support::noteList;
using support::noteRecord;
using support::Received;
using support::versionTexts;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

struct Outcome {
    int code = 0;
    std::string message;
    std::thread::id thread;
};

class CloudRequest : public RequestFixture {
protected:
    static Function<void(const ErrorInfo&)> into(const Received<Outcome>& outcomes) {
        return [outcomes](const ErrorInfo& error) {
            outcomes.add({error.errorCode(), error.errorMessage(), std::this_thread::get_id()});
        };
    }
    Outcome askVersions() {
        const Received<Outcome> outcomes;
        mRequest->requestVersionFromHttp(into(outcomes), true);
        return outcomes.first().value_or(Outcome{12345, "no callback", {}});
    }
    Outcome askNotes(bool clear) {
        const Received<Outcome> outcomes;
        mRequest->requestReleaseHistoryFromHttp(into(outcomes), clear);
        return outcomes.first().value_or(Outcome{12345, "no callback", {}});
    }
    Texts texts() { return versionTexts(mRequest->getVersions()); }
    Texts notes() {
        Texts texts;
        for (const auto& note : mRequest->getReleaseHistory()) {
            texts.push_back(note->getVersion().toString() + " " + note->getVersionInfo());
        }
        return texts;
    }
    /// One entry of each source of knowledge.
    void fillCatalogue() {
        mRequest->addVersion(entry("1.0", 1));
        mRequest->addVersion(entry("2.0", 2));
        mRequest->addVersion(entry("3.0", 3));
    }
    std::string versionUrl() { return Access::versionUrls(*mRequest).front()->url; }
    std::string historyUrl() { return Access::historyUrls(*mRequest).front()->url; }

    support::UpdateCloud mCloud;
    std::shared_ptr<VersionRequest> mRequest = makeRequest(std::shared_ptr<TWMQClient>());
};

class CloudDomain : public CloudRequest {};
class CloudUrl : public CloudRequest {};
class CloudVersions : public CloudRequest {};
class CloudNotes : public CloudRequest {};
class CloudResponse : public CloudRequest {};

constexpr char kDefaultHost[] = "update.orv.example";

}  // namespace

// --- The host

TEST_F(CloudDomain, IsTheDefaultWithoutAFile) {
    mCloud.removeDomainFile();
    EXPECT_EQ(Access::upgradeDomain(*mRequest), kDefaultHost);
    EXPECT_EQ(versionUrl().rfind("http://update.orv.example/version?platform=", 0), 0U);
}

TEST_F(CloudDomain, IsWhatTheFileNames) {
    mCloud.domainFile(R"({"domain":"cloud.site.local:8081"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "cloud.site.local:8081");
    EXPECT_EQ(versionUrl().rfind("http://cloud.site.local:8081/version?platform=", 0), 0U);
    EXPECT_EQ(historyUrl().rfind("http://cloud.site.local:8081/api/v1/orvNewVersions?oemid=", 0), 0U);
}

TEST_F(CloudDomain, IsReadAtEachRequest) {
    mCloud.domainFile(R"({"domain":"first"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "first");
    mCloud.domainFile(R"({"domain":"second"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "second");
}

TEST_F(CloudDomain, IsUsedAsItStands) {
    mCloud.domainFile(R"({"domain":" a/b ?c"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), " a/b ?c");
}

TEST_F(CloudDomain, MayBeEmpty) {
    mCloud.domainFile(R"({"domain":""})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "");
    EXPECT_EQ(versionUrl().rfind("http:///version?platform=", 0), 0U);
}

TEST_F(CloudDomain, StandsBesideOtherMembers) {
    mCloud.domainFile(R"({"other":1,"domain":"host","more":{}})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "host");
}

TEST_F(CloudDomain, ThatIsANumberIsItsText) {
    mCloud.domainFile(R"({"domain":5})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "5");
}

namespace {

struct BadDomainFile {
    const char* name;
    const char* text;
};
void PrintTo(const BadDomainFile& one, std::ostream* out) { *out << one.name; }
class CloudDomainFile : public CloudRequest, public testing::WithParamInterface<BadDomainFile> {};

}  // namespace

TEST_P(CloudDomainFile, ThatNamesNoHostGivesTheDefault) {
    mCloud.domainFile(GetParam().text);
    EXPECT_EQ(Access::upgradeDomain(*mRequest), kDefaultHost);
}

INSTANTIATE_TEST_SUITE_P(Table, CloudDomainFile,
                         testing::Values(BadDomainFile{"Empty", ""}, BadDomainFile{"NoJson", "domain=host"},
                                         BadDomainFile{"CutJson", R"({"domain":"ho)"},
                                         BadDomainFile{"NoMember", R"({"host":"a"})"},
                                         BadDomainFile{"OtherCase", R"({"Domain":"a"})"},
                                         BadDomainFile{"EmptyObject", "{}"}, BadDomainFile{"Array", R"(["domain"])"},
                                         BadDomainFile{"Text", R"("domain")"}, BadDomainFile{"Number", "5"},
                                         BadDomainFile{"Null", "null"}),
                         [](const auto& one) { return one.param.name; });

// --- The addresses

TEST_F(CloudUrl, OfVersionsHasEveryKeyInItsPlace) {
    mCloud.domainFile(R"({"domain":"host"})");
    startAt(*mRequest, "1.11.0.8-oem7");
    EXPECT_EQ(versionUrl(),
              "http://host/version?platform=0&softversion=1.11.0.8-oem7&apptype=5&AIType=0&actived=1&oemid=7");
}

TEST_F(CloudUrl, OfNotesHasEveryKeyInItsPlace) {
    mCloud.domainFile(R"({"domain":"host"})");
    startAt(*mRequest, "1.11.0.8-oem7");
    EXPECT_EQ(historyUrl(), "http://host/api/v1/orvNewVersions?oemid=7&actived=1&platform=0&lastVersionNums=5");
}

TEST_F(CloudUrl, PlatformTellsTheWordSizeOfThisProgram) {
    const bool wide = Public::Base::Host::getSoftwareSystemBits() == 64;
    EXPECT_NE(versionUrl().find(wide ? "platform=0&" : "platform=1&"), std::string::npos);
    EXPECT_NE(historyUrl().find(wide ? "platform=0&" : "platform=1&"), std::string::npos);
}

TEST_F(CloudUrl, StandsAloneInItsListAndBearsThePlatform) {
    for (const auto& urls : {Access::versionUrls(*mRequest), Access::historyUrls(*mRequest)}) {
        ASSERT_EQ(urls.size(), 1U);
        EXPECT_EQ(urls.front()->systemType, Public::Base::SystemType_Windows);
        EXPECT_EQ(urls.front()->systemBits, Public::Base::Host::getSoftwareSystemBits());
    }
}

TEST_F(CloudUrl, RequestVersionChangesVersionAndEdition) {
    startAt(*mRequest, "1.0-oem7");
    mRequest->setRequestVersion(Version("2.5-oem9-b12-rabc", 0));
    EXPECT_NE(versionUrl().find("&softversion=2.5-oem9-b12-rabc&"), std::string::npos);
    EXPECT_TRUE(versionUrl().ends_with("&oemid=9"));
    EXPECT_NE(historyUrl().find("?oemid=9&"), std::string::npos);
}

TEST_F(CloudUrl, EmptyRequestVersionGivesWayToTheRunningOne) {
    startAt(*mRequest, "1.0-oem7");
    mRequest->setRequestVersion(Version());
    EXPECT_NE(versionUrl().find("&softversion=1.0-oem7&"), std::string::npos);
    EXPECT_TRUE(versionUrl().ends_with("&oemid=0"));
}

TEST_F(CloudUrl, BeforeAStartHasNoVersionToSend) {
    EXPECT_NE(versionUrl().find("&softversion=&apptype"), std::string::npos);
}

// --- Versions

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

// --- Failures of the request for versions

namespace {

struct FailureCase {
    const char* name;
    int status;
    std::string body;
    int code;
    std::string message;
};
void PrintTo(const FailureCase& one, std::ostream* out) { *out << one.name; }
class CloudFailure : public CloudRequest, public testing::WithParamInterface<FailureCase> {};

const std::vector<FailureCase> kFailures{
    {"NotFound", 404, "", -304, kTextRequestError},
    {"ServerError", 500, "[]", -304, kTextRequestError},
    {"NoContent", 204, "", -304, kTextRequestError},
    {"Created", 201, "[]", -304, kTextRequestError},
    {"Unauthorized", 401, "", -105, kTextAuthFailed},
    {"Timeout", 408, "", -201, kTextNetworkTimeout},
    {"Forbidden", 403, "", -304, kTextRequestError},
    {"NoJson", 200, "sorry", -301, ""},
    {"EmptyBody", 200, "", -301, ""},
    {"CutJson", 200, R"([{"softversion":"1.0")", -301, ""},
    {"MissingMembers", 200, R"({"x":1})", -301, ""},
    {"Number", 200, "5", -301, ""},
};

}  // namespace

TEST_P(CloudFailure, OfVersionsEmptiesTheCloudsPartOfTheCatalogue) {
    fillCatalogue();
    mCloud.versions(GetParam().body, GetParam().status);
    const auto outcome = askVersions();
    EXPECT_EQ(outcome.code, GetParam().code);
    EXPECT_EQ(outcome.message, GetParam().message);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_P(CloudFailure, OfNotesAddsNothing) {
    mCloud.notes(noteList(noteRecord("1.0", "kept")));
    askNotes(false);
    mCloud.notes(GetParam().body, GetParam().status);
    const auto outcome = askNotes(false);
    EXPECT_EQ(outcome.code, GetParam().code);
    EXPECT_EQ(outcome.message, GetParam().message);
    EXPECT_EQ(notes(), Texts{"1.0 kept"});
}

TEST_P(CloudFailure, IsNotLoggedByTheRequests) {
    support::LogRecorder log;
    mCloud.versions(GetParam().body, GetParam().status);
    mCloud.notes(GetParam().body, GetParam().status);
    EXPECT_EQ(askVersions().code, GetParam().code);
    EXPECT_EQ(askNotes(true).code, GetParam().code);
    for (const auto& line : log.entries()) EXPECT_NE(line.file, "OrvUpdate/Src/VersionRequest") << line.text;
}

INSTANTIATE_TEST_SUITE_P(Table, CloudFailure, testing::ValuesIn(kFailures),
                         [](const auto& one) { return one.param.name; });

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

// --- Release notes

TEST_F(CloudNotes, AreAskedForOnceAtThatAddress) {
    startAt(*mRequest, "1.0");
    EXPECT_EQ(askNotes(true).code, 0);
    ASSERT_EQ(mCloud.requests().size(), 1U);
    EXPECT_EQ(mCloud.requests()[0].method, "GET");
    EXPECT_EQ("http://" + mCloud.host() + mCloud.requests()[0].target, historyUrl());
}

TEST_F(CloudNotes, EnterTheSetBeforeTheCallback) {
    mCloud.notes(noteList(noteRecord("2.0", "b") + "," + noteRecord("1.0", "a")));
    const Received<Texts> seen;
    mRequest->requestReleaseHistoryFromHttp([&, seen](const ErrorInfo&) { seen.add(notes()); }, true);
    EXPECT_EQ(seen.first(), (Texts{"1.0 a", "2.0 b"}));
}

TEST_F(CloudNotes, AreAddedToThoseThatAreThere) {
    mCloud.notes(noteList(noteRecord("1.0", "first")));
    askNotes(false);
    mCloud.notes(noteList(noteRecord("1.0", "second") + "," + noteRecord("2.0", "new")));
    EXPECT_EQ(askNotes(false).code, 0);
    EXPECT_EQ(notes(), (Texts{"1.0 first", "2.0 new"}));
}

TEST_F(CloudNotes, AreClearedBeforeTheRequestStarts) {
    mCloud.notes(noteList(noteRecord("1.0")));
    askNotes(false);
    mCloud.hold(support::UpdateCloud::kNotes);
    const Received<Outcome> outcomes;
    mRequest->requestReleaseHistoryFromHttp(into(outcomes), true);
    EXPECT_TRUE(mRequest->getReleaseHistory().empty());
    mCloud.release(support::UpdateCloud::kNotes);
    EXPECT_TRUE(outcomes.waitFor());
    EXPECT_EQ(notes(), Texts{"1.0 note"});
}

TEST_F(CloudNotes, ClearedAreGoneAlsoWhenTheCloudFails) {
    mCloud.notes(noteList(noteRecord("1.0")));
    askNotes(false);
    mCloud.notes("", 500);
    EXPECT_EQ(askNotes(true).code, -304);
    EXPECT_TRUE(notes().empty());
}

TEST_F(CloudNotes, LeaveTheVersionsAlone) {
    fillCatalogue();
    mCloud.notes("", 500);
    askNotes(true);
    EXPECT_EQ(texts(), (Texts{"1.0", "2.0", "3.0"}));
}

TEST_F(CloudNotes, StayWhenVersionsAreAskedFor) {
    mCloud.notes(noteList(noteRecord("1.0")));
    askNotes(false);
    mCloud.versions("", 500);
    askVersions();
    EXPECT_EQ(notes(), Texts{"1.0 note"});
}

TEST_F(CloudNotes, AreStampedWithThePlatformOfTheAddress) {
    mCloud.notes(noteList(noteRecord("1.0")));
    const auto url = std::make_shared<HttpUrl>(
        HttpUrl{Public::Base::SystemType_Linux, Public::Base::SystemBits_32, mCloud.url(support::UpdateCloud::kNotes)});
    const Received<ReleaseHistorySet> sets;
    Access::askHistories(*mRequest, url,
                         [sets](const ErrorInfo&, const ReleaseHistorySet& histories) { sets.add(histories); });
    const auto histories = sets.first().value_or(ReleaseHistorySet());
    ASSERT_EQ(histories.size(), 1U);
    EXPECT_EQ((*histories.begin())->getSystemType(), Public::Base::SystemType_Linux);
    EXPECT_EQ((*histories.begin())->getSystemBits(), Public::Base::SystemBits_32);
}

TEST_F(CloudNotes, OfAnotherEditionAreLeftOut) {
    startAt(*mRequest, "1.0-oem7");
    mCloud.notes(noteList(noteRecord("1.0") + "," + noteRecord("2.0-oem7", "own")));
    askNotes(true);
    EXPECT_EQ(notes(), Texts{"2.0-oem7 own"});
}

TEST_F(CloudNotes, EmptyListSucceeds) {
    EXPECT_EQ(askNotes(true).code, 0);
    EXPECT_TRUE(notes().empty());
}

TEST_F(CloudNotes, WithoutAWorkerAreRefusedOnTheCallersThread) {
    mWorker.reset();
    mRequest = makeRequest(std::shared_ptr<TWMQClient>());
    const auto outcome = askNotes(false);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.thread, std::this_thread::get_id());
}

TEST_F(CloudNotes, CallbackOfARequestThatIsGoneIsNotCalled) {
    mCloud.hold(support::UpdateCloud::kNotes);
    const Received<Outcome> outcomes;
    mRequest->requestReleaseHistoryFromHttp(into(outcomes), true);
    ASSERT_TRUE(mCloud.waitForHeld(support::UpdateCloud::kNotes));
    const std::weak_ptr<VersionRequest> watch = mRequest;
    mRequest.reset();
    EXPECT_TRUE(watch.expired());
    mCloud.release(support::UpdateCloud::kNotes);
    mRequest = makeRequest(std::shared_ptr<TWMQClient>());
    askNotes(true);
    EXPECT_EQ(outcomes.count(), 0U);
}

// --- The agent's name

namespace {

struct AgentCase {
    int role;
    const char* agent;
};
void PrintTo(const AgentCase& one, std::ostream* out) { *out << one.role; }
class CloudAgent : public CloudRequest, public testing::WithParamInterface<AgentCase> {};

}  // namespace

TEST_P(CloudAgent, TellsTheRoleOfTheProgram) {
    mRequest = makeRequest(std::shared_ptr<TWMQClient>(), static_cast<VersionType>(GetParam().role));
    askVersions();
    askNotes(true);
    ASSERT_EQ(mCloud.requests().size(), 2U);
    EXPECT_EQ(mCloud.requests()[0].header("User-Agent"), GetParam().agent);
    EXPECT_EQ(mCloud.requests()[1].header("User-Agent"), GetParam().agent);
}

INSTANTIATE_TEST_SUITE_P(Table, CloudAgent,
                         testing::Values(AgentCase{0, "Orv"}, AgentCase{1, "Orv"}, AgentCase{2, "OrvClient"},
                                         AgentCase{3, "OrvServer"}, AgentCase{4, "VideoWall"},
                                         AgentCase{5, "Analytics"}, AgentCase{6, "Orv"}),
                         [](const auto& one) { return "Role" + std::to_string(one.param.role); });

// --- What a response means

namespace {

std::shared_ptr<Public::Network::HTTPClientResponse> response(int status) {
    const auto header = std::make_shared<Public::Network::HTTPHeader>();
    header->statuscode = status;
    return std::make_shared<Public::Network::HTTPClientResponse>(
        header, std::make_shared<Public::Network::ReadContent>(Public::Base::SharedBuffer()));
}

struct StatusCase {
    int status;
    int code;
    std::string message;
};
void PrintTo(const StatusCase& one, std::ostream* out) { *out << one.status; }
class CloudStatus : public testing::TestWithParam<StatusCase> {};

}  // namespace

TEST_P(CloudStatus, HasItsCodeAndMessage) {
    const ErrorInfo error = Access::checkHttpResponse(response(GetParam().status));
    EXPECT_EQ(error.errorCode(), GetParam().code);
    EXPECT_EQ(error.errorMessage(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CloudStatus,
    testing::Values(StatusCase{200, 0, ""}, StatusCase{408, -201, kTextNetworkTimeout},
                    StatusCase{0, -201, kTextNetworkTimeout}, StatusCase{401, -105, kTextAuthFailed},
                    StatusCase{206, -304, kTextRequestError}, StatusCase{302, -304, kTextRequestError},
                    StatusCase{400, -304, kTextRequestError}, StatusCase{503, -304, kTextRequestError}),
    [](const auto& one) { return "Status" + std::to_string(one.param.status); });

TEST_F(CloudResponse, ThatIsMissingIsATimeOut) {
    const ErrorInfo error = Access::checkHttpResponse(nullptr);
    EXPECT_EQ(error.errorCode(), -201);
    EXPECT_EQ(error.errorMessage(), kTextNetworkTimeout);
}

TEST_F(CloudResponse, MessagesAreTheFixedTextsInTheirCodePage) {
    EXPECT_EQ(Access::checkHttpResponse(nullptr).errorMessage(), "\xCD\xF8\xC2\xE7\xB3\xAC\xCA\xB1");
    EXPECT_EQ(Access::checkHttpResponse(response(401)).errorMessage(),
              "\xC8\xA8\xCF\xDE\xC8\xCF\xD6\xA4\xCA\xA7\xB0\xDC");
    EXPECT_EQ(Access::checkHttpResponse(response(500)).errorMessage(), "\xC7\xEB\xC7\xF3\xB4\xED\xCE\xF3");
}
