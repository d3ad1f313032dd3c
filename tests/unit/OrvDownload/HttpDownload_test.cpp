// The transfer from the cloud when all goes well.
#include <future>
#include "HttpTransfer.h"

using namespace Tarnwick::OrvUpdate;
using support::BadScript;
using support::eventually;
using support::HttpTransfer;
using support::readText;

namespace {

/// Puts a sound package where the version's is to lie.
class SoundPackageThere : public HttpTransfer {
protected:
    void SetUp() override {
        mStore.put("cloud/p.exe");
        prepareBody("never asked for");
    }
};

}  // namespace

TEST_F(HttpTransfer, BeginsWithoutProgressAndError) {
    prepareBody("body");
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "");
    EXPECT_FALSE(access().file());
    EXPECT_FALSE(access().client());
}

TEST_F(HttpTransfer, BringsARealPackageToItsFinalName) {
    const std::string package = *readText(mStore.put("cloud side/p.exe"));
    prepareBody(package);
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(content(), package);
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(HttpTransfer, BringsABodyOfManyPieces) {
    const std::string body = text(3U << 20U);
    prepareBody(body);
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), body);
    EXPECT_EQ(access().received(), body.size());
    EXPECT_EQ(access().total(), body.size());
}

TEST_F(HttpTransfer, LogsNothingWhenAllGoesWell) {
    prepareBody("body");
    run();
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(HttpTransfer, AsksOnceWithGetUnderItsAgentName) {
    mServer.serve("/p.exe", "body");
    prepare(mServer.url("/p.exe?version=1.11.0.8&bits=64"));
    run();
    const auto requests = mServer.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/p.exe?version=1.11.0.8&bits=64");
    EXPECT_EQ(requests[0].header("User-Agent"), "OrvDownload");
    EXPECT_EQ(requests[0].body, "");
}

TEST_F(HttpTransfer, RequestIsStreamedAndMayBeSilentForAMinute) {
    prepareBody("body");
    const auto request = access().makeRequest("http://cloud/p.exe?a=b");
    EXPECT_EQ(request->method(), "GET");
    EXPECT_EQ(request->url().text(), "http://cloud/p.exe?a=b");
    EXPECT_EQ(static_cast<int>(request->cacheType()), 2);
    EXPECT_EQ(request->timeout(), 60000U);
    EXPECT_TRUE(request->recvCallback());
}

TEST_F(HttpTransfer, CallsBackOnAThreadOfTheWorker) {
    prepareBody("body");
    run();
    EXPECT_NE(mWaiter.thread(), std::this_thread::get_id());
}

TEST_F(HttpTransfer, HasItsOutcomeAndNoOpenFileWhenTheCallbackFires) {
    prepareBody("body");
    std::atomic<bool> finished{false};
    std::atomic<bool> open{true};
    std::atomic<int> code{-99};
    const Function<void()> done = mWaiter.callback();
    mTransfer->start([&] {
        finished = mTransfer->finish();
        open = access().file() || access().client();
        code = error();
        done();
    });
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_TRUE(finished);
    EXPECT_FALSE(open);
    EXPECT_EQ(code, 0);
}

TEST_F(HttpTransfer, MakesTheDirectoriesOfThePackage) {
    mPath = mStore.path("a/b c/d/p.exe");
    prepareBody("body");
    run();
    EXPECT_EQ(content(), "body");
}

TEST_F(HttpTransfer, TakesAPathWithBackslashes) {
    mServer.serve("/p.exe", "body");
    mPath = mStore.path("a\\b\\p.exe");
    prepare(mServer.url("/p.exe"));
    run();
    EXPECT_EQ(readText(mStore.path("a/b/p.exe")), "body");
}

TEST_F(HttpTransfer, WritesUnderTheFinalNameWhileItRuns) {
    const std::string body = text(4000);
    startHalf(body);
    ASSERT_TRUE(eventually([&] { return content()->size() == 2000; }));
    EXPECT_EQ(content(), body.substr(0, 2000));
    EXPECT_EQ(support::filesBelow(mStore.path()), std::set<std::string>{"cloud/p.exe"});
    EXPECT_EQ(access().fileName(), mPath);
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait());
}

TEST_F(HttpTransfer, TellsTheFractionThatHasArrived) {
    startHalf(text(4000));
    EXPECT_TRUE(eventually([&] { return progress() == 0.5F; }));
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(mWaiter.calls(), 0);
    mServer.release("/p.exe");
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_EQ(progress(), 1.0F);
}

TEST_F(HttpTransfer, ReplacesAnUnsoundFileThatIsThere) {
    mStore.putText("cloud/p.exe", text(5000));
    prepareBody("short");
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "short");
}

TEST_F(HttpTransfer, LeavesTheTestOfThePackageToOthers) {
    prepareBody("no package at all");
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(error(), 0);
}

TEST_F(HttpTransfer, DoesNotCountTheBodyOfARedirect) {
    mServer.serve("/new.exe", "body");
    prepareScript(BadScript::redirect(mServer.url("/new.exe"), 302, text(500)));
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "body");
    EXPECT_EQ(access().received(), 4U);
}

TEST_F(HttpTransfer, TellsThePackageFileOfItsVersion) {
    prepareBody("body");
    std::string fileName;
    EXPECT_EQ(mTransfer->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, mPath);
    mVersion->setLocalFileName("");
    EXPECT_EQ(mTransfer->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, mStore.path("Online/Windows x64 All/1.11.0.8/1.11.0.8.exe"));
}

TEST_F(HttpTransfer, TellsNoFileNameOnceTheVersionIsGone) {
    prepareBody("body");
    mVersion.reset();
    std::string fileName = "as before";
    const ErrorInfo error = mTransfer->getFileName(fileName);
    EXPECT_EQ(error.errorCode(), -1);
    EXPECT_EQ(error.errorMessage(), "");
    EXPECT_EQ(fileName, "as before");
}

// A sound package that is there already.

TEST_F(SoundPackageThere, FinishesOnTheCallersThreadWithoutARequest) {
    const auto before = content();
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(mWaiter.thread(), std::this_thread::get_id());
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(mServer.requests().empty());
    EXPECT_EQ(content(), before);
    EXPECT_EQ(access().received(), 0U);
    EXPECT_TRUE(mLog.entries().empty());
}

TEST_F(SoundPackageThere, IsFoundAgainAtEveryStart) {
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(mWaiter.calls(), 2);
    EXPECT_TRUE(mServer.requests().empty());
}

TEST_F(SoundPackageThere, StaysWhenTheTransferIsCancelledAfterwards) {
    start();
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_TRUE(content());
    EXPECT_TRUE(mLog.entries().empty());
    EXPECT_TRUE(mTransfer->finish());
}

TEST_F(SoundPackageThere, LetsTheWaiterStartTheSameTransfer) {
    EXPECT_EQ(mTransfer
                  ->start([&] {
                      if (++mFirst == 1) {
                          EXPECT_EQ(mTransfer->start(mWaiter.callback(), this).errorCode(), 0);
                      }
                  })
                  .errorCode(),
              0);
    EXPECT_EQ(mFirst, 2);  // the inner start calls both, then the outer one goes on with its copy of one
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(SoundPackageThere, WaiterThatBlocksHoldsUpNobody) {
    std::promise<void> inside;
    std::promise<void> leave;
    std::thread blocked([&] {
        mTransfer->start(
            [&] {
                if (++mFirst > 1) return;
                inside.set_value();
                leave.get_future().wait();
            },
            nullptr);
    });
    inside.get_future().wait();
    EXPECT_EQ(mTransfer->stop().errorCode(), 0);
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_TRUE(mTransfer->finish());
    mTransfer->start({}, nullptr);
    EXPECT_EQ(mTransfer->start(mWaiter.callback(), this).errorCode(), 0);
    EXPECT_EQ(mWaiter.calls(), 1);
    leave.set_value();
    blocked.join();
}

TEST_F(SoundPackageThere, IsFetchedAgainOnceItHasGoneBad) {
    start();
    support::appendBytes(mPath, "x");
    run(2);
    EXPECT_EQ(mServer.requests().size(), 1U);
    EXPECT_EQ(content(), "never asked for");
    EXPECT_TRUE(mTransfer->finish());
}

TEST_F(SoundPackageThere, ThatHasGoneBadIsNotFinishedWhileItIsFetchedAgain) {
    start();
    EXPECT_TRUE(mTransfer->finish());
    mStore.putText("cloud/p.exe", "bad");
    mServer.hold("/p.exe");
    start();
    ASSERT_TRUE(mServer.waitForHeld("/p.exe"));
    EXPECT_FALSE(mTransfer->finish());
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait(2));
    EXPECT_TRUE(mTransfer->finish());
}
