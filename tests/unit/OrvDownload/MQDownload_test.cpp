// The pull of a package: what is asked, what becomes of the answers.
#include "MQDownloadFixture.h"
#include "Public/Base/System.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::ErrorInfo;
using support::PullFixture;

namespace {

class QueuePull : public PullFixture {};

}  // namespace

TEST_F(QueuePull, NewOneHasNothingToTell) {
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(mDownload->getError().errorMessage(), "");
    EXPECT_EQ(mPeer->count(), 0U);
}

TEST_F(QueuePull, AsksThePeerDirectlyForTheFirstChunk) {
    EXPECT_EQ(start(), 0);
    ASSERT_EQ(mPeer->count(), 1U);
    const auto sent = mPeer->last();
    EXPECT_EQ(sent.via, "");
    EXPECT_EQ(sent.to, "S2");
    EXPECT_EQ(sent.topic, "topic_upgrade_downloadversion");
    EXPECT_FALSE(sent.authenticated);
    EXPECT_EQ(sent.level, 0U);
    EXPECT_EQ(sent.timeoutMs, 60000U);
}

TEST_F(QueuePull, FirstRequestNamesTheVersionAndTheBeginning) {
    start();
    const auto record = mPeer->last().record;
    EXPECT_EQ(record.transferId.size(), 36U);
    EXPECT_EQ(record.versionInfo,
              mVersion->buildVersionInfo().toStyledString(Public::Base::WriteStyle_Indented).toStdString());
    EXPECT_EQ(record.position, 0U);
    EXPECT_EQ(record.fileSize, 0U);
    EXPECT_EQ(record.data, "");
}

TEST_F(QueuePull, EachRunHasATransferIdOfItsOwn) {
    start();
    serve("abc", 2);
    const std::string first = mPeer->last().record.transferId;
    start();
    EXPECT_NE(mPeer->last().record.transferId, first);
}

TEST_F(QueuePull, KeepsTheTransferIdAndTheDocumentForTheWholeRun) {
    start();
    const auto first = mPeer->last().record;
    serve("abcdef", 2);
    ASSERT_EQ(mPeer->count(), 4U);
    for (size_t i = 1; i < mPeer->count(); ++i) {
        EXPECT_EQ(mPeer->at(i).record.transferId, first.transferId);
        EXPECT_EQ(mPeer->at(i).record.versionInfo, first.versionInfo);
        EXPECT_EQ(mPeer->at(i).record.data, "");
    }
}

TEST_F(QueuePull, AsksOnFromWhatIsWrittenAndHandsTheSizeBack) {
    start();
    answer(6, 0, "abcd");
    ASSERT_EQ(mPeer->count(), 2U);
    EXPECT_EQ(mPeer->last().record.position, 4U);
    EXPECT_EQ(mPeer->last().record.fileSize, 6U);
    answer(6, 4, "ef");
    ASSERT_EQ(mPeer->count(), 3U);
    EXPECT_EQ(mPeer->last().record.position, 6U);
}

TEST_F(QueuePull, HasOneRequestOutAtATime) {
    start();
    EXPECT_EQ(mPeer->count(), 1U);
    answer(100, 0, "abcd");
    EXPECT_EQ(mPeer->count(), 2U);
    answer(100, 4, "abcd");
    EXPECT_EQ(mPeer->count(), 3U);
}

TEST_F(QueuePull, EveryPullEndsWithOneEmptyExchange) {
    start();
    answer(3, 0, "abc");
    EXPECT_FALSE(mDownload->finish());
    EXPECT_EQ(calls(), 0);
    ASSERT_EQ(mPeer->count(), 2U);
    answer(3, 3, "");
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(calls(), 1);
    EXPECT_EQ(mPeer->count(), 2U);
}

TEST_F(QueuePull, OneChunkHasProgressZeroAfterItAndOneAtTheEnd) {
    start();
    answer(3, 0, "abc");
    EXPECT_EQ(progress(), 0.0F);
    answer(3, 3, "");
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(QueuePull, ProgressTrailsByAChunk) {
    start();
    answer(8, 0, "abcd");
    EXPECT_EQ(progress(), 0.0F);
    answer(8, 4, "efgh");
    EXPECT_EQ(progress(), 0.5F);
}

TEST_F(QueuePull, WritesWhatThePeerHas) {
    const std::string package = "the bytes of a package";
    start();
    serve(package, 5);
    EXPECT_EQ(content(), package);
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(QueuePull, WritesUnderTheFinalNameFromTheStart) {
    start();
    EXPECT_FALSE(content());
    answer(10, 0, "abc");
    EXPECT_EQ(content(), "abc");
    EXPECT_EQ(support::filesBelow(mDir.path() + "/store").size(), 1U);
}

TEST_F(QueuePull, MakesTheDirectoryOfThePackage) {
    start();
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(mPath).parent_path()));
    answer(10, 0, "abc");
    EXPECT_TRUE(std::filesystem::exists(mPath));
}

TEST_F(QueuePull, ReplacesWhatLiesInThePackagesPlace) {
    support::writeText(mPath, "a longer text that was here before");
    start();
    serve("new", 3);
    EXPECT_EQ(content(), "new");
}

TEST_F(QueuePull, LeavesWhatLiesThereToWhoeverIsTestingIt) {
    support::writeText(mPath, "a package under test");
    Public::Base::MappedFile tested;
    ASSERT_EQ(tested.open(mPath), Public::Base::MappedFile::Result::Mapped);
    start();
    serve("new", 3);
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(tested.data()), tested.size()), "a package under test");
}

TEST_F(QueuePull, TakesNothingAwayBeforeTheFirstBytesHaveCome) {
    support::writeText(mPath, "an older package");
    start();
    answer(0, 0, "");
    EXPECT_EQ(content(), "an older package");
}

TEST_F(QueuePull, FileIsClosedWhenTheCallbackRuns) {
    bool open = true;
    mDownload->start([&] { open = support::isOpenHere(mPath); });
    answer(3, 0, "abc");
    EXPECT_TRUE(support::isOpenHere(mPath));
    answer(3, 3, "");
    EXPECT_FALSE(open);
}

TEST_F(QueuePull, CallbackFindsTheOutcome) {
    bool finished = false;
    float done = 0;
    mDownload->start([&] {
        finished = mDownload->finish();
        mDownload->getProgress(done);
    });
    serve("abc", 3);
    EXPECT_TRUE(finished);
    EXPECT_EQ(done, 1.0F);
}

TEST_F(QueuePull, TakesAnEmptyCallback) {
    EXPECT_EQ(mDownload->start(Function<void()>()).errorCode(), 0);
    serve("abc", 3);
    EXPECT_TRUE(mDownload->finish());
}

// A peer that has no bytes yet

TEST_F(QueuePull, AsksAgainAtOnceWhileThePeerHasNoBytes) {
    start();
    for (size_t asked = 1; asked <= 50; ++asked) {
        ASSERT_EQ(mPeer->count(), asked);
        answer(0, 0, "");
    }
    EXPECT_EQ(mPeer->last().record.position, 0U);
    EXPECT_EQ(mPeer->last().record.fileSize, 0U);
    EXPECT_FALSE(content());
    EXPECT_EQ(logged(), Texts());
    serve("abc", 3);
    EXPECT_EQ(content(), "abc");
}

TEST_F(QueuePull, AsksAgainUnchangedWhenThePeerLosesItsBytesMidway) {
    start();
    answer(6, 0, "abc");
    answer(0, 3, "zzz");
    ASSERT_EQ(mPeer->count(), 3U);
    EXPECT_EQ(mPeer->last().record.position, 3U);
    EXPECT_EQ(mPeer->last().record.fileSize, 6U);
    EXPECT_EQ(content(), "abc");
}

// By way of the master

TEST_F(QueuePull, GoesByTheMasterWhereThereIsNoDirectConnection) {
    mProvider->direct = nullptr;
    mProvider->master = mPeer;
    mProvider->masterId = "M1";
    EXPECT_EQ(start(), 0);
    ASSERT_EQ(mPeer->count(), 1U);
    const auto sent = mPeer->last();
    EXPECT_EQ(sent.via, "M1");
    EXPECT_EQ(sent.to, "S2");
    EXPECT_EQ(sent.topic, "topic_upgrade_downloadversion");
    EXPECT_EQ(sent.session, "");
    EXPECT_EQ(sent.level, 0U);
    EXPECT_EQ(sent.timeoutMs, 60000U);
    serve("abc", 3);
    EXPECT_EQ(content(), "abc");
}

TEST_F(QueuePull, LooksForTheConnectionAtEveryChunk) {
    start();
    answer(4, 0, "ab");
    const auto master = std::make_shared<support::ScriptedConnection>();
    mProvider->direct = nullptr;
    mProvider->master = master;
    answer(4, 2, "cd");
    ASSERT_EQ(master->count(), 1U);
    EXPECT_EQ(master->last().record.position, 4U);
}

TEST_F(QueuePull, AsksTheServerOfTheVersionsProvider) {
    struct Source : IGetServerId {
        std::string getServerId() override { return "S9"; }
    };
    mVersion = std::make_shared<OrvVersion>(nullptr, mDir.path(), std::make_shared<Source>());
    mDownload = makeDownload();
    start();
    EXPECT_EQ(mPeer->last().to, "S9");
}

// The file's name

TEST_F(QueuePull, TellsTheFileNameBeforeAnyChunkHasCome) {
    std::string fileName;
    EXPECT_EQ(mDownload->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, mPath);
    mVersion->setLocalFileName("/elsewhere.exe");
    EXPECT_EQ(mDownload->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, "/elsewhere.exe");
}

TEST_F(QueuePull, HasNoFileNameWithoutItsVersion) {
    mVersion.reset();
    std::string fileName = "before";
    EXPECT_EQ(mDownload->getFileName(fileName).errorCode(), -1);
    EXPECT_EQ(fileName, "before");
}

// What it does not offer

TEST_F(QueuePull, StopDoesNothing) {
    start();
    answer(6, 0, "abc");
    EXPECT_EQ(mDownload->stop().errorCode(), 0);
    EXPECT_EQ(mDownload->stop().errorMessage(), "");
    serve("abcdef", 3);
    EXPECT_EQ(content(), "abcdef");
    EXPECT_EQ(calls(), 1);
}

TEST_F(QueuePull, OffersNoKeyedCallbacks) {
    IDownload& download = *mDownload;
    EXPECT_EQ(download.start(counting(), this).errorCode(), -2);
    EXPECT_EQ(mPeer->count(), 0U);
}

TEST_F(QueuePull, ThrowsWhenNoSharedPointerOwnsIt) {
    MQDownload bare(mProvider, mVersion);
    EXPECT_THROW(bare.start(counting()), std::bad_weak_ptr);
}

TEST_F(QueuePull, PeerMayAnswerInsideOfThePush) {
    const std::string package = "answered inside";
    mPeer->answerAtOnce([&](const support::TWProtoUpgradeInfo& asked) {
        const auto data = asked.position < package.size() ? package.substr(asked.position, 4) : "";
        return chunk(static_cast<uint32_t>(package.size()), asked.position, data);
    });
    EXPECT_EQ(start(), 0);
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), package);
    EXPECT_EQ(calls(), 1);
}
