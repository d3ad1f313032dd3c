// Answers that follow once the update cloud has been asked, where something comes in between.
#include "CatalogueTopicsFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::cloudRecord;
using support::noteList;
using support::noteRecord;
using support::Received;
using support::UpdateCloud;

namespace {

class CatalogueReplies : public CatalogueTopics {};

struct Topic {
    const char* name;
    const char* topic;
    const char* path;

    friend void PrintTo(const Topic& topic, std::ostream* out) { *out << topic.name; }
};

class EachRequestTopic : public CatalogueReplies, public testing::WithParamInterface<Topic> {
protected:
    QueueAnswer ask(const Tarnwick::Protocol::TWPacket* body = nullptr) {
        return CatalogueTopics::ask(GetParam().topic, body);
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Catalogue, EachRequestTopic,
                         testing::Values(Topic{"Versions", kRequestVersion, UpdateCloud::kVersions},
                                         Topic{"Notes", kRequestNotes, UpdateCloud::kNotes}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(EachRequestTopic, AnswersACloudThatCannotBeReached) {
    mCloud.domainFile(R"({"domain":"127.0.0.1:1"})");
    const auto answer = ask();
    EXPECT_EQ(answer.code, -201);
    EXPECT_TRUE(answer.hasBody);
}

TEST_P(EachRequestTopic, AnswersTwoSendersAtOnceEachOnce) {
    const auto other = makeServer("other");
    Asker second(other->connectionTo("server", ""));
    mCloud.hold(GetParam().path);
    mAsker.send("server", GetParam().topic);
    second.send("server", GetParam().topic);
    ASSERT_TRUE(mCloud.waitForRequests(2));
    mCloud.release(GetParam().path);
    ASSERT_TRUE(mAsker.answers().waitFor());
    ASSERT_TRUE(second.answers().waitFor());
    ASSERT_TRUE(repliesOver());
    EXPECT_EQ(mAsker.answers().count(), 1U);
    EXPECT_EQ(second.answers().count(), 1U);
}

TEST_P(EachRequestTopic, AnswersTheOthersWhenOneSenderHasGone) {
    auto other = makeServer("other");
    Asker second(other->connectionTo("server", ""));
    mCloud.hold(GetParam().path);
    second.send("server", GetParam().topic);
    mAsker.send("server", GetParam().topic);
    ASSERT_TRUE(mCloud.waitForRequests(2));
    second = Asker(nullptr);
    other.reset();
    mCloud.release(GetParam().path);
    ASSERT_TRUE(mAsker.answers().waitFor());
    EXPECT_EQ(mAsker.answers().values().front().code, 0);
    EXPECT_TRUE(repliesOver());
}

TEST_P(EachRequestTopic, ServesAnotherPeerWhileItWaits) {
    mCloud.hold(GetParam().path);
    mAsker.send("server", GetParam().topic);
    ASSERT_TRUE(mCloud.waitForHeld(GetParam().path));
    const auto newcomer = makeServer("newcomer");
    Asker second(newcomer->connectionTo("server", ""));
    EXPECT_EQ(second.ask("server", kQueryVersion).value_or(QueueAnswer{1, "", false, ""}).code, 0);
    mCloud.release(GetParam().path);
    EXPECT_TRUE(mAsker.answers().waitFor());
}

TEST_P(EachRequestTopic, SaysNothingWhenTheQueueObjectLeavesBeforeTheAnswer) {
    mCloud.hold(GetParam().path);
    mAsker.send("server", GetParam().topic);
    ASSERT_TRUE(mCloud.waitForHeld(GetParam().path));
    const std::weak_ptr<VersionRequest> weak = mRequest;
    mRequest->stop();
    mRequest.reset();
    mCloud.release(GetParam().path);
    EXPECT_TRUE(support::eventually([&] { return weak.expired(); }));
    EXPECT_EQ(mAsker.answers().count(), 0U);
}

TEST_P(EachRequestTopic, HugeTextInTheBodyIsNoVersionAndDoesNoHarm) {
    const auto body = notifyBody(std::string(4 * 1024 * 1024, '9'));
    EXPECT_EQ(ask(&body).code, 0);
    EXPECT_NE(lastTarget(GetParam().path).find("oemid=0"), std::string::npos);
    EXPECT_LT(lastTarget(GetParam().path).size(), 300U);
}

TEST_P(EachRequestTopic, BodyWithControlCharactersReachesNoUrl) {
    const auto body = notifyBody("1.0 HTTP/1.1\r\nHost: evil\r\n\r\n");
    EXPECT_EQ(ask(&body).code, 0);
    EXPECT_EQ(lastTarget(GetParam().path).find("evil"), std::string::npos);
}

TEST_P(EachRequestTopic, ClientServesItToo) {
    const auto client = makeClient();
    const auto request = makeRequest(client);
    startAt(*request);
    Asker asker(mServer->connectionTo("client", ""));
    const auto answer = asker.ask("client", GetParam().topic);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0);
    EXPECT_TRUE(answer->hasBody);
}

// --- Versions

TEST_F(RequestVersionTopic, OfTwoAtOnceTheRefillThatEndsLastWins) {
    support::Gate gate;
    std::atomic<int> asked{0};
    mCloud.serve(UpdateCloud::kVersions, [&](const support::HttpRequest&) {
        const bool first = asked++ == 0;
        if (first) gate.pass();
        return UpdateCloud::Response{200, "[" + cloudRecord(first ? "5.0" : "6.0", "http://a") + "]", {}};
    });
    mAsker.send("server", kRequestVersion);
    ASSERT_TRUE(gate.waitForSomeone());
    mAsker.send("server", kRequestVersion);
    ASSERT_TRUE(mAsker.answers().waitFor(1));
    EXPECT_EQ(versionsOf(mAsker.answers().values()[0]), (Texts{"1.0", "6.0"}));
    gate.open();
    ASSERT_TRUE(mAsker.answers().waitFor(2));
    EXPECT_EQ(versionsOf(mAsker.answers().values()[1]), (Texts{"1.0", "5.0"}));
    EXPECT_EQ(support::versionTexts(mRequest->getVersions()), (Texts{"1.0", "5.0"}));
}

// --- Release notes

TEST_F(RequestNotesTopic, ForgetsTheNotesBeforeItAsks) {
    addNote("1.0", "old");
    mCloud.hold(UpdateCloud::kNotes);
    mAsker.send("server", kRequestNotes);
    ASSERT_TRUE(mCloud.waitForHeld(UpdateCloud::kNotes));
    EXPECT_TRUE(mRequest->getReleaseHistory().empty());
    mCloud.release(UpdateCloud::kNotes);
    EXPECT_TRUE(mAsker.answers().waitFor());
}

TEST_F(RequestNotesTopic, KeepsTheRequestVersionWithABodyOfAnotherRecord) {
    mRequest->setRequestVersion(Version("7.7-oem5", 0));
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    other.body = "4.4-oem2";
    EXPECT_EQ(ask(kRequestNotes, &other).code, 0);
    EXPECT_NE(lastTarget(UpdateCloud::kNotes).find("?oemid=5&"), std::string::npos);
}

TEST_F(RequestNotesTopic, VersionOfTheBodyStaysForLaterRequests) {
    askWith(kRequestNotes, "4.4");
    EXPECT_NE(VersionRequestAccess::versionUrls(*mRequest).front()->url.find("&softversion=4.4&"), std::string::npos);
}

TEST_F(RequestNotesTopic, AnswersABadDocumentWithItsCode) {
    mCloud.notes("sorry");
    EXPECT_EQ(askWith(kRequestNotes, "1.0").code, -301);
}

TEST_F(RequestNotesTopic, AnswersTheFirstSenderOfAForwardedRequest) {
    mCloud.notes(noteList(noteRecord("2.0", "new")));
    const auto middle = makeServer("middle");
    const auto middleRequest = makeRequest(middle);
    startAt(*middleRequest);
    const auto client = makeClient("client", "middle");
    Asker asker(client->connection());
    const auto answer = asker.ask("server", kRequestNotes);
    ASSERT_TRUE(answer);
    EXPECT_EQ(notesOf(*answer), Texts{"2.0 new"});
    EXPECT_TRUE(middleRequest->getReleaseHistory().empty());
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

// --- Notifications

TEST_F(CatalogueReplies, OwnNotificationIsIgnoredAlsoWhenItNamesAnotherNode) {
    const Received<std::string> calls;
    const auto far = startFarAndNoteCalls(calls);
    Asker self(mServer->connectionTo("server", ""));
    self.send("far", kNotify);
    ASSERT_TRUE(self.ask("server", kQueryVersion));
    ASSERT_TRUE(mAsker.ask("server", kNotify));  // that of the peer is taken
    EXPECT_EQ(calls.values(), Texts{"server"});
    EXPECT_EQ(self.answers().count(), 1U);
}

TEST_F(CatalogueReplies, NotificationMayCarryAnyBody) {
    const Received<int> calls;
    mRequest->registerVersionRequestNotify([calls] { calls.add(1); });
    EXPECT_EQ(askWith(kNotify, "anything").code, 0);
    EXPECT_EQ(calls.count(), 1U);
}

TEST_F(CatalogueReplies, NotificationsAtOnceAllReachTheHost) {
    const Received<int> calls;
    mRequest->registerVersionRequestNotify([calls] { calls.add(1); });
    for (int count = 0; count < 20; ++count) mAsker.send("server", kNotify);
    ASSERT_TRUE(mAsker.answers().waitFor(20));
    EXPECT_EQ(calls.count(), 20U);
}
