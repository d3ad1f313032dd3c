// Asking the update cloud for release notes.
#include "CloudRequestFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::noteList;
using support::noteRecord;
using support::Received;
using Access = VersionRequestAccess;
using Texts = std::vector<std::string>;

namespace {

class CloudNotes : public CloudRequest {};

}  // namespace

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
