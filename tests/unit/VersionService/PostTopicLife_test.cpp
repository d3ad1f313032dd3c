// The files of pushes: opened once, swept when abandoned, opened again, apart from whoever reads what was there.
#include "ManualClock.h"
#include "PostTopicFixture.h"
#include "Public/Base/System.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::MappedFile;

namespace {

class PostTopicLife : public PostTopicFixture {
protected:
    void SetUp() override { start(); }
    size_t openFiles() const { return support::timesOpenHere(path()); }
    /// Lets that time pass, with the sweeps that it brings about.
    void elapse(uint64_t milliseconds) {
        for (uint64_t step = 0; step < milliseconds; step += 250) mClock.advance(250);
    }

    support::ManualClock mClock;
};

}  // namespace

TEST_F(PostTopicLife, AbandonedFileIsClosedByTheSweepAndStaysOnDisk) {
    EXPECT_EQ(post(chunk("abcd", 0, 8)), 0);
    EXPECT_EQ(openFiles(), 1U);
    EXPECT_TRUE(support::eventually([&] {
        elapse(30000);
        return openFiles() == 0;
    }));
    EXPECT_EQ(content(), "abcd");
    EXPECT_EQ(entryAt(), nullptr);
}

TEST_F(PostTopicLife, TransferWhoseFileWasSweptGoesOnAtItsPosition) {
    EXPECT_EQ(post(chunk("abcd", 0, 8)), 0);
    ASSERT_TRUE(support::eventually([&] {
        elapse(30000);
        return openFiles() == 0;
    }));
    EXPECT_EQ(post(chunk("efgh", 4, 8)), 0);
    EXPECT_EQ(content(), "abcdefgh");
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopicLife, FirstChunkRepeatedAfterTheSweepKeepsTheRest) {
    EXPECT_EQ(post(chunk("abcd", 0, 12)), 0);
    EXPECT_EQ(post(chunk("efgh", 4, 12)), 0);
    ASSERT_TRUE(support::eventually([&] {
        elapse(30000);
        return openFiles() == 0;
    }));
    EXPECT_EQ(post(chunk("ABCD", 0, 12)), 0);
    EXPECT_EQ(content(), "ABCDefgh");
}

TEST_F(PostTopicLife, PartThatLiesOnDiskIsContinuedByATransferThatBeginsInTheMiddle) {
    mStore.putText(packageOf("2.0.0.0"), "abcd");
    EXPECT_EQ(post(chunk("efgh", 4, 8)), 0);
    EXPECT_EQ(content(), "abcdefgh");
}

TEST_F(PostTopicLife, ShorterPackageLeavesNoEndOfALongerOne) {
    mStore.putText(packageOf("2.0.0.0"), "a package that is much longer");
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    EXPECT_EQ(post(chunk("ef", 4, 6)), 0);
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(PostTopicLife, WhoeverReadsTheOldPackageKeepsItWhole) {
    const std::string old(100000, 'o');
    mStore.putText(packageOf("2.0.0.0"), old);
    MappedFile reader;
    ASSERT_EQ(reader.open(path()), MappedFile::Result::Mapped);
    postAll("new", 2);
    EXPECT_TRUE(reader.isReplacedAt(path()));
    ASSERT_EQ(reader.size(), old.size());
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(reader.data()), reader.size()), old);
    EXPECT_EQ(content(), "new");
}

TEST_F(PostTopicLife, SecondTransferOfTheSamePackageJoinsTheRunningOne) {
    EXPECT_EQ(post(chunk("abcd", 0, 8, "one")), 0);
    EXPECT_EQ(post(chunk("abcd", 0, 8, "two")), 0);
    EXPECT_EQ(post(chunk("efgh", 4, 8, "one")), 0);
    EXPECT_EQ(content(), "abcdefgh");
    EXPECT_EQ(post(chunk("efgh", 4, 8, "two")), 0);
    EXPECT_EQ(content(), "abcdefgh");
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopicLife, NextTransferOfTheSamePackageBeginsAnew) {
    postAll("abcdefgh", 4, "one");
    postAll("xyz", 2, "two");
    EXPECT_EQ(content(), "xyz");
}

TEST_F(PostTopicLife, ManyChunksAtOnceOpenTheFileOnce) {
    std::string text(64, '\0');
    for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('a' + i % 26);
    for (uint32_t at = 0; at < 63; ++at) {
        const auto info = chunk(text.substr(at, 1), at, 64);
        EXPECT_NE(mAsker.send("server", kPostTopic, &info), 0U);
    }
    ASSERT_TRUE(mAsker.answers().waitFor(63));
    EXPECT_EQ(openFiles(), 1U);
    EXPECT_EQ(post(chunk(text.substr(63), 63, 64)), 0);
    for (const auto& answer : mAsker.answers().values()) EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(content(), text);
}

TEST_F(PostTopicLife, StoppedServiceTakesNothing) {
    const auto service = VersionRequestAccess::service(*mRequest);
    const auto info = chunk("abcd", 0, 8);
    EXPECT_EQ(post(info), 0);
    service->stop();
    EXPECT_EQ(openFiles(), 0U);
    EXPECT_EQ(post(chunk("efgh", 4, 8)), -2);
    EXPECT_EQ(content(), "abcd");
}

TEST_F(PostTopicLife, ServiceStartedAgainGoesOn) {
    const auto service = VersionRequestAccess::service(*mRequest);
    EXPECT_EQ(post(chunk("abcd", 0, 8)), 0);
    service->stop();
    ASSERT_FALSE(service->start());
    EXPECT_EQ(post(chunk("efgh", 4, 8)), 0);
    EXPECT_EQ(content(), "abcdefgh");
}

TEST_F(PostTopicLife, ManyTransfersAreForgottenInTurn) {
    for (int count = 0; count < 100; ++count) {
        auto info = chunk("abcd", 0, 4, "transfer " + std::to_string(count));
        info.versionInfo = postDocument("3." + std::to_string(count));
        EXPECT_EQ(post(info), 0);
    }
    EXPECT_EQ(mRequest->getVersions().size(), 100U);
}
