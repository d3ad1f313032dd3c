// Answers to peers that have this node fetch a package and ask how far it is.
#include "FakeTransfer.h"
#include "OrvDownload/ConnectionProviders.h"
#include "PeerTopicsFixture.h"
#include "TreeSnapshot.h"

using namespace Tarnwick::OrvUpdate;
using support::VersionWithTransfer;
using Texts = std::vector<std::string>;

namespace {

/// The catalogue holds one version, whose transfer does what a test says.
class DownloadTopics : public PeerTopics {
protected:
    DownloadTopics() {
        startAt(*mRequest);
        mEntry->parseVersion(documentOf("2.0", "peer"));
        mRequest->addVersion(mEntry);
    }

    const std::shared_ptr<VersionWithTransfer> mEntry =
        std::make_shared<VersionWithTransfer>(mWorker, mStore.path(), std::string());
    support::FakeTransfer& mTransfer = *mEntry->transfer;
};

class StartDownloadTopic : public DownloadTopics {};
class DownloadPosTopic : public DownloadTopics {};

}  // namespace

// --- Starting a transfer

TEST_F(StartDownloadTopic, StartsTheTransferOfTheEntryWithoutACallback) {
    expectRefusal(ask(kStartDownload, documentOf("2.0")), 0);
    EXPECT_EQ(mTransfer.starts, 1);
    EXPECT_EQ(mTransfer.keyedStarts, 0);
    EXPECT_FALSE(mTransfer.withCallback);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(StartDownloadTopic, ReachesTheQueueByTheEntrysServerNotTheDocuments) {
    ask(kStartDownload, documentOf("2.0", "nobody"));
    ASSERT_NE(mEntry->provider, nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<GetServerConnection>(mEntry->provider), nullptr);
    EXPECT_NE(mEntry->provider->getConnection(), nullptr);
}

TEST_F(StartDownloadTopic, ATransferThatRunsIsStartedOnceMore) {
    ask(kStartDownload, documentOf("2.0"));
    ask(kStartDownload, documentOf("2.0"));
    EXPECT_EQ(mTransfer.starts, 2);
}

TEST_F(StartDownloadTopic, AKnownVersionIsNotEnteredAgain) {
    ask(kStartDownload, documentOf("2.0"));
    EXPECT_EQ(catalogue(), Texts{"2.0"});
}

TEST_F(StartDownloadTopic, AnUnknownVersionIsEnteredAndStaysWhenItsTransferFails) {
    expectRefusal(ask(kStartDownload, documentOf("3.0")), -1);
    EXPECT_TRUE(logged("getdownload fail!"));
    ASSERT_EQ(catalogue(), (Texts{"2.0", "3.0"}));
    const auto added = *std::next(mRequest->getVersions().begin());
    EXPECT_EQ(added->getStoragePosition(), StoragePosition_Node);
    EXPECT_TRUE(added->getPackageFile().starts_with(mStore.path()));
}

TEST_F(StartDownloadTopic, AnUnknownVersionWhosePackageLiesInTheStoreIsTestedAndDone) {
    mStore.put(packageOf("1.11.0.8"), "1.11.0.8");
    expectRefusal(ask(kStartDownload, documentOf("1.11.0.8")), 0);
    expectProgress(ask(kDownloadPos, documentOf("1.11.0.8")), "1.0", true);
}

TEST_F(StartDownloadTopic, EveryInventedVersionFillsTheCatalogue) {
    for (int number = 0; number < 100; ++number) {
        ask(kStartDownload, documentOf("9." + std::to_string(number)));
    }
    EXPECT_EQ(catalogue().size(), 101U);
    // Whoever asks the cloud anew drops them.
    mRequest->removeVersions();
    EXPECT_TRUE(catalogue().empty());
}

TEST_F(StartDownloadTopic, SeveralPeersMayNameOneUnknownVersionAtOnce) {
    mStore.put(packageOf("1.11.0.8"), "1.11.0.8");
    const auto packet = packetOf(documentOf("1.11.0.8"));
    for (int peer = 0; peer < 8; ++peer) EXPECT_NE(mAsker.send("server", kStartDownload, &packet), 0U);
    ASSERT_TRUE(mAsker.answers().waitFor(8));
    for (const auto& answer : mAsker.answers().values()) EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(catalogue(), (Texts{"1.11.0.8", "2.0"}));
    expectProgress(ask(kDownloadPos, documentOf("1.11.0.8")), "1.0", true);
}

TEST_F(StartDownloadTopic, AVersionWithoutATransferIsRefused) {
    mEntry->transfer.reset();
    expectRefusal(ask(kStartDownload, documentOf("2.0")), -1);
    EXPECT_TRUE(logged("getdownload fail!"));
}

TEST_F(StartDownloadTopic, AStartThatFailsIsToldWithItsError) {
    mTransfer.startResult = ErrorInfo(-602, "disk");
    const auto answer = ask(kStartDownload, documentOf("2.0"));
    EXPECT_EQ(answer.code, -602);
    EXPECT_EQ(answer.message, "disk");
    EXPECT_FALSE(answer.hasBody);
    EXPECT_TRUE(logged("download start fail! errcode:-602"));
}

TEST_F(StartDownloadTopic, NamesInTheDocumentLeadNowhere) {
    mRequest->stop();
    startAt(*mRequest, "1.0.0.0", mStore.path("inner/store"));
    const auto before = support::snapshot(mStore.path());
    for (const std::string name :
         {"../../evil", "C:\\\\evil", "/etc/passwd", "..", "1.0/../..", "1.0\\u0000/../evil"}) {
        expectRefusal(ask(kStartDownload, documentOf(name)), -1);
    }
    for (const auto& entry : mRequest->getVersions()) {
        EXPECT_EQ(entry->getPackageFile().find(".."), std::string::npos) << entry->getPackageFile();
        EXPECT_EQ(entry->getPackageFile().find("evil"), std::string::npos) << entry->getPackageFile();
    }
    EXPECT_EQ(support::snapshot(mStore.path()), before);
}

// --- Asking for its position

TEST_F(DownloadPosTopic, TellsHowFarTheTransferIs) {
    mTransfer.pos = 0.5F;
    expectProgress(ask(kDownloadPos, documentOf("2.0")), "0.5", false);
    mTransfer.pos = 1.0F;
    mTransfer.finished = true;
    expectProgress(ask(kDownloadPos, documentOf("2.0")), "1.0", true);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(DownloadPosTopic, WidensThePosition) {
    mTransfer.pos = 0.98F;
    const auto answer = ask(kDownloadPos, documentOf("2.0"));
    JsonValue document;
    ASSERT_FALSE(document.read(Public::Base::SharedBuffer(answer.body)));
    EXPECT_EQ(document["pos"]->toDouble(), static_cast<double>(0.98F));
    EXPECT_TRUE(document["finish"]->isBool());
}

TEST_F(DownloadPosTopic, StartsNothing) {
    ask(kDownloadPos, documentOf("2.0"));
    EXPECT_EQ(mTransfer.starts, 0);
}

TEST_F(DownloadPosTopic, AnUnknownVersionGetsASuccessWithoutADocument) {
    expectRefusal(ask(kDownloadPos, documentOf("3.0")), 0);
    EXPECT_TRUE(logged("not find version"));
    EXPECT_EQ(catalogue(), Texts{"2.0"});
}

TEST_F(DownloadPosTopic, AVersionWithoutATransferIsRefused) {
    mEntry->transfer.reset();
    expectRefusal(ask(kDownloadPos, documentOf("2.0")), -1);
    EXPECT_TRUE(logged("getdownload fail"));
}

TEST_F(DownloadPosTopic, APositionThatFailsIsToldWithItsError) {
    mTransfer.progressResult = ErrorInfo(-203, "gone");
    mTransfer.error = ErrorInfo(-416, "");
    const auto answer = ask(kDownloadPos, documentOf("2.0"));
    EXPECT_EQ(answer.code, -203);
    EXPECT_EQ(answer.message, "gone");
    EXPECT_FALSE(answer.hasBody);
    EXPECT_TRUE(logged("getProgress fail! errcode:-203"));
}

TEST_F(DownloadPosTopic, AnErrorOfTheTransferIsToldAlsoWhenItHasFinished) {
    mTransfer.error = ErrorInfo(-416, "bad");
    mTransfer.finished = true;
    const auto answer = ask(kDownloadPos, documentOf("2.0"));
    EXPECT_EQ(answer.code, -416);
    EXPECT_EQ(answer.message, "bad");
    EXPECT_FALSE(answer.hasBody);
    EXPECT_TRUE(logged("download fail! errcode:-416"));
}

TEST_F(DownloadPosTopic, APositionThatIsNoNumberStaysADocument) {
    mTransfer.pos = std::numeric_limits<float>::quiet_NaN();
    const auto answer = ask(kDownloadPos, documentOf("2.0"));
    EXPECT_EQ(answer.code, 0);
    JsonValue document;
    EXPECT_FALSE(document.read(Public::Base::SharedBuffer(answer.body))) << answer.body;
    EXPECT_TRUE(document.isMember("pos"));
    EXPECT_FALSE(document["finish"]->toBool());
}
