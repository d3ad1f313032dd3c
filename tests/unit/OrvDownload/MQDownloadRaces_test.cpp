// The pull between several threads.
#include <thread>

#include "MQDownloadFixture.h"
#include "Received.h"

using namespace Tarnwick::OrvUpdate;
using support::eventually;
using support::PullFixture;

namespace {

constexpr int kRuns = 200;
constexpr uint32_t kSize = 64 * 1024;

class QueuePullRace : public PullFixture {
protected:
    ~QueuePullRace() override { stopServing(); }

    /// Answers what is asked, from a thread of its own, until the test ends.
    void serveAside() {
        mServer = std::thread([this] {
            size_t answered = 0;
            while (!mEnough) {
                if (mPeer->count() == answered) {
                    std::this_thread::yield();
                    continue;
                }
                const auto asked = mPeer->at(answered++);
                const uint32_t position = asked.record.position;
                asked.answer(chunk(kSize, position, position < kSize ? std::string(kSize / 4, 'x') : std::string()));
            }
        });
    }
    void stopServing() {
        mEnough = true;
        if (mServer.joinable()) mServer.join();
    }

    std::atomic<bool> mEnough{false};
    std::thread mServer;
};

}  // namespace

TEST_F(QueuePullRace, CancelLeavesNoFileWhateverAnAnswerIsDoing) {
    serveAside();
    for (int run = 0; run < kRuns; ++run) {
        start();
        for (int pause = 0; pause < run % 17; ++pause) std::this_thread::yield();
        mDownload->cancel();
        ASSERT_FALSE(content()) << run;
        ASSERT_FALSE(support::isOpenHere(mPath)) << run;
    }
    stopServing();
    EXPECT_FALSE(content());
}

TEST_F(QueuePullRace, CancelsAndAnswersAtOneFreshRunLeaveNoFile) {
    for (int run = 0; run < kRuns; ++run) {
        start();
        const auto asked = mPeer->last();
        std::thread answering([&] { asked.answer(chunk(6, 0, "abc")); });
        mDownload->cancel();
        answering.join();
        ASSERT_FALSE(content()) << run;
    }
    EXPECT_EQ(calls(), 0);
}

TEST_F(QueuePullRace, StartsFromSeveralThreadsAllHearOfTheEnd) {
    constexpr int kStarters = 8;
    std::vector<std::thread> starters;
    for (int i = 0; i < kStarters; ++i) starters.emplace_back([this] { start(); });
    for (auto& starter : starters) starter.join();
    serveAside();
    EXPECT_TRUE(eventually([&] { return calls() == kStarters; }));
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(std::filesystem::file_size(mPath), kSize);
}

TEST_F(QueuePullRace, StartsDuringRunsLeaveAWholeFile) {
    serveAside();
    for (int run = 1; run <= kRuns; ++run) start();
    EXPECT_TRUE(eventually([&] { return calls() == kRuns; }));
    EXPECT_TRUE(mDownload->finish());
    EXPECT_EQ(content(), std::string(kSize, 'x'));
}

TEST_F(QueuePullRace, OutcomeMayBeReadWhileItArrives) {
    serveAside();
    std::thread reader([this] {
        while (!mEnough) {
            float done = 0;
            std::string fileName;
            mDownload->getProgress(done);
            mDownload->getFileName(fileName);
            EXPECT_GE(done, 0.0F);
            EXPECT_LE(done, 1.0F);
            EXPECT_EQ(mDownload->getError().errorCode(), 0);
            mDownload->finish();
        }
    });
    for (int run = 1; run <= 20; ++run) {
        start();
        EXPECT_TRUE(eventually([&] { return calls() == run; }));
    }
    mEnough = true;
    reader.join();
    EXPECT_TRUE(mDownload->finish());
}

TEST_F(QueuePullRace, OwnerMayLetGoAtAnyMoment) {
    serveAside();
    for (int run = 0; run < kRuns; ++run) {
        const auto transfer = makeDownload();
        transfer->start(counting());
        for (int pause = 0; pause < run % 13; ++pause) std::this_thread::yield();
    }
    EXPECT_TRUE(eventually([&] { return !support::isOpenHere(mPath); }));
}
