// Requests for chunks that cannot be served, and peers that mean harm.
#include <thread>

#include "DownloadTopicFixture.h"
#include "SystemErrors.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "VersionService/FileWriterManager.h"

using namespace Tarnwick::OrvUpdate;
using Tarnwick::Protocol::TWPacket;

namespace {

class DownloadTopicFailure : public DownloadTopic {
protected:
    void expectRefused(const ChunkAnswer& answer, int code, const Texts& log) const {
        EXPECT_EQ(answer.code, code);
        EXPECT_FALSE(answer.hasBody);
        EXPECT_EQ(logged(), log);
    }
    ChunkAnswer askWithDocument(const std::string& document) const {
        auto info = chunkOf("2.0");
        info.versionInfo = document;
        return ask(info);
    }
};

using HostilePull = DownloadTopicFailure;

}  // namespace

TEST_F(DownloadTopicFailure, WithoutACatalogueIsMinus1) {
    mRequest.reset();
    expectRefused(ask(chunkOf("2.0")), -1, {"versionRequest empty()"});
}

TEST_F(DownloadTopicFailure, UnreadableBodyIsMinus301) {
    expectRefused(answerOf(handler(), requestWith(Public::Base::SharedBuffer("no record"))), -301,
                  {"protocol parse fail"});
}

TEST_F(DownloadTopicFailure, MissingBodyIsMinus301) {
    expectRefused(answerOf(handler(), requestWith({})), -301, {"protocol parse fail"});
}

TEST_F(DownloadTopicFailure, BodyOfAnotherRecordIsMinus301) {
    Tarnwick::Protocol::TWProtoUpgradePkt other;
    other.body = document("2.0");
    expectRefused(answerOf(handler(), requestWith(TWPacket::serializeAsBytes(other))), -301, {"protocol parse fail"});
}

TEST_F(DownloadTopicFailure, DocumentThatIsNoJsonIsMinus1WithoutALogText) {
    expectRefused(askWithDocument("no json"), -1, {});
}

TEST_F(DownloadTopicFailure, DocumentThatLacksAMemberIsMinus301WithoutALogText) {
    expectRefused(askWithDocument(R"({"softversion":"2.0"})"), -301, {});
}

TEST_F(DownloadTopicFailure, UnknownVersionIsMinus416) {
    addPackage("2.0", "the package");
    expectRefused(ask(chunkOf("2.1")), -416, {"version not find"});
}

TEST_F(DownloadTopicFailure, PackageFileThatVanishedTellsTheSystemsError) {
    std::filesystem::remove(addPackage("2.0", "the package"));
    expectRefused(ask(chunkOf("2.0")), -(10000 + ENOENT),
                  {"alloc Reader fail! errcode:" + std::to_string(-(10000 + ENOENT))});
}

TEST_F(DownloadTopicFailure, PackageFileThatVanishedBehindASweptReaderTellsIt) {
    const std::string path = addPackage("2.0", std::string(kChunk + 1, 'x'));
    EXPECT_EQ(ask(chunkOf("2.0")).code, 0);
    std::filesystem::remove(path);
    mService->stop();
    mService->start();
    EXPECT_EQ(ask(chunkOf("2.0", kChunk)).code, -(10000 + ENOENT));
}

TEST_F(DownloadTopicFailure, DirectoryInThePackagesPlaceCannotBeOpened) {
    const std::string path = addPackage("2.0", "the package");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(ask(chunkOf("2.0")).code, errorOf(support::SystemError::IsDirectory));
}

TEST_F(DownloadTopicFailure, EntryOfAnotherNodeHasNoPackageHere) {
    mRequest->addVersion(support::entry("2.0", StoragePosition_Node));
    EXPECT_NE(ask(chunkOf("2.0")).code, 0);
    EXPECT_EQ(logged().size(), 1U);
}

TEST_F(DownloadTopicFailure, PackageOf4GiBIsRefused) {
    const std::string path = addPackage("2.0", "");
    std::filesystem::resize_file(path, uint64_t{1} << 32);
    expectRefused(ask(chunkOf("2.0")), -416, {"alloc Reader fail! errcode:-416"});
}

TEST_F(DownloadTopicFailure, PackageOfOneByteLessIsServed) {
    const std::string path = addPackage("2.0", "");
    std::filesystem::resize_file(path, (uint64_t{1} << 32) - 1);
    const auto answer = ask(chunkOf("2.0", 0xfffffffeU));
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.info.fileSize, 0xffffffffU);
    EXPECT_EQ(answer.info.data, std::string(1, '\0'));
}

TEST_F(DownloadTopicFailure, HandlerThatRunsOnAfterStopAnswersMinus1) {
    addPackage("2.0", "the package");
    const auto running = handler();
    mService->stop();
    const auto answer = answerOf(running, requestWith(TWPacket::serializeAsBytes(chunkOf("2.0"))));
    EXPECT_EQ(answer.code, -1);
    EXPECT_FALSE(answer.hasBody);
}

TEST_F(DownloadTopicFailure, HandlerOfAServiceThatHasGoneAnswersNothing) {
    const auto running = handler();
    mService.reset();
    EXPECT_EQ(running(requestWith(TWPacket::serializeAsBytes(chunkOf("2.0")))), nullptr);
}

// Peers that mean harm

TEST_F(HostilePull, TransferIdBeyondAnySenseIsRefused) {
    addPackage("2.0", std::string(kChunk, 'x'));
    auto info = chunkOf("2.0");
    info.transferId.assign(FileWriterManager::kMaxTransferId, 'i');
    EXPECT_EQ(ask(info).code, 0);
    info.transferId += 'i';
    expectRefused(ask(info), -301, {"protocol parse fail"});
    info.transferId.assign(64 << 20, 'i');
    EXPECT_EQ(ask(info).code, -301);
}

TEST_F(HostilePull, ManyTransfersHoldALimitedNumberOfFiles) {
    const std::string path = addPackage("2.0", std::string(kChunk + 1, 'x'));
    constexpr size_t kTransfers = FileWriterManager::kMaxFiles + 50;
    for (size_t i = 0; i < kTransfers; ++i) {
        ASSERT_EQ(ask(chunkOf("2.0", 0, 0, std::to_string(i))).info.data.size(), kChunk);
    }
    EXPECT_EQ(support::timesOpenHere(path), FileWriterManager::kMaxFiles);
    const auto first = ask(chunkOf("2.0", kChunk, 0, "0"));  // lost its file and goes on all the same
    EXPECT_EQ(first.info.data, "x");
    EXPECT_EQ(first.info.fileSize, kChunk + 1);
}

TEST_F(HostilePull, DocumentThatNamesPathsReachesNoFile) {
    addPackage("2.0", "the package");
    mStore.putText("secret.exe", "secret");
    const auto document = [](const std::string& version, const std::string& server) {
        return R"({"softversion":")" + version + R"(","serverid":")" + server +
               R"(","description":"/etc/passwd","systemType":1,"systemBits":64,"versionType":1,"versionSource":1})";
    };
    EXPECT_EQ(askWithDocument(document("2.0", "../../secret.exe")).info.data, "the package");
    for (const std::string version : {"../secret", "2.0/../../secret", "..\\\\secret", "", "/etc/passwd"}) {
        EXPECT_EQ(askWithDocument(document(version, "S1")).code, -416) << version;
    }
}

TEST_F(HostilePull, DocumentOfNestedArraysIsRefused) { EXPECT_EQ(askWithDocument(std::string(100000, '[')).code, -1); }

TEST_F(HostilePull, PeersThatAskAllAtOnceGetTheirOwnBytes) {
    const std::string package(kChunk + 100, 'x');
    addPackage("2.0", package);
    std::atomic<int> wrong{0};
    std::vector<std::thread> peers;
    for (int peer = 0; peer < 4; ++peer) {
        peers.emplace_back([&, peer] {
            for (int run = 0; run < 10; ++run) {
                const std::string id = std::to_string(peer % 2) + "/" + std::to_string(run);  // shared by two
                if (ask(chunkOf("2.0", 0, 0, id)).info.data.size() != kChunk) ++wrong;
                if (ask(chunkOf("2.0", kChunk, 0, id)).info.data.size() != 100) ++wrong;
            }
        });
    }
    for (auto& peer : peers) peer.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(HostilePull, StopWhilePeersAskEndsWithAnswersOrMinus1) {
    addPackage("2.0", std::string(kChunk, 'x'));
    const auto running = handler();
    std::atomic<bool> enough{false};
    std::atomic<int> odd{0};
    std::thread peer([&] {
        for (int i = 0; !enough; ++i) {
            const auto info = chunkOf("2.0", 0, 0, std::to_string(i));
            const auto answer = answerOf(running, requestWith(TWPacket::serializeAsBytes(info)));
            if (answer.code != 0 && answer.code != -1) ++odd;
        }
    });
    for (int i = 0; i < 50; ++i) {
        mService->stop();
        mService->start();
    }
    enough = true;
    peer.join();
    EXPECT_EQ(odd, 0);
}
