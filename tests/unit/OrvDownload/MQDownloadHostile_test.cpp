// The pull from a peer that answers what it should not.
#include <thread>

#include "MQDownloadFixture.h"
#include "OrvInstaller/PackageTest.h"
#include "PackageStore.h"
#include "Received.h"
#include "VersionRequest.h"

using namespace Tarnwick::OrvUpdate;
using support::eventually;
using support::PullFixture;
using support::TWProtoUpgradeInfo;

namespace {

constexpr uint32_t kMost = std::numeric_limits<uint32_t>::max();

class QueuePullHostile : public PullFixture {
protected:
    ~QueuePullHostile() override {
        if (mStarter.joinable()) mStarter.join();
    }
    /// Starts on a thread of its own, since a peer that answers inside of the push keeps it there.
    void startAside() {
        mStarter = std::thread([this] { start(); });
    }
    static std::string packageBytes() {
        support::PackageStore store;
        return support::readText(store.put("p.exe")).value();
    }

    std::thread mStarter;
};

}  // namespace

TEST_F(QueuePullHostile, EndlessAnswersWithoutBytesNeitherFillTheStackNorWithstandCancel) {
    std::atomic<size_t> answers{0};
    mPeer->answerAtOnce([&](const TWProtoUpgradeInfo& asked) {
        ++answers;
        return chunk(0, asked.position, "");
    });
    startAside();
    EXPECT_TRUE(eventually([&] { return answers > 20000; }));
    mDownload->cancel();
    mStarter.join();
    EXPECT_EQ(calls(), 0);
    EXPECT_FALSE(content());
}

TEST_F(QueuePullHostile, EndlessEmptyChunksBelowTheSizeNeitherFillTheStackNorWithstandCancel) {
    std::atomic<size_t> answers{0};
    mPeer->answerAtOnce([&](const TWProtoUpgradeInfo& asked) {
        ++answers;
        return chunk(100, asked.position, "");
    });
    startAside();
    EXPECT_TRUE(eventually([&] { return answers > 20000; }));
    mDownload->cancel();
    mStarter.join();
    EXPECT_FALSE(content());
}

TEST_F(QueuePullHostile, EndlessAnswersEndWhenTheOwnerLetsGo) {
    std::atomic<size_t> answers{0};
    mPeer->answerAtOnce([&](const TWProtoUpgradeInfo& asked) {
        if (++answers == 1000) mDownload.reset();
        return chunk(0, asked.position, "");
    });
    const std::weak_ptr<MQDownload> transfer = mDownload;
    mDownload->start(counting());
    EXPECT_TRUE(transfer.expired());
    EXPECT_LE(answers, 1001U);
}

TEST_F(QueuePullHostile, EmptyChunkBelowTheSizeAsksForTheSameAgain) {
    start();
    answer(6, 0, "abc");
    for (int i = 0; i < 20; ++i) answer(6, 3, "");
    EXPECT_EQ(mPeer->count(), 22U);
    EXPECT_EQ(mPeer->last().record.position, 3U);
    EXPECT_EQ(content(), "abc");
    EXPECT_FALSE(mDownload->finish());
}

TEST_F(QueuePullHostile, SizeThatGrowsMidwayMovesTheEnd) {
    start();
    answer(3, 0, "abc");
    answer(6, 3, "def");
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(mPeer->last().record.fileSize, 6U);
    answer(6, 6, "");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(QueuePullHostile, SizeThatShrinksMidwayEndsTheRunAtOnce) {
    start();
    answer(100, 0, "abc");
    answer(3, 3, "def");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(QueuePullHostile, ChunkIsWrittenWhereItSaysAndTheNextIsAskedBehindTheSumOfAll) {
    start();
    answer(10, 5, "abc");
    EXPECT_EQ(content(), std::string(5, '\0') + "abc");
    EXPECT_EQ(mPeer->last().record.position, 3U);
    EXPECT_EQ(progress(), 0.5F);
}

TEST_F(QueuePullHostile, DataBeyondTheSizeIsWritten) {
    start();
    answer(3, 0, "abcdef");
    EXPECT_EQ(mPeer->last().record.position, 6U);
    answer(3, 6, "");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(QueuePullHostile, FirstChunkAtTheSizeEndsTheRun) {
    start();
    answer(3, 3, "abc");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(content(), std::string(3, '\0') + "abc");
}

TEST_F(QueuePullHostile, ProgressNeverPassesOne) {
    start();
    answer(3, 300, "abc");
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(QueuePullHostile, ChunkMayBeBiggerThanAnyThatIsServed) {
    const std::string big(7 * 1024 * 1024, 'x');
    start();
    answer(static_cast<uint32_t>(big.size()), 0, big);
    answer(static_cast<uint32_t>(big.size()), static_cast<uint32_t>(big.size()), "");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(std::filesystem::file_size(mPath), big.size());
}

TEST_F(QueuePullHostile, TransferIdAndDocumentOfTheAnswerDoNotMatter) {
    start();
    auto info = chunk(3, 0, "abc");
    info.transferId = "another";
    info.versionInfo = "../../elsewhere";
    mPeer->last().answer(info);
    serve("abc", 3);
    EXPECT_EQ(content(), "abc");
    EXPECT_EQ(support::filesBelow(mDir.path()).size(), 1U);
}

TEST_F(QueuePullHostile, ChunkThatReachesBehind4GiBIsAWriteFailure) {
    start();
    answer(kMost, kMost - 1, "abc");
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(calls(), 1);
    EXPECT_EQ(logged(), (Texts{"2 write file fail!", "2 save version fail! errcode:-1"}));
    EXPECT_EQ(content(), "");
}

TEST_F(QueuePullHostile, LastByteBefore4GiBCanBeWritten) {
    start();
    answer(kMost, kMost - 1, "z");
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(std::filesystem::file_size(mPath), uint64_t{kMost});
    mDownload->cancel();
}

// What arrives wrongly is no package for the store

TEST_F(QueuePullHostile, PackageWithoutItsEndFailsTheStoresTest) {
    const std::string package = packageBytes();
    start();
    serve(package.substr(0, package.size() - 1), 1000);
    EXPECT_TRUE(mDownload->finish());
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mPath));
}

TEST_F(QueuePullHostile, PackageWithMoreBehindItsEndFailsTheStoresTest) {
    start();
    serve(packageBytes() + "x", 1000);
    EXPECT_TRUE(mDownload->finish());
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mPath));
}

TEST_F(QueuePullHostile, PackageThatLacksItsBeginningFailsTheStoresTest) {
    const std::string package = packageBytes();
    const auto size = static_cast<uint32_t>(package.size());
    start();
    answer(size, size - 100, package.substr(size - 100));
    answer(size, size, "");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(std::filesystem::file_size(mPath), size);
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mPath));
}

TEST_F(QueuePullHostile, PackageWithAHoleFailsTheInstallersTest) {
    const std::string package = packageBytes();
    const auto size = static_cast<uint32_t>(package.size());
    constexpr uint32_t kHole = 4096;
    start();
    answer(size, kHole, package.substr(kHole));
    answer(size, size, "");
    EXPECT_TRUE(mDownload->finish());
    PackageFindings findings;
    EXPECT_TRUE(examinePackage(mPath, {}, findings));
}

TEST_F(QueuePullHostile, WholePackagePassesTheStoresTest) {
    start();
    serve(packageBytes(), 1000);
    EXPECT_TRUE(VersionRequest::isInvalidPakcage(mPath));
}
