// What goes wrong with a transfer from the cloud, and what it leaves on disk.
#include "HttpFailureFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::BadScript;
using support::eventually;
using support::HttpTransferFailure;
using support::readText;

namespace {

struct BadAnswer {
    std::string name;
    BadScript script;
    int status;  // as it is logged
};

class BadAnswers : public HttpTransferFailure, public testing::WithParamInterface<BadAnswer> {};

const std::string sBody(600, 'b');

}  // namespace

TEST_P(BadAnswers, EndTheTransferAndDeleteTheFile) {
    prepareScript(GetParam().script);
    run();
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "");
    EXPECT_FALSE(content());
    EXPECT_FALSE(access().file());
    EXPECT_FALSE(access().client());
    EXPECT_EQ(access().fileName(), mPath);
    EXPECT_EQ(logged(),
              (Texts{"download http version fail! statuscode:" + std::to_string(GetParam().status), removal()}));
    drain();
    EXPECT_EQ(mWaiter.calls(), 1);
}

INSTANTIATE_TEST_SUITE_P(HttpTransfer, BadAnswers,
                         testing::Values(BadAnswer{"NotFound", BadScript::status(404, sBody), 404},
                                         BadAnswer{"NotFoundWithoutABody", BadScript::empty(404), 404},
                                         BadAnswer{"ServerFailure", BadScript::status(500, sBody), 500},
                                         BadAnswer{"AnotherSuccess", BadScript::status(206, sBody), 206},
                                         BadAnswer{"NoContent", BadScript::empty(204), 204},
                                         BadAnswer{"EmptyBody", BadScript::empty(200), 200},
                                         BadAnswer{"NoLength", BadScript::noLength(sBody), 200},
                                         BadAnswer{"Chunks", BadScript::chunked(sBody, 100), 200},
                                         BadAnswer{"ChunksCutShort", BadScript::chunkedCutShort(sBody, 100), 0},
                                         BadAnswer{"BodyCutShort", BadScript::closeAt(sBody, 200), 0},
                                         BadAnswer{"ResetInTheBody", BadScript::resetAt(sBody, 200), 0},
                                         BadAnswer{"LengthTooLarge", BadScript::wrongLength(sBody, 10000), 0},
                                         BadAnswer{"ClosedAtOnce", BadScript::closeAtOnce(), 0},
                                         BadAnswer{"Garbage", BadScript::garbage(), 0},
                                         BadAnswer{"RedirectToItself", BadScript::redirect("/p.exe"), 0}),
                         [](const auto& each) { return each.param.name; });

TEST_F(HttpTransferFailure, NobodyListens) {
    std::string url;
    {
        const support::HttpFileServer gone;
        url = gone.url("/p.exe");
    }
    prepare(url);
    run();
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(content());
    EXPECT_EQ(logged(), (Texts{"download http version fail! statuscode:0", removal()}));
}

TEST_F(HttpTransferFailure, TimeOutEndsTheTransfer) {
    startSilent();
    finishWith(408);
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(logged(), (Texts{"download http version fail! statuscode:408", removal()}));
}

TEST_F(HttpTransferFailure, KeepsTheLastProgress) {
    prepareScript(BadScript::closeAt(text(400), 100));
    run();
    EXPECT_EQ(progress(), 0.25F);
    EXPECT_EQ(access().received(), 100U);
    EXPECT_EQ(access().total(), 400U);
}

TEST_F(HttpTransferFailure, CancelAfterwardsTellsOfTheFileOnceMore) {
    prepareBody("nothing", 404);
    run();
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_TRUE(mLog.has(4, "HttpDownload cancel remove file " + mPath + "\n"));
    EXPECT_EQ(error(), -1);
}

TEST_F(HttpTransferFailure, StartClearsTheErrorOfTheRunBefore) {
    prepareBody("nothing", 404);
    run();
    EXPECT_EQ(error(), -1);
    mServer.hold("/p.exe");
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(error(), 0);
    ASSERT_TRUE(mServer.waitForHeld("/p.exe"));
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait(2));
    EXPECT_EQ(error(), -1);
}

// The length.

TEST_F(HttpTransferFailure, BodyWithoutALengthIsCountedButNotWritten) {
    BadScript script;
    prepareScript(script.send("HTTP/1.1 200 OK\r\n\r\n" + text(500)).hang());
    ASSERT_EQ(start(), 0);
    EXPECT_TRUE(eventually([&] { return access().received() == 500; }));
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(content(), "");
    mTransfer->cancel();
}

TEST_F(HttpTransferFailure, LengthIsReadAfreshFromEveryPiece) {
    startSilent();
    access().receive("ab", "8");
    EXPECT_EQ(progress(), 0.25F);
    access().receive("cd", "4");
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(access().total(), 4U);
    access().receive("ef", {});
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(access().received(), 6U);
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(content(), "abcd");
}

TEST_F(HttpTransferFailure, LengthThatIsNoNumberCountsAsNone) {
    startSilent();
    for (const char* length : {"", "many", "-5", "0"}) access().receive("ab", length);
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(access().received(), 8U);
    EXPECT_EQ(content(), "");
}

TEST_F(HttpTransferFailure, ProgressIsDividedAsDoublesAndNarrowed) {
    startSilent();
    access().receive("a", "3");
    EXPECT_EQ(progress(), static_cast<float>(1.0 / 3.0));
    access().receive("a", "18446744073709551615");
    EXPECT_EQ(progress(), static_cast<float>(2.0 / 18446744073709551615.0));
}

TEST_F(HttpTransferFailure, BodyLongerThanItsLengthIsWrittenWholeAndCountsAsComplete) {
    startSilent();
    access().receive("0123456789", "12");
    access().receive("abcdef", "12");
    access().receive("more", "12");
    EXPECT_EQ(access().received(), 12U);
    EXPECT_EQ(progress(), 1.0F);
    finishWith(200);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "0123456789abcdefmore");
    EXPECT_EQ(error(), 0);
}

TEST_F(HttpTransferFailure, FullBodyOfAnotherStatusIsDeleted) {
    startSilent();
    access().receive("abcd", "4");
    finishWith(203);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(content());
}

TEST_F(HttpTransferFailure, ShortBodyOfStatus200IsDeleted) {
    startSilent();
    access().receive("abc", "4");
    finishWith(200);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(content());
    EXPECT_EQ(logged(), (Texts{"download http version fail! statuscode:200", removal()}));
}

// The version, gone or changed meanwhile.

TEST_F(HttpTransferFailure, FileStaysWhenTheVersionIsGoneAtABadEnd) {
    startHalf(text(400));
    ASSERT_TRUE(eventually([&] { return content()->size() == 200; }));
    mVersion.reset();
    finishWith(0);
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_EQ(content(), text(200));
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(logged(), Texts{"download http version fail! statuscode:0"});
    mServer.release("/p.exe");
}

TEST_F(HttpTransferFailure, PackageArrivesAlsoWhenTheVersionIsGone) {
    startHalf(text(400));
    mVersion.reset();
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), text(400));
}

TEST_F(HttpTransferFailure, BadEndDeletesTheFileThatTheVersionNamesByThen) {
    startSilent();
    const std::string other = mStore.putText("other.exe", "in the way");
    mVersion->setLocalFileName(other);
    finishWith(500);
    EXPECT_FALSE(readText(other));
    EXPECT_EQ(content(), "");
    EXPECT_TRUE(mLog.has(2, "onHttpFinishCallback() remove fileName:" + other + "\r\n"));
}

TEST_F(HttpTransferFailure, CancelDeletesTheFileThatWasWrittenWhateverTheVersionNames) {
    startSilent();
    const std::string other = mStore.putText("other.exe", "in the way");
    mVersion->setLocalFileName(other);
    mTransfer->cancel();
    EXPECT_TRUE(readText(other));
    EXPECT_FALSE(content());
}
