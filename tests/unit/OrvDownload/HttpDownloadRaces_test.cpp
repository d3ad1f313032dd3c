// The transfer from the cloud between several threads, and waiters that act on the transfer that calls them.
#include <array>
#include <future>

#include "HttpTransferFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::BadScript;
using support::eventually;
using support::Waiter;

namespace {

class HttpTransferWaiter : public support::HttpTransferFixture {};

class HttpTransferRace : public support::HttpTransferFixture {
protected:
    void SetUp() override { mWorker = Public::Network::IOWorker::create(3); }

    static constexpr int kRuns = 40;
    std::array<char, 16> mKeys{};
};

}  // namespace

TEST_F(HttpTransferWaiter, MayLetGoOfTheLastReference) {
    prepareBody("body");
    const std::weak_ptr<HttpDownload> transfer = mTransfer;
    std::promise<void> ready;
    const auto isReady = ready.get_future().share();
    const Function<void()> done = mWaiter.callback();
    ASSERT_EQ(mTransfer
                  ->start([&, isReady, done] {
                      isReady.wait();
                      mTransfer.reset();
                      mVersion.reset();
                      done();
                  })
                  .errorCode(),
              0);
    ready.set_value();
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_TRUE(eventually([&] { return transfer.expired(); }));
    EXPECT_EQ(content(), "body");
}

TEST_F(HttpTransferWaiter, MayResetTheTransferOfItsVersion) {
    mServer.serve("/p.exe", "body");
    mVersion = makeVersion(mServer.url("/p.exe"), mPath);
    const std::weak_ptr<IDownload> transfer = mVersion->getDownload(std::shared_ptr<IGetConnection>());
    ASSERT_TRUE(std::dynamic_pointer_cast<HttpDownload>(transfer.lock()));
    const Function<void()> done = mWaiter.callback();
    const auto version = mVersion;
    ASSERT_EQ(transfer.lock()
                  ->start([version = std::weak_ptr<OrvVersion>(mVersion), done] {
                      if (const auto held = version.lock()) held->resetDownload();
                      done();
                  })
                  .errorCode(),
              0);
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_TRUE(eventually([&] { return transfer.expired(); }));
    EXPECT_EQ(content(), "body");
    EXPECT_NE(version->getPackageFile(), mPath);
}

TEST_F(HttpTransferWaiter, MayCancel) {
    prepareBody("body");
    const Function<void()> done = mWaiter.callback();
    mTransfer->start([&, done] {
        mTransfer->cancel();
        done();
    });
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_FALSE(content());
}

TEST_F(HttpTransferWaiter, MayStop) {
    prepareBody("body");
    const Function<void()> done = mWaiter.callback();
    mTransfer->start([&, done] {
        mTransfer->stop();
        done();
    });
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_EQ(content(), "body");
    EXPECT_TRUE(mTransfer->finish());
}

TEST_F(HttpTransferWaiter, MayTryAgainAfterAFailure) {
    prepareBody("nothing", 404);
    const Function<void()> done = mWaiter.callback();
    std::atomic<int> calls{0};
    mTransfer->start([&, done] {
        if (++calls == 1) {
            mServer.serve("/p.exe", "body");
            mTransfer->start({}, &calls);
        }
        done();
    });
    ASSERT_TRUE(mWaiter.wait(2));
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "body");
    EXPECT_EQ(mServer.requestCount("/p.exe"), 2U);
}

TEST_F(HttpTransferWaiter, ThatBlocksHoldsUpNoOperation) {
    prepareBody("body");
    std::promise<void> inside;
    std::promise<void> leave;
    const Function<void()> done = mWaiter.callback();
    mTransfer->start([&, done] {
        inside.set_value();
        leave.get_future().wait();
        done();
    });
    inside.get_future().wait();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(mTransfer->stop().errorCode(), 0);
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    leave.set_value();
    EXPECT_TRUE(mWaiter.wait());
}

TEST_F(HttpTransferRace, EveryStartIsCalledBackWheneverItComes) {
    mStore.put("cloud side/p.exe");
    const std::string package = *support::readText(mStore.path("cloud side/p.exe"));
    for (int round = 0; round < 10; ++round) {
        prepareBody(package);
        std::vector<Waiter> waiters(6);
        std::atomic<int> refused{0};
        std::vector<std::thread> threads;
        for (size_t i = 0; i < waiters.size(); ++i) {
            threads.emplace_back([&, i] {
                for (size_t turn = 0; turn < i * 200; ++turn) std::this_thread::yield();
                if (mTransfer->start(waiters[i].callback(), &mKeys[i])) ++refused;
            });
        }
        for (auto& thread : threads) thread.join();
        EXPECT_EQ(refused, 0);
        for (const auto& waiter : waiters) EXPECT_TRUE(waiter.wait());
        EXPECT_TRUE(mTransfer->finish());
        EXPECT_EQ(content(), package);
        std::filesystem::remove(mPath);
    }
}

TEST_F(HttpTransferRace, StartThatFollowsABadEndKeepsItsFile) {
    for (int run = 0; run < kRuns; ++run) {
        prepareBody("nothing", 404);
        const Waiter failed;
        const Waiter arrived;
        ASSERT_EQ(mTransfer->start(failed.callback(), nullptr).errorCode(), 0);
        while (failed.calls() == 0 && !mTransfer->getError()) std::this_thread::yield();
        mServer.serve("/p.exe", "body");
        const bool joined = access().file() != nullptr;
        ASSERT_FALSE(joined);  // an error is seen only when the run has ended
        ASSERT_EQ(mTransfer->start(arrived.callback(), &mKeys[0]).errorCode(), 0);
        ASSERT_TRUE(eventually([&] { return mTransfer->finish(); }));
        EXPECT_EQ(content(), "body");
        EXPECT_TRUE(arrived.wait());
    }
}

TEST_F(HttpTransferRace, CancelAgainstTheEndLeavesNoFileAndAWayToStart) {
    for (int run = 0; run < kRuns; ++run) {
        prepareBody("body");
        Waiter waiter;
        ASSERT_EQ(mTransfer->start(waiter.callback()).errorCode(), 0);
        for (int turn = 0; turn < run * 20; ++turn) std::this_thread::yield();
        mTransfer->cancel();
        EXPECT_FALSE(access().file());
        EXPECT_FALSE(content());
        const int before = waiter.calls();
        ASSERT_EQ(mTransfer->start(waiter.callback()).errorCode(), 0);
        EXPECT_TRUE(waiter.wait(before + 1));
        // The call may have been one of the run before, on its way while cancel ran.
        EXPECT_TRUE(eventually([&] { return mTransfer->finish(); }));
        EXPECT_EQ(content(), "body");
    }
}

TEST_F(HttpTransferRace, StopAgainstTheEndEitherFreezesOrLetsItEnd) {
    for (int run = 0; run < kRuns; ++run) {
        prepareBody("body");
        const Waiter waiter;
        ASSERT_EQ(mTransfer->start(waiter.callback()).errorCode(), 0);
        for (int turn = 0; turn < run * 20; ++turn) std::this_thread::yield();
        mTransfer->stop();
        // Where the end had begun before, it goes on.
        EXPECT_TRUE(eventually([&] { return mTransfer->finish() || (access().file() && !access().client()); }));
        mTransfer->cancel();
        EXPECT_FALSE(content());
    }
}

TEST_F(HttpTransferRace, LettingGoAtAnyMomentIsSafe) {
    const std::string body = text(300000);
    for (int run = 0; run < kRuns; ++run) {
        prepareBody(body);
        ASSERT_EQ(mTransfer->start(mWaiter.callback()).errorCode(), 0);
        for (int turn = 0; turn < run * 20; ++turn) std::this_thread::yield();
        const std::weak_ptr<HttpDownload> transfer = mTransfer;
        mTransfer.reset();
        mVersion.reset();
        EXPECT_TRUE(eventually([&] { return transfer.expired(); }));
    }
}

TEST_F(HttpTransferRace, AllOperationsAtOnceLeaveAUsableTransfer) {
    prepareBody(text(50000));
    std::vector<std::thread> threads;
    for (size_t i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int turn = 0; turn < 30; ++turn) {
                mTransfer->start(mWaiter.callback(), &mKeys[i]);
                if (turn % 3 == 0) mTransfer->stop();
                mTransfer->cancel();
            }
        });
    }
    std::atomic<bool> over{false};
    bool plausible = true;
    threads.emplace_back([&] {
        while (!over) {
            float fraction = 0;
            std::string fileName;
            mTransfer->getProgress(fraction);
            mTransfer->finish();
            plausible = plausible && fraction >= 0.0F && fraction <= 1.0F && !mTransfer->getFileName(fileName) &&
                        !mTransfer->getError() && fileName == mPath;
        }
    });
    for (size_t i = 0; i < 4; ++i) threads[i].join();
    over = true;
    threads.back().join();
    EXPECT_TRUE(plausible);
    mTransfer->cancel();
    const Waiter last;
    EXPECT_EQ(mTransfer->start(last.callback(), &mKeys[9]).errorCode(), 0);
    EXPECT_TRUE(last.wait());
    EXPECT_TRUE(eventually([&] { return mTransfer->finish(); }));
    EXPECT_EQ(content(), text(50000));
}

TEST_F(HttpTransferRace, TransfersOfOneWorkerDoNotDisturbEachOther) {
    const std::string body = text(100000);
    mServer.serve("/p.exe", body);
    mServer.serve("/bad.exe", body, 404);
    std::vector<std::shared_ptr<OrvVersion>> versions;
    std::vector<std::shared_ptr<HttpDownload>> transfers;
    std::vector<Waiter> waiters(8);
    for (size_t i = 0; i < waiters.size(); ++i) {
        const std::string name = i % 2 == 0 ? "/p.exe" : "/bad.exe";
        versions.push_back(makeVersion(mServer.url(name), mStore.path("p" + std::to_string(i) + ".exe")));
        transfers.push_back(std::make_shared<HttpDownload>(mWorker, versions[i]));
        ASSERT_EQ(transfers[i]->start(waiters[i].callback()).errorCode(), 0);
    }
    for (size_t i = 0; i < waiters.size(); ++i) {
        ASSERT_TRUE(waiters[i].wait());
        EXPECT_EQ(transfers[i]->finish(), i % 2 == 0);
        EXPECT_EQ(support::readText(versions[i]->getPackageFile()).has_value(), i % 2 == 0);
    }
}
