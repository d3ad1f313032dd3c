// The steps of a push, chunk by chunk.
#include "PostDownload.h"

#include "PostDownloadFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::PackageSpec;
using support::SentChunk;

namespace {

class PostDownloadSteps : public PostDownloadFixture {
protected:
    std::string documentSent(VersionSource source = VersionSource_Online) {
        mPush = makePush(source);
        mPush->start({});
        return mLink->chunk(0).info.versionInfo;
    }
};

constexpr size_t kBytes = 0x280000;  // two chunks and a half

}  // namespace

TEST_F(PostDownloadSteps, SendsTheFirstChunkToThePeer) {
    begin(kBytes);
    const SentChunk chunk = mLink->chunk(0);
    EXPECT_EQ(chunk.topic, "topic_upgrade_postversion");
    EXPECT_EQ(chunk.to, "peer");
    EXPECT_EQ(chunk.via, "");
    EXPECT_FALSE(chunk.authenticated);
    EXPECT_EQ(chunk.level, 0);
    EXPECT_EQ(chunk.timeoutMs, 60000U);
    EXPECT_EQ(chunk.info.fileSize, kBytes);
    EXPECT_EQ(chunk.info.position, 0U);
    EXPECT_EQ(chunk.info.transferId.size(), 36U);
    EXPECT_EQ(chunk.info.data, content().substr(0, kChunk));
}

TEST_F(PostDownloadSteps, DocumentTellsWhatThePackageSaysOfItselfInThisOrder) {
    mStore.put("p.exe");
    EXPECT_EQ(documentSent(),
              "{\n\t\"softversion\": \"1.11.0.8\",\n\t\"systemType\": 1,\n\t\"systemBits\": 64,\n"
              "\t\"versionSource\": 1,\n\t\"versionType\": 1,\n\t\"serverid\": \"peer\",\n\t\"description\": \"\"\n}");
}

TEST_F(PostDownloadSteps, DocumentTellsTheWordSizeOfThePackage) {
    PackageSpec spec;
    spec.bits = 32;
    mStore.put("p.exe", spec);
    EXPECT_NE(documentSent().find("\"systemBits\": 32"), std::string::npos);
}

TEST_F(PostDownloadSteps, DocumentTellsTheSourceGiven) {
    mStore.put("p.exe");
    EXPECT_NE(documentSent(VersionSource_Manual).find("\"versionSource\": 2"), std::string::npos);
}

TEST_F(PostDownloadSteps, NumbersOfTheVersionAreNotComparedWithTheRunningOnes) {
    mStore.put("p.exe", "0.1");
    EXPECT_NE(documentSent().find("\"softversion\": \"0.1\""), std::string::npos);
}

TEST_F(PostDownloadSteps, PackageOfTheRunningEditionIsSent) {
    mRequest->running = Version("1.0.0.0-oem7", 0);
    mStore.put("p.exe", "2.0.0.0-oem7");
    EXPECT_NE(documentSent().find("\"softversion\": \"2.0.0.0-oem7\""), std::string::npos);
}

TEST_F(PostDownloadSteps, SendsTheNextChunkOnlyWhenTheLastIsAcknowledged) {
    begin(kBytes);
    mLink->chunk(0);
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), 1U);
    mLink->answer(0);
    EXPECT_EQ(mLink->sent.count(), 2U);
    EXPECT_EQ(mLink->chunk(1).info.position, kChunk);
    EXPECT_EQ(mLink->chunk(1).info.data, content().substr(kChunk, kChunk));
}

TEST_F(PostDownloadSteps, LastChunkIsCutToWhatIsLeft) {
    begin(kBytes);
    for (size_t index = 0; index < 3; ++index) mLink->answer(index);
    EXPECT_EQ(mLink->sent.count(), 3U);
    EXPECT_EQ(mLink->chunk(2).info.position, 2 * kChunk);
    EXPECT_EQ(mLink->chunk(2).info.data, content().substr(2 * kChunk));
}

TEST_F(PostDownloadSteps, AllChunksBearOneTransferIdOneSizeAndOneDocument) {
    begin(kBytes);
    for (size_t index = 0; index < 3; ++index) mLink->answer(index);
    const SentChunk first = mLink->chunk(0);
    for (const SentChunk& chunk : mLink->sent.values()) {
        EXPECT_EQ(chunk.info.transferId, first.info.transferId);
        EXPECT_EQ(chunk.info.fileSize, kBytes);
        EXPECT_EQ(chunk.info.versionInfo, first.info.versionInfo);
    }
}

TEST_F(PostDownloadSteps, EachPushHasATransferIdOfItsOwn) {
    mStore.put("p.exe");
    const auto first = makePush();
    const auto second = makePush();
    first->start({});
    second->start({});
    EXPECT_NE(mLink->chunk(0).info.transferId, mLink->chunk(1).info.transferId);
}

TEST_F(PostDownloadSteps, ProgressIsTheShareOfTheBytesAcknowledged) {
    begin(kBytes);
    mLink->chunk(0);
    EXPECT_EQ(progress(), 0.0F);
    mLink->answer(0);
    EXPECT_FLOAT_EQ(progress(), 0.4F);
    mLink->answer(1);
    EXPECT_FLOAT_EQ(progress(), 0.8F);
    mLink->answer(2);
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(PostDownloadSteps, IsNotFinishedUntilTheClusterHasBeenAsked) {
    begin(kBytes);
    for (size_t index = 0; index < 3; ++index) mLink->answer(index);
    EXPECT_EQ(mRequest->queries.count(), 1U);
    EXPECT_FALSE(mPush->finish());
    EXPECT_EQ(mWaiter.calls(), 0);
    mRequest->answer(false);
    EXPECT_FALSE(mPush->finish());
    EXPECT_EQ(mWaiter.calls(), 0);
    mRequest->answer(true);
    EXPECT_TRUE(mPush->finish());
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(PostDownloadSteps, StillEndsAsFinishedWhenTheQueryFails) {
    begin(kBytes);
    for (size_t index = 0; index < 3; ++index) mLink->answer(index);
    mRequest->answer(true, -202);
    EXPECT_TRUE(mPush->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(PostDownloadSteps, ExactMultipleOfTheChunkEndsThroughAReadOfNothing) {
    begin(2 * kChunk);
    mLink->answer(0);
    mLink->answer(1);
    EXPECT_EQ(mLink->sent.count(), 2U);
    EXPECT_EQ(mLink->chunk(1).info.data.size(), kChunk);
    mRequest->answer(true);
    EXPECT_TRUE(mPush->finish());
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(PostDownloadSteps, PeerThatWantsNothingEndsThePushAsFinished) {
    begin(kBytes);
    mLink->answer(0, -415);
    EXPECT_EQ(mLink->sent.count(), 1U);
    mRequest->answer(true);
    EXPECT_TRUE(mPush->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(PostDownloadSteps, PeerThatHasEnoughInTheMiddleEndsThePushAsFinished) {
    begin(kBytes);
    mLink->answer(0);
    mLink->answer(1, -415);
    EXPECT_FLOAT_EQ(progress(), 0.4F);
    mRequest->answer(true);
    EXPECT_TRUE(mPush->finish());
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(PostDownloadSteps, BodyOfAnAcknowledgementIsNotRead) {
    begin(kBytes);
    support::TWProtoUpgradeInfo body;
    body.position = 5;
    body.fileSize = 1;
    mLink->chunk(0).callback(support::answerOf(0, &body));
    EXPECT_EQ(mLink->chunk(1).info.position, kChunk);
}

TEST_F(PostDownloadSteps, AsksTheMasterToForwardWhereThereIsNoDirectConnection) {
    mProvider->direct = nullptr;
    mProvider->master = mLink;
    mProvider->masterId = "master";
    begin(kBytes);
    const SentChunk chunk = mLink->chunk(0);
    EXPECT_EQ(chunk.via, "master");
    EXPECT_EQ(chunk.to, "peer");
    EXPECT_EQ(chunk.topic, "topic_upgrade_postversion");
    EXPECT_EQ(chunk.session, "");
    EXPECT_EQ(chunk.level, 0);
    EXPECT_EQ(chunk.timeoutMs, 60000U);
    EXPECT_EQ(chunk.info.data, content().substr(0, kChunk));
}

TEST_F(PostDownloadSteps, DirectConnectionComesBeforeTheMasters) {
    const auto master = std::make_shared<support::ChunkLink>();
    mProvider->master = master;
    begin(kBytes);
    mLink->answer(0);
    mLink->chunk(1);
    EXPECT_EQ(master->sent.count(), 0U);
}

TEST_F(PostDownloadSteps, ConnectionIsLookedUpForEveryChunk) {
    begin(kBytes);
    const SentChunk first = mLink->chunk(0);
    const auto other = std::make_shared<support::ChunkLink>();
    mProvider->direct = other;
    first.callback(support::answerOf(0));
    EXPECT_EQ(other->chunk(0).info.position, kChunk);
}

TEST_F(PostDownloadSteps, ReturnsBeforeAnyWorkIsDone) {
    begin(kBytes);
    EXPECT_NE(mLink->chunk(0).thread, std::this_thread::get_id());
}
