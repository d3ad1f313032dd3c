// Chunks of a package for a peer that pulls it.
#include "DownloadTopicFixture.h"
#include "SweepClock.h"
#include "UpdateCloud.h"

using namespace Tarnwick::OrvUpdate;
using support::isOpenHere;

namespace {

std::string pattern(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 2654435761U) >> 13);
    return bytes;
}

/// Entries that lie on the update cloud.
class CloudDownloadTopic : public DownloadTopic {
protected:
    std::shared_ptr<OrvVersion> addCloudEntry(const std::string& version, const std::string& url) {
        auto added = std::make_shared<OrvVersion>(mWorker, mStore.path(), std::string());
        JsonValue value;
        value["softversion"] = version;
        value["description"] = "";
        value["url"] = url;
        added->parseVersionFromHttp(value);
        mRequest->addVersion(added);
        return added;
    }
    std::string packageBytes() { return support::readText(support::PackageStore().put("p.exe", "2.0")).value(); }

    support::HttpFileServer mCloud;
};

}  // namespace

TEST_F(DownloadTopic, FirstChunkTellsTheSizeOfThePackage) {
    addPackage("2.0", "the package");
    const auto answer = ask(chunkOf("2.0"));
    EXPECT_EQ(answer.code, 0);
    EXPECT_TRUE(answer.hasBody);
    EXPECT_EQ(answer.info.fileSize, 11U);
    EXPECT_EQ(answer.info.data, "the package");
}

TEST_F(DownloadTopic, HandsTransferIdDocumentAndPositionBackAsTheyCame) {
    addPackage("2.0", "the package");
    const auto asked = chunkOf("2.0", 4, 0, "an id");
    const auto answer = ask(asked);
    EXPECT_EQ(answer.info.transferId, "an id");
    EXPECT_EQ(answer.info.versionInfo, asked.versionInfo);
    EXPECT_EQ(answer.info.position, 4U);
    EXPECT_EQ(answer.info.data, "package");
}

TEST_F(DownloadTopic, DataOfTheRequestDoesNotMatter) {
    addPackage("2.0", "the package");
    auto asked = chunkOf("2.0");
    asked.data = std::string(2 * kChunk, 'x');
    EXPECT_EQ(ask(asked).info.data, "the package");
}

TEST_F(DownloadTopic, FirstChunkAloneCarriesTheTrueSize) {
    addPackage("2.0", pattern(2 * kChunk + 5));
    EXPECT_EQ(ask(chunkOf("2.0", 0, 77)).info.fileSize, 2 * kChunk + 5);
    EXPECT_EQ(ask(chunkOf("2.0", kChunk, 77)).info.fileSize, 77U);
    EXPECT_EQ(ask(chunkOf("2.0", 2 * kChunk, 78)).info.fileSize, 78U);
}

TEST_F(DownloadTopic, FirstRequestThatComesTwiceIsToldTheSizeTwice) {
    addPackage("2.0", pattern(2 * kChunk + 5));
    for (int time = 0; time < 2; ++time) {
        const auto answer = ask(chunkOf("2.0"));
        EXPECT_EQ(answer.info.fileSize, 2 * kChunk + 5);
        EXPECT_EQ(answer.info.data.size(), kChunk);
    }
    EXPECT_EQ(ask(chunkOf("2.0", kChunk)).info.fileSize, 0U) << "a later one gets back what it holds";
}

TEST_F(DownloadTopic, GivesAMebibyteAtMost) {
    const std::string package = pattern(2 * kChunk + 5);
    addPackage("2.0", package);
    std::string read;
    for (const uint32_t position : {0U, kChunk, 2 * kChunk}) {
        const auto answer = ask(chunkOf("2.0", position));
        EXPECT_EQ(answer.info.data.size(), position == 2 * kChunk ? 5U : kChunk);
        read += answer.info.data;
    }
    EXPECT_TRUE(read == package);
}

TEST_F(DownloadTopic, FullChunkLeavesTheFileOpenAndAShortOneClosesIt) {
    const std::string path = addPackage("2.0", pattern(kChunk + 1));
    ask(chunkOf("2.0"));
    EXPECT_TRUE(isOpenHere(path));
    EXPECT_EQ(ask(chunkOf("2.0", kChunk)).info.data.size(), 1U);
    EXPECT_FALSE(isOpenHere(path));
}

TEST_F(DownloadTopic, PackageOfExactlyOneChunkStaysOpenUntilAnEmptyRead) {
    const std::string path = addPackage("2.0", pattern(kChunk));
    EXPECT_EQ(ask(chunkOf("2.0")).info.data.size(), kChunk);
    EXPECT_TRUE(isOpenHere(path));
    const auto last = ask(chunkOf("2.0", kChunk, kChunk));
    EXPECT_EQ(last.code, 0);
    EXPECT_EQ(last.info.data, "");
    EXPECT_EQ(last.info.fileSize, kChunk);
    EXPECT_FALSE(isOpenHere(path));
}

TEST_F(DownloadTopic, EmptyPackageHasSizeZeroAndClosesAtOnce) {
    const std::string path = addPackage("2.0", "");
    const auto answer = ask(chunkOf("2.0"));
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.info.fileSize, 0U);
    EXPECT_EQ(answer.info.data, "");
    EXPECT_FALSE(isOpenHere(path));
}

TEST_F(DownloadTopic, PositionBehindTheEndGivesNoBytesAndCloses) {
    const std::string path = addPackage("2.0", "the package");
    for (const uint32_t position : {11U, 12U, 0x7fffffffU, 0xffffffffU}) {
        const auto answer = ask(chunkOf("2.0", position));
        EXPECT_EQ(answer.code, 0);
        EXPECT_EQ(answer.info.data, "");
        EXPECT_EQ(answer.info.position, position);
        EXPECT_EQ(answer.info.fileSize, 11U);
    }
    EXPECT_FALSE(isOpenHere(path));
}

TEST_F(DownloadTopic, EachTransferHasAFileOfItsOwn) {
    const std::string path = addPackage("2.0", pattern(2 * kChunk));
    ask(chunkOf("2.0", 0, 0, "one"));
    ask(chunkOf("2.0", 0, 0, "other"));
    EXPECT_EQ(support::timesOpenHere(path), 2U);
}

TEST_F(DownloadTopic, SweptReaderOpensAgainAndGoesOnAtItsPosition) {
    support::SweepClock clock;
    const std::string package = pattern(2 * kChunk);
    const std::string path = addPackage("2.0", package);
    mService->stop();
    mService->start();  // its sweep runs on the test's clock
    ASSERT_TRUE(clock.rests());
    ask(chunkOf("2.0"));
    ASSERT_TRUE(isOpenHere(path));
    clock.advance(90000);
    ASSERT_TRUE(clock.rests());
    ASSERT_FALSE(isOpenHere(path));
    const auto answer = ask(chunkOf("2.0", kChunk, 7));
    EXPECT_TRUE(answer.info.data == package.substr(kChunk));
    EXPECT_EQ(answer.info.fileSize, 2 * kChunk);  // the true size once more
}

TEST_F(DownloadTopic, ReadsOnFromAPackageThatHasBeenRemoved) {
    const std::string package = pattern(kChunk + 3);
    const std::string path = addPackage("2.0", package);
    ask(chunkOf("2.0"));
    std::filesystem::remove(path);
    EXPECT_EQ(ask(chunkOf("2.0", kChunk)).info.data, package.substr(kChunk));
}

TEST_F(DownloadTopic, StopClosesTheOpenTransfers) {
    const std::string path = addPackage("2.0", pattern(kChunk));
    ask(chunkOf("2.0"));
    ASSERT_TRUE(isOpenHere(path));
    mService->stop();
    EXPECT_FALSE(isOpenHere(path));
}

TEST_F(DownloadTopic, SecondStartBeginsWithNoOpenTransfers) {
    const std::string path = addPackage("2.0", pattern(kChunk));
    ask(chunkOf("2.0"));
    mService->start();
    EXPECT_FALSE(isOpenHere(path));
    EXPECT_EQ(ask(chunkOf("2.0", kChunk)).info.fileSize, kChunk);
}

TEST_F(DownloadTopic, FindsTheEntryByAllThatNamesAVersion) {
    const auto add = [this](const support::EntrySpec& spec, const std::string& content) {
        const auto added = support::entry(spec);
        added->setLocalFileName(mStore.putText(content + ".exe", content));
        mRequest->addVersion(added);
    };
    add({.version = "2.0", .position = 1}, "x64");
    add({.version = "2.0", .position = 1, .bits = 32}, "x86");
    add({.version = "2.0", .position = 1, .source = 2}, "manual");
    auto asked = chunkOf("2.0");
    EXPECT_EQ(ask(asked).info.data, "x64");
    const auto as = [](const support::EntrySpec& spec) {
        return support::entry(spec)->buildVersionInfo().toStyledString(Public::Base::WriteStyle_Indented).toStdString();
    };
    asked.versionInfo = as({.version = "2.0", .bits = 32});
    EXPECT_EQ(ask(asked).info.data, "x86");
    asked.versionInfo = as({.version = "2.0", .source = 2});
    EXPECT_EQ(ask(asked).info.data, "manual");
}

// A package that this node must fetch first

TEST_F(CloudDownloadTopic, AnswersSizeZeroWhileThePackageIsFetched) {
    mCloud.serve("/p.exe", packageBytes());
    mCloud.hold("/p.exe");
    addCloudEntry("2.0", mCloud.url("/p.exe"));
    auto asked = chunkOf("2.0");
    asked.fileSize = 55;
    const auto answer = ask(asked);
    EXPECT_EQ(answer.code, 0);
    EXPECT_TRUE(answer.hasBody);
    EXPECT_EQ(answer.info.fileSize, 0U);
    EXPECT_EQ(answer.info.data, "");
    EXPECT_EQ(ask(asked).info.fileSize, 0U);
    ASSERT_TRUE(mCloud.waitForHeld("/p.exe"));
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

TEST_F(CloudDownloadTopic, ServesThePackageOnceItHasBeenFetched) {
    const std::string package = packageBytes();
    mCloud.serve("/p.exe", package);
    addCloudEntry("2.0", mCloud.url("/p.exe"));
    ChunkAnswer answer;
    EXPECT_TRUE(support::eventually([&] {
        answer = ask(chunkOf("2.0"));
        return answer.code != 0 || answer.info.fileSize != 0;
    }));
    EXPECT_EQ(answer.info.fileSize, package.size());
    EXPECT_TRUE(answer.info.data == package);
    EXPECT_EQ(mCloud.requests().size(), 1U);
}

TEST_F(CloudDownloadTopic, ServesThePackageThatLiesInTheStoreAlready) {
    const std::string path = mStore.put("Online/Windows x64 All/2.0/2.0.exe", "2.0");
    addCloudEntry("2.0", mCloud.url("/p.exe"));
    const auto answer = ask(chunkOf("2.0"));
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.info.data, support::readText(path));
    EXPECT_TRUE(mCloud.requests().empty());
}

TEST_F(CloudDownloadTopic, DoesNotTestThePackageAgainForEveryChunk) {
    support::PackageSpec spec;
    spec.version = "2.0";
    spec.compressor = "none";
    spec.files = support::defaultFiles(spec);
    spec.files.emplace_back("Orv Client\\big.bin", pattern(2 * kChunk));
    const std::string path = mStore.put("Online/Windows x64 All/2.0/2.0.exe", spec);
    addCloudEntry("2.0", mCloud.url("/p.exe"));
    ASSERT_EQ(ask(chunkOf("2.0")).info.data.size(), kChunk);
    support::appendBytes(path, "no test would pass this");
    EXPECT_EQ(ask(chunkOf("2.0", kChunk)).code, 0);
    EXPECT_EQ(ask(chunkOf("2.0", 0, 0, "another transfer")).code, -416);
}

TEST_F(CloudDownloadTopic, EntryWithoutAUrlCannotBeFetched) {
    addCloudEntry("2.0", "");
    const auto answer = ask(chunkOf("2.0"));
    EXPECT_EQ(answer.code, -1);
    EXPECT_FALSE(answer.hasBody);
    EXPECT_EQ(logged(), Texts{"getdownload fail!"});
}

TEST_F(CloudDownloadTopic, FetchThatCannotBeginAnswersItsError) {
    const auto added = addCloudEntry("2.0", mCloud.url("/p.exe"));
    std::filesystem::create_directories(added->getPackageFile() + "/stands in the way");
    const auto answer = ask(chunkOf("2.0"));
    EXPECT_EQ(answer.code, -602);
    EXPECT_FALSE(answer.hasBody);
    EXPECT_EQ(logged(), Texts{"download fail! errcode:-602"});
}

TEST_F(CloudDownloadTopic, FetchThatFailedLaterIsTriedAgainByTheNextRequest) {
    mCloud.serve("/p.exe", "not found", 404);
    const auto added = addCloudEntry("2.0", mCloud.url("/p.exe"));
    EXPECT_EQ(ask(chunkOf("2.0")).info.fileSize, 0U);
    const auto download = added->getDownload(std::shared_ptr<IVersionRequest>(mRequest));
    ASSERT_TRUE(support::eventually([&] { return download->getError().errorCode() == -1; }));
    // Served well: a second failure could come before the answer.
    mCloud.serve("/p.exe", packageBytes());
    EXPECT_EQ(ask(chunkOf("2.0")).code, 0);
    EXPECT_TRUE(support::eventually([&] { return mCloud.requests().size() == 2; }));
}
