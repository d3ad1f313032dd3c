// Answers to peers that ask for this node's catalogue.
#include "CatalogueTopicsFixture.h"
#include "GbkTexts.h"

using namespace Tarnwick::OrvUpdate;
using support::cloudRecord;
using support::noteList;
using support::noteRecord;
using support::Received;
using support::UpdateCloud;
using Access = VersionRequestAccess;

namespace {

class QueryTopics : public CatalogueTopics {};
class NotifyTopic : public CatalogueTopics {};

}  // namespace

// --- Queries

TEST_F(QueryTopics, VersionGivesTheCatalogueAsItStands) {
    const auto answer = ask(kQueryVersion);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.message, "");
    EXPECT_EQ(answer.body, document(mRequest->getVersions()));
    EXPECT_EQ(versionsOf(answer), (Texts{"1.0", "2.0", "3.0"}));
}

TEST_F(QueryTopics, VersionOfAnEmptyCatalogueGivesTheEmptyListDocument) {
    mRequest->updateVersions({}, StoragePosition_Local);
    mRequest->removeVersions();
    const auto answer = ask(kQueryVersion);
    EXPECT_EQ(answer.code, 0);
    EXPECT_TRUE(answer.hasBody);
    EXPECT_EQ(answer.body, document(VersionSet()));
}

TEST_F(QueryTopics, VersionAsksNoCloudAndChangesNothing) {
    const auto before = mRequest->getVersions();
    ask(kQueryVersion);
    EXPECT_TRUE(mCloud.requests().empty());
    EXPECT_EQ(mRequest->getVersions(), before);
}

TEST_F(QueryTopics, VersionDoesNotReadTheBody) {
    const std::string url = Access::versionUrls(*mRequest).front()->url;
    EXPECT_EQ(askWith(kQueryVersion, "9.9").code, 0);
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    EXPECT_EQ(ask(kQueryVersion, &other).code, 0);
    EXPECT_EQ(Access::versionUrls(*mRequest).front()->url, url);
}

TEST_F(QueryTopics, NotesGivesTheNotesAsTheyStand) {
    addNote("1.0", "first");
    addNote("2.0", "second");
    const auto answer = ask(kQueryNotes);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.message, "");
    EXPECT_EQ(answer.body, document(mRequest->getReleaseHistory()));
    EXPECT_EQ(notesOf(answer), (Texts{"1.0 first", "2.0 second"}));
}

TEST_F(QueryTopics, NotesOfNoneGivesTheEmptyListDocument) {
    const auto answer = ask(kQueryNotes);
    EXPECT_EQ(answer.code, 0);
    EXPECT_TRUE(answer.hasBody);
    EXPECT_EQ(answer.body, document(ReleaseHistorySet()));
}

TEST_F(QueryTopics, NotesAsksNoCloudAndDoesNotReadTheBody) {
    addNote("1.0", "first");
    EXPECT_EQ(notesOf(askWith(kQueryNotes, "9.9")), Texts{"1.0 first"});
    EXPECT_TRUE(mCloud.requests().empty());
    EXPECT_EQ(mRequest->getReleaseHistory().size(), 1U);
}

// --- Asking the cloud for versions

TEST_F(RequestVersionTopic, AnswersWithTheDiskAndTheCloud) {
    mCloud.versions("[" + cloudRecord("5.0", "http://a") + "]");
    const auto answer = askWith(kRequestVersion, "1.0");
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.message, "");
    EXPECT_EQ(versionsOf(answer), (Texts{"1.0", "5.0"}));
    EXPECT_EQ(answer.body, document(mRequest->getVersions()));
}

TEST_F(RequestVersionTopic, ReportsTheVersionOfTheBodyToTheCloud) {
    askWith(kRequestVersion, "4.4-oem2");
    EXPECT_NE(lastTarget(UpdateCloud::kVersions).find("&softversion=4.4-oem2&"), std::string::npos);
    EXPECT_TRUE(lastTarget(UpdateCloud::kVersions).ends_with("&oemid=2"));
}

TEST_F(RequestVersionTopic, VersionOfTheBodyStaysForLaterRequests) {
    askWith(kRequestVersion, "4.4");
    EXPECT_NE(Access::versionUrls(*mRequest).front()->url.find("&softversion=4.4&"), std::string::npos);
}

TEST_F(RequestVersionTopic, KeepsTheRequestVersionWithoutABody) {
    mRequest->setRequestVersion(Version("7.7", 0));
    EXPECT_EQ(ask(kRequestVersion).code, 0);
    EXPECT_NE(lastTarget(UpdateCloud::kVersions).find("&softversion=7.7&"), std::string::npos);
}

TEST_F(RequestVersionTopic, KeepsTheRequestVersionWithABodyOfAnotherRecord) {
    mRequest->setRequestVersion(Version("7.7", 0));
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    other.body = "4.4";
    EXPECT_EQ(ask(kRequestVersion, &other).code, 0);
    EXPECT_NE(lastTarget(UpdateCloud::kVersions).find("&softversion=7.7&"), std::string::npos);
}

TEST_F(RequestVersionTopic, TextThatIsNoVersionLeavesTheRunningOne) {
    mRequest->setRequestVersion(Version("7.7", 0));
    askWith(kRequestVersion, "../../etc?x=1&y");
    EXPECT_NE(lastTarget(UpdateCloud::kVersions).find("&softversion=1.0.0.0&"), std::string::npos);
}

TEST_F(RequestVersionTopic, DropsWhatIsNotOnThisDiskBeforeItAsks) {
    mCloud.hold(UpdateCloud::kVersions);
    const auto body = notifyBody("1.0");
    mAsker.send("server", kRequestVersion, &body);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    EXPECT_EQ(support::versionTexts(mRequest->getVersions()), Texts{"1.0"});
    mCloud.release(UpdateCloud::kVersions);
    EXPECT_TRUE(mAsker.answers().waitFor());
}

TEST_F(RequestVersionTopic, AnswersOnlyWhenTheCloudHas) {
    mCloud.hold(UpdateCloud::kVersions);
    const auto body = notifyBody("1.0");
    mAsker.send("server", kRequestVersion, &body);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    ask(kQueryVersion);  // is answered meanwhile
    EXPECT_EQ(mAsker.answers().count(), 1U);
    mCloud.release(UpdateCloud::kVersions);
    EXPECT_TRUE(mAsker.answers().waitFor(2));
}

TEST_F(RequestVersionTopic, AnswersTheCloudsFailureWithTheVersionsOnDisk) {
    mCloud.versions("", 401);
    const auto answer = askWith(kRequestVersion, "1.0");
    EXPECT_EQ(answer.code, -105);
    EXPECT_EQ(answer.message, kTextAuthFailed);
    EXPECT_TRUE(answer.hasBody);
    EXPECT_EQ(versionsOf(answer), Texts{"1.0"});
}

TEST_F(RequestVersionTopic, AnswersABadDocumentWithItsCode) {
    mCloud.versions("sorry");
    EXPECT_EQ(askWith(kRequestVersion, "1.0").code, -301);
}

TEST_F(RequestVersionTopic, ServesTwoAtOnce) {
    mCloud.versions("[" + cloudRecord("5.0", "http://a") + "]");
    mCloud.hold(UpdateCloud::kVersions);
    const auto body = notifyBody("1.0");
    mAsker.send("server", kRequestVersion, &body);
    mAsker.send("server", kRequestVersion, &body);
    ASSERT_TRUE(mCloud.waitForRequests(2));
    mCloud.release(UpdateCloud::kVersions);
    ASSERT_TRUE(mAsker.answers().waitFor(2));
    for (const auto& answer : mAsker.answers().values()) EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(support::versionTexts(mRequest->getVersions()), (Texts{"1.0", "5.0"}));
}

TEST_F(RequestVersionTopic, AnswersTheFirstSenderOfAForwardedRequest) {
    mCloud.versions("[" + cloudRecord("5.0", "http://a") + "]");
    const auto middle = makeServer("middle");
    const auto middleRequest = makeRequest(middle);
    startAt(*middleRequest);
    const auto client = makeClient("client", "middle");
    Asker asker(client->connection());
    const auto body = notifyBody("1.0");
    const auto answer = asker.ask("server", kRequestVersion, &body);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0);
    EXPECT_EQ(versionsOf(*answer), (Texts{"1.0", "5.0"}));
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

TEST_F(RequestVersionTopic, SendsNothingWhenTheServiceHasGone) {
    mCloud.hold(UpdateCloud::kVersions);
    mAsker.send("server", kRequestVersion);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    stopService();
    mCloud.release(UpdateCloud::kVersions);
    ASSERT_TRUE(repliesOver());
    startAt(*mRequest, "1.0.0.0");
    ask(kQueryVersion);  // comes behind anything that was sent before
    EXPECT_EQ(mAsker.answers().count(), 1U);
}

TEST_F(RequestVersionTopic, SendsNothingWhenTheSenderHasGone) {
    mCloud.hold(UpdateCloud::kVersions);
    mAsker.send("server", kRequestVersion);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    mAsker = Asker(nullptr);
    mPeer.reset();
    mCloud.versions("[]");
    mCloud.release(UpdateCloud::kVersions);
    EXPECT_TRUE(repliesOver());
    EXPECT_EQ(support::versionTexts(mRequest->getVersions()), Texts{"1.0"});
}

TEST_F(RequestVersionTopic, DeferredReplyKeepsTheRequestUntilItIsOver) {
    mCloud.hold(UpdateCloud::kVersions);
    mAsker.send("server", kRequestVersion);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kVersions));
    EXPECT_GT(mRequest.use_count(), 1);
    mCloud.release(UpdateCloud::kVersions);
    EXPECT_TRUE(mAsker.answers().waitFor());
    EXPECT_TRUE(repliesOver());
}

// --- Asking the cloud for release notes

TEST_F(RequestNotesTopic, AnswersWithTheCloudsNotesAlone) {
    addNote("1.0", "old");
    mCloud.notes(noteList(noteRecord("2.0", "new")));
    const auto answer = askWith(kRequestNotes, "1.0");
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.message, "");
    EXPECT_EQ(notesOf(answer), Texts{"2.0 new"});
    EXPECT_EQ(answer.body, document(mRequest->getReleaseHistory()));
}

TEST_F(RequestNotesTopic, ReportsTheEditionOfTheBodyToTheCloud) {
    askWith(kRequestNotes, "4.4-oem2");
    EXPECT_NE(lastTarget(UpdateCloud::kNotes).find("?oemid=2&"), std::string::npos);
}

TEST_F(RequestNotesTopic, KeepsTheRequestVersionWithoutABody) {
    mRequest->setRequestVersion(Version("7.7-oem5", 0));
    EXPECT_EQ(ask(kRequestNotes).code, 0);
    EXPECT_NE(lastTarget(UpdateCloud::kNotes).find("?oemid=5&"), std::string::npos);
}

TEST_F(RequestNotesTopic, AnswersTheCloudsFailureWithNoNotes) {
    addNote("1.0", "old");
    mCloud.notes("", 500);
    const auto answer = askWith(kRequestNotes, "1.0");
    EXPECT_EQ(answer.code, -304);
    EXPECT_EQ(answer.message, kTextRequestError);
    EXPECT_TRUE(answer.hasBody);
    EXPECT_EQ(answer.body, document(ReleaseHistorySet()));
}

TEST_F(RequestNotesTopic, LeavesTheVersionsAlone) {
    askWith(kRequestNotes, "1.0");
    EXPECT_EQ(support::versionTexts(mRequest->getVersions()), (Texts{"1.0", "2.0", "3.0"}));
}

TEST_F(RequestNotesTopic, AnswersOnlyWhenTheCloudHas) {
    mCloud.hold(UpdateCloud::kNotes);
    mAsker.send("server", kRequestNotes);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kNotes));
    EXPECT_EQ(mAsker.answers().count(), 0U);
    mCloud.release(UpdateCloud::kNotes);
    EXPECT_TRUE(mAsker.answers().waitFor());
}

TEST_F(RequestNotesTopic, SendsNothingWhenTheServiceHasGone) {
    mCloud.hold(UpdateCloud::kNotes);
    mAsker.send("server", kRequestNotes);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kNotes));
    stopService();
    mCloud.release(UpdateCloud::kNotes);
    ASSERT_TRUE(repliesOver());
    startAt(*mRequest, "1.0.0.0");
    ask(kQueryNotes);
    EXPECT_EQ(mAsker.answers().count(), 1U);
}

// --- Notifications

TEST_F(NotifyTopic, OfAPeerCallsTheHost) {
    const Received<int> calls;
    mRequest->registerVersionRequestNotify([calls] { calls.add(1); });
    const auto answer = ask(kNotify);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.message, "");
    EXPECT_FALSE(answer.hasBody);
    EXPECT_EQ(calls.count(), 1U);
}

TEST_F(NotifyTopic, WithoutACallbackIsAnsweredAndNoMore) {
    const auto before = mRequest->getVersions();
    EXPECT_EQ(ask(kNotify).code, 0);
    EXPECT_EQ(mRequest->getVersions(), before);
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(NotifyTopic, OfTheNodeItselfIsIgnored) {
    const Received<int> calls;
    mRequest->registerVersionRequestNotify([calls] { calls.add(1); });
    Asker self(mServer->connectionTo("server", ""));
    ASSERT_NE(self.send("server", kNotify), 0U);
    ASSERT_TRUE(self.ask("server", kQueryVersion));
    ASSERT_TRUE(mAsker.ask("server", kNotify));
    EXPECT_EQ(calls.count(), 1U);  // that of the peer
    EXPECT_EQ(self.answers().count(), 1U);
}

TEST_F(NotifyTopic, OfAnotherTargetIsPassedOn) {
    const Received<std::string> calls;
    const auto far = startFarAndNoteCalls(calls);
    const auto client = makeClient();
    Asker asker(client->connection());
    const auto answer = asker.ask("far", kNotify);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0);
    EXPECT_EQ(calls.values(), Texts{"far"});
}

TEST_F(NotifyTopic, OfAServerReachesTheServiceOfAClientToo) {
    const auto client = makeClient();
    const auto request = makeRequest(client);
    const Received<int> calls;
    request->registerVersionRequestNotify([calls] { calls.add(1); });
    startAt(*request);
    Asker asker(mServer->connectionTo("client", ""));
    const auto answer = asker.ask("client", kNotify);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0);
    EXPECT_EQ(calls.count(), 1U);
}

TEST_F(NotifyTopic, CallbackMayAskTheCloudAndTheCatalogue) {
    const Received<size_t> sizes;
    mRequest->registerVersionRequestNotify([this, sizes] {
        mRequest->requestVersionFromHttp([this, sizes](const ErrorInfo&) { sizes.add(mRequest->getVersions().size()); },
                                         true);
    });
    EXPECT_EQ(ask(kNotify).code, 0);
    EXPECT_EQ(sizes.first(), 2U);
}
