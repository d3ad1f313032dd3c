// The upload of a package to the master.
#include "NoMoreThreads.h"
#include "OpenFiles.h"
#include "Public/Base/DetachedThread.h"
#include "PushDoubles.h"
#include "RequestFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::answerOf;
using support::ChunkLink;
using support::FakeClient;
using support::Received;

namespace {

struct Outcome {
    std::string masterId;
    int code = 0;
    bool operator==(const Outcome&) const = default;
};

/// A client whose link keeps the chunks for the test to answer.
class Upload : public RequestFixture {
protected:
    Upload() {
        mClient->link = mLink;
        mClient->master = "master";
        mStore.put("p.exe");
    }
    /// An upload and its request hold each other until it ends, which a lost link sees to.
    ~Upload() override {
        Public::Base::settleDetached();
        const auto chunks = mLink->sent.values();
        if (!chunks.empty()) chunks.back().callback(answerOf(-203));
    }

    int upload(const std::string& path, VersionSource source = VersionSource_Manual) {
        return mRequest
            ->uploadVersion(path, source,
                            [outcomes = mOutcomes](const std::string& masterId, const ErrorInfo& error) {
                                outcomes.add({masterId, error.errorCode()});
                            })
            .errorCode();
    }
    std::vector<Outcome> outcomes() const {
        Public::Base::settleDetached();
        return mOutcomes.values();
    }

    std::string mPackage = mStore.path("p.exe");
    std::shared_ptr<ChunkLink> mLink = std::make_shared<ChunkLink>();
    std::shared_ptr<FakeClient> mClient = std::make_shared<FakeClient>();
    std::shared_ptr<VersionRequest> mRequest = makeRequest(std::static_pointer_cast<TWMQClient>(mClient));
    Received<Outcome> mOutcomes;
};

}  // namespace

TEST_F(Upload, SendsThePackageToTheMaster) {
    EXPECT_EQ(upload(mPackage), 0);
    const auto chunk = mLink->chunk(0);
    EXPECT_EQ(chunk.to, "master");
    EXPECT_EQ(chunk.topic, "topic_upgrade_postversion");
    EXPECT_NE(chunk.info.versionInfo.find("\"versionSource\": 2"), std::string::npos);
    EXPECT_NE(chunk.info.versionInfo.find("\"serverid\": \"master\""), std::string::npos);
}

TEST_F(Upload, TellsTheSourceGiven) {
    EXPECT_EQ(upload(mPackage, VersionSource_Online), 0);
    EXPECT_NE(mLink->chunk(0).info.versionInfo.find("\"versionSource\": 1"), std::string::npos);
}

TEST_F(Upload, TellsTheMasterAndTheOutcomeAtTheEnd) {
    ASSERT_EQ(upload(mPackage), 0);
    mLink->answer(0);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", 0}}));
}

TEST_F(Upload, TellsTheMasterAsItWasAtTheBeginning) {
    ASSERT_EQ(upload(mPackage), 0);
    mLink->chunk(0);
    mClient->master = "other";
    mLink->answer(0);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", 0}}));
}

TEST_F(Upload, TellsWhatThePeerRefused) {
    ASSERT_EQ(upload(mPackage), 0);
    mLink->answer(0, -425);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", -425}}));
}

TEST_F(Upload, MissingPackageIsToldByTheCallbackAlone) {
    EXPECT_EQ(upload(mStore.path("none.exe")), 0);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", -416}}));
}

TEST_F(Upload, SecondOneDuringARunningOneIsRefusedAndDoesNotTouchTheFirst) {
    ASSERT_EQ(upload(mPackage), 0);
    mLink->chunk(0);
    EXPECT_EQ(upload(mPackage), -417);
    EXPECT_EQ(mLink->sent.count(), 1U);
    mLink->answer(0);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", 0}}));
}

TEST_F(Upload, NextOneMayBeginWhenTheCallbackHasRun) {
    ASSERT_EQ(upload(mPackage), 0);
    mLink->answer(0);
    EXPECT_EQ(upload(mPackage), 0);
    mLink->answer(1);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", 0}, {"master", 0}}));
}

TEST_F(Upload, NextOneMayBeginAfterAFailedOne) {
    ASSERT_EQ(upload(mStore.path("none.exe")), 0);
    ASSERT_TRUE(mOutcomes.waitFor());
    Public::Base::settleDetached();
    EXPECT_EQ(upload(mPackage), 0);
    mLink->chunk(0);
}

TEST_F(Upload, StillCountsAsRunningWhileItsCallbackRuns) {
    int inside = 0;
    ASSERT_FALSE(mRequest->uploadVersion(mPackage, VersionSource_Manual,
                                         [&](const std::string&, const ErrorInfo&) { inside = upload(mPackage); }));
    mLink->answer(0);
    Public::Base::settleDetached();
    EXPECT_EQ(inside, -417);
}

TEST_F(Upload, OfManyAtOnceOneRuns) {
    std::atomic<int> accepted{0};
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int count = 0; count < 8; ++count) {
        threads.emplace_back([&] {
            const int code = upload(mPackage);
            if (code == 0) ++accepted;
            if (code == -417) ++refused;
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(accepted, 1);
    EXPECT_EQ(refused, 7);
}

TEST_F(Upload, ServerHasNoMasterToSendTo) {
    const auto server = makeRequest(makeServer());
    EXPECT_EQ(server
                  ->uploadVersion(mPackage, VersionSource_Manual,
                                  [outcomes = mOutcomes](const std::string& masterId, const ErrorInfo& error) {
                                      outcomes.add({masterId, error.errorCode()});
                                  })
                  .errorCode(),
              -1);
    EXPECT_TRUE(outcomes().empty());
}

TEST_F(Upload, WithoutALinkIsToldByTheCallback) {
    mClient->link = nullptr;
    EXPECT_EQ(upload(mPackage), 0);
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", -200}}));
}

TEST_F(Upload, WorksWithoutACallback) {
    EXPECT_FALSE(mRequest->uploadVersion(mPackage, VersionSource_Manual, {}));
    mLink->answer(0);
    EXPECT_EQ(upload(mPackage), 0);
    mLink->chunk(1);
}

TEST_F(Upload, FailedStartCountsAsRunningUntilItsCallbackHasRun) {
    std::vector<int> inside;
    {
        const support::NoMoreThreads full;
        const ErrorInfo refused =
            mRequest->uploadVersion(mPackage, VersionSource_Manual, [&](const std::string&, const ErrorInfo& error) {
                inside = {error.errorCode(), upload(mPackage)};
            });
        EXPECT_EQ(refused.errorCode(), -10011);
    }
    EXPECT_EQ(inside, (std::vector<int>{-10011, -417}));
    EXPECT_EQ(upload(mPackage), 0);
    mLink->chunk(0);
}

TEST_F(Upload, LeavesNothingBehind) {
    ASSERT_EQ(upload(mPackage), 0);
    mLink->answer(0);
    ASSERT_EQ(outcomes().size(), 1U);
    EXPECT_EQ(support::timesOpenHere(mPackage), 0U);
    const std::weak_ptr<VersionRequest> request = mRequest;
    mRequest.reset();
    EXPECT_TRUE(request.expired());
}

TEST_F(Upload, GoesOnToItsEndWhenTheHostLetsGo) {
    ASSERT_EQ(upload(mPackage), 0);
    const auto chunk = mLink->chunk(0);
    Public::Base::settleDetached();
    const std::weak_ptr<VersionRequest> request = mRequest;
    mRequest.reset();
    EXPECT_FALSE(request.expired());
    chunk.callback(answerOf(-202));
    EXPECT_EQ(outcomes(), (std::vector<Outcome>{{"master", -202}}));
    EXPECT_TRUE(request.expired());
    EXPECT_EQ(support::timesOpenHere(mPackage), 0U);
}
