// The receiver of a push: its steps and the rows of its failures.
#include "PostTopicFixture.h"
#include "SystemErrors.h"
#include "TWProtocol/TWProtoUpgrade.h"

using namespace Tarnwick::OrvUpdate;

namespace {

class PostTopic : public PostTopicFixture {
protected:
    void SetUp() override { start(); }
};

class PostTopicWithoutCatalogue : public PostTopicFixture {};

}  // namespace

TEST_F(PostTopic, WritesEachChunkAtItsPositionAndEntersThePackageAtTheEnd) {
    EXPECT_EQ(post(chunk("abcd", 0, 10)), 0);
    EXPECT_EQ(entryAt(), nullptr);
    EXPECT_EQ(post(chunk("efgh", 4, 10)), 0);
    EXPECT_EQ(entryAt(), nullptr);
    EXPECT_EQ(post(chunk("ij", 8, 10)), 0);
    EXPECT_EQ(content(), "abcdefghij");
    ASSERT_NE(entryAt(), nullptr);
    EXPECT_EQ(entryAt()->getStoragePosition(), StoragePosition_Local);
    EXPECT_EQ(entryAt()->getPackageFile(), path());
}

TEST_F(PostTopic, EntryIsAsTheDocumentSays) {
    auto info = chunk("x", 0, 1);
    info.versionInfo = R"({"softversion":"2.1-b5","systemType":2,"systemBits":32,"versionSource":2,)"
                       R"("versionType":3,"serverid":"server","description":"words"})";
    EXPECT_EQ(post(info), 0);
    ASSERT_EQ(mRequest->getVersions().size(), 1U);
    const auto entry = *mRequest->getVersions().begin();
    EXPECT_EQ(entry->getVersion().toString(), "2.1-b5");
    EXPECT_EQ(entry->getSystemType(), 2);
    EXPECT_EQ(entry->getSystemBits(), 32);
    EXPECT_EQ(entry->getVersionSource(), 2);
    EXPECT_EQ(entry->getVersionType(), 3);
    EXPECT_EQ(entry->getDescribe(), "words");
    EXPECT_EQ(support::readText(mStore.path("Manual/Linux x86 Server/2.1-b5/2.1-b5.exe")), "x");
}

TEST_F(PostTopic, ChunksMayComeInAnyOrder) {
    EXPECT_EQ(post(chunk("efgh", 4, 10)), 0);
    EXPECT_EQ(post(chunk("abcd", 0, 10)), 0);
    EXPECT_EQ(post(chunk("ij", 8, 10)), 0);
    EXPECT_EQ(content(), "abcdefghij");
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopic, LastChunkMayComeFirstAndKeepsItsBytes) {
    EXPECT_EQ(post(chunk("ij", 8, 10)), 0);
    EXPECT_NE(entryAt(), nullptr);
    EXPECT_EQ(post(chunk("efgh", 4, 10)), 0);
    EXPECT_EQ(post(chunk("abcd", 0, 10)), 0);
    EXPECT_EQ(content(), "abcdefghij");
}

TEST_F(PostTopic, RepeatedChunkMendsAGap) {
    EXPECT_EQ(post(chunk("a???", 0, 6)), 0);
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    EXPECT_EQ(post(chunk("ef", 4, 6)), 0);
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(PostTopic, OverlappingChunksLeaveTheLaterBytes) {
    EXPECT_EQ(post(chunk("abcdef", 0, 8)), 0);
    EXPECT_EQ(post(chunk("DEFGH", 3, 8)), 0);
    EXPECT_EQ(content(), "abcDEFGH");
}

TEST_F(PostTopic, FileSizeOf0FinishesAtTheFirstChunk) {
    EXPECT_EQ(post(chunk("abcd", 0, 0)), 0);
    EXPECT_EQ(content(), "abcd");
    ASSERT_NE(entryAt(), nullptr);
    EXPECT_EQ(entryAt()->getStoragePosition(), StoragePosition_Local);
}

TEST_F(PostTopic, EmptyPackageIsEnteredToo) {
    EXPECT_EQ(post(chunk("", 0, 0)), 0);
    EXPECT_EQ(content(), "");
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopic, LastChunkMayReachBeyondTheSizeTold) {
    EXPECT_EQ(post(chunk("abcd", 0, 3)), 0);
    EXPECT_EQ(content(), "abcd");
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopic, LocalPackageIsAbsentFromTheFirstChunkToTheLast) {
    mStore.putText(packageOf("2.0.0.0"), "what was there");
    mRequest->addVersion(support::entry("2.0.0.0", 1));
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    EXPECT_EQ(entryAt(), nullptr);
    EXPECT_EQ(post(chunk("ef", 4, 6)), 0);
    ASSERT_NE(entryAt(), nullptr);
    EXPECT_EQ(entryAt()->getStoragePosition(), StoragePosition_Local);
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(PostTopic, EntryOfTheCloudOrOfANodeStaysInPlaceOfTheArrivedOne) {
    for (const int position : {2, 3}) {
        const auto entry = support::entry("2.0.0.0", position);
        mRequest->updateVersions({entry}, static_cast<StoragePosition>(position));
        EXPECT_EQ(post(chunk("abcd", 0, 4, "transfer " + std::to_string(position))), 0);
        EXPECT_EQ(entryAt(), entry);
        EXPECT_EQ(entryAt()->getStoragePosition(), position);
        EXPECT_EQ(content(), "abcd");
    }
}

TEST_F(PostTopic, OtherVersionsAreLeftAlone) {
    mRequest->addVersion(support::entry("1.5", 1));
    EXPECT_EQ(post(chunk("abcd", 0, 8)), 0);
    EXPECT_NE(entryAt("1.5"), nullptr);
}

TEST_F(PostTopic, FileIsClosedWhenTheLastChunkIsAcknowledged) {
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    EXPECT_EQ(support::timesOpenHere(path()), 1U);
    EXPECT_EQ(post(chunk("ef", 4, 6)), 0);
    EXPECT_TRUE(support::eventually([&] { return support::timesOpenHere(path()) == 0; }));
}

TEST_F(PostTopic, TwoTransfersOfDifferentVersionsDoNotMeet) {
    auto other = chunk("ABCD", 0, 6, "two");
    other.versionInfo = postDocument("3.0.0.0");
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    EXPECT_EQ(post(other), 0);
    other.data = "EF";
    other.position = 4;
    EXPECT_EQ(post(chunk("ef", 4, 6)), 0);
    EXPECT_EQ(post(other), 0);
    EXPECT_EQ(content(), "abcdef");
    EXPECT_EQ(support::readText(path("3.0.0.0")), "ABCDEF");
}

TEST_F(PostTopic, BodyThatIsMissingOrOfAnotherRecordAnswersMinus1) {
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    other.body = postDocument("2.0.0.0");
    EXPECT_EQ(post(nullptr), -1);
    EXPECT_EQ(post(&other), -1);
    EXPECT_TRUE(mLog.has(2, "protocol parse fail!"));
}

TEST_F(PostTopic, TransferIdWithoutMeasureAnswersMinus1) {
    EXPECT_EQ(post(chunk("abcd", 0, 4, std::string(1025, 'x'))), -1);
    EXPECT_EQ(content(), std::nullopt);
}

TEST_F(PostTopic, DocumentThatIsNoJsonAnswersMinus1) {
    auto info = chunk("abcd", 0, 4);
    info.versionInfo = "no document";
    EXPECT_EQ(post(info), -1);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(PostTopic, DocumentThatLacksAMemberAnswersMinus301) {
    auto info = chunk("abcd", 0, 4);
    info.versionInfo = R"({"softversion":"2.0"})";
    EXPECT_EQ(post(info), -301);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(PostTopic, EveryChunkNeedsItsDocument) {
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    auto info = chunk("ef", 4, 6);
    info.versionInfo.clear();
    EXPECT_EQ(post(info), -1);
    EXPECT_EQ(content(), "abcd");
}

TEST_F(PostTopic, FileThatCannotBeOpenedAnswersTheSystemsError) {
    mStore.putText("Online/Windows x64 All", "a file where a directory should be");
    const int code = post(chunk("abcd", 0, 4));
    EXPECT_EQ(code, errorOf(support::SystemError::BelowAFile));
    EXPECT_TRUE(mLog.has(2, "allocwriter fail! errcode:" + std::to_string(code)));
}

TEST_F(PostTopic, LocalEntryStaysWhenTheFileCannotBeOpened) {
    mStore.putText("Online/Windows x64 All", "a file where a directory should be");
    const auto entry = support::entry("2.0.0.0", 1);
    mRequest->addVersion(entry);
    EXPECT_NE(post(chunk("abcd", 0, 4)), 0);
    EXPECT_EQ(entryAt(), entry);
}

TEST_F(PostTopicWithoutCatalogue, AnswersMinus1) {
    const auto service = std::make_shared<VersionService>(mWorker, mServer, std::shared_ptr<IInstaller>());
    ASSERT_FALSE(service->start());
    EXPECT_EQ(post(chunk("abcd", 0, 4)), -1);
    EXPECT_TRUE(mLog.has(2, "versionRequest empty!"));
}

TEST_F(PostTopicWithoutCatalogue, NodeWithoutAStoreTakesNoPackage) {
    ASSERT_FALSE(startAt(*mRequest, "1.0.0.0", ""));
    EXPECT_EQ(post(chunk("abcd", 0, 4)), -1);
    EXPECT_TRUE(mLog.has(2, "allocwriter fail! errcode:-1"));
    EXPECT_FALSE(std::filesystem::exists("/Online"));
}
